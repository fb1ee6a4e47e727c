// uvelctl keys: certificates and keys for a pair of devices.

#include <iostream>
#include <uvelhost/standby_link.h>

#include "commands.h"

namespace uvelctl {

void MakeKeys(const Options &, const KeysRequest &request) {
    char error[256] = "";
    if (YSB_Link_MakeKeys(request.folder.c_str(), request.first.c_str(), request.second.c_str(), request.days, error,
                          sizeof error) != UVELHOST_OK)
        throw Failure(error);
    std::cout << "wrote authority.pem, " << request.first << ".pem, " << request.first << ".key, " << request.second
              << ".pem, " << request.second << ".key to " << request.folder << "\n"
              << "each device needs authority.pem and its own two files; keep the .key files secret\n";
}

} // namespace uvelctl
