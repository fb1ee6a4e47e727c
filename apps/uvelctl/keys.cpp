// uvelctl keys: certificates and keys for a pair of devices.

#include <iostream>
#include <memory>
#include <uvelhost/standby_link.h>

#include "commands.h"

namespace uvelctl {

void AddKeys(CLI::App *app, const Options *) {
    struct Request {
        std::string folder;
        std::string first;
        std::string second;
        uint32_t days = 3650;
    };
    const auto request = std::make_shared<Request>();
    CLI::App *command =
        app->add_subcommand("keys", "Makes the certificates and keys of the standby link for two devices");
    command->add_option("folder", request->folder, "Where to write authority.pem, NAME.pem and NAME.key")->required();
    command->add_option("first", request->first, "Name of one device, as a DNS name")->required();
    command->add_option("second", request->second, "Name of the other device")->required();
    command->add_option("--days", request->days, "How long they are valid")
        ->check(CLI::Range(1, 36500))
        ->capture_default_str();
    command->callback([=] {
        char error[256] = "";
        if (YSB_Link_MakeKeys(request->folder.c_str(), request->first.c_str(), request->second.c_str(), request->days,
                              error, sizeof error) != UVELHOST_OK)
            throw Failure(error);
        std::cout << "wrote authority.pem, " << request->first << ".pem, " << request->first << ".key, "
                  << request->second << ".pem, " << request->second << ".key to " << request->folder << "\n"
                  << "each device needs authority.pem and its own two files; keep the .key files secret\n";
    });
}

} // namespace uvelctl
