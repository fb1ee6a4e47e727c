#include "inspector_client.h"

#include <cerrno>
#include <cstring>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

namespace uvelctl {

InspectorClient::InspectorClient(const Options &options) : path_(options.run_directory + "/uveld.sock") {
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    if (path_.size() >= sizeof address.sun_path)
        throw Failure(path_ + " is too long for a socket");
    std::memcpy(address.sun_path, path_.data(), path_.size());
    descriptor_ = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    if (descriptor_ < 0)
        throw Failure(std::string("socket: ") + std::strerror(errno));
    if (connect(descriptor_, reinterpret_cast<const sockaddr *>(&address), sizeof address) != 0) {
        const int reason = errno;
        close(descriptor_);
        if (reason == ENOENT || reason == ECONNREFUSED)
            throw Failure("no uveld runs in " + options.run_directory);
        throw Failure(path_ + ": " + std::strerror(reason));
    }
}

InspectorClient::~InspectorClient() {
    close(descriptor_);
}

nlohmann::json InspectorClient::Ask(const std::string &view, const std::vector<std::string> &arguments) {
    const std::string request = nlohmann::json{{"view", view}, {"arguments", arguments}}.dump() + "\n";
    for (size_t sent = 0; sent < request.size();) {
        const ssize_t count = send(descriptor_, request.data() + sent, request.size() - sent, MSG_NOSIGNAL);
        if (count < 0 && errno != EINTR)
            throw Failure("uveld does not listen any more");
        sent += count > 0 ? static_cast<size_t>(count) : 0;
    }
    size_t end;
    while ((end = received_.find('\n')) == std::string::npos) {
        char bytes[16384];
        const ssize_t count = recv(descriptor_, bytes, sizeof bytes, 0);
        if (count == 0 || (count < 0 && errno != EINTR))
            throw Failure("uveld has ended in the middle of its answer");
        received_.append(bytes, count > 0 ? static_cast<size_t>(count) : 0);
    }
    auto answer = nlohmann::json::parse(received_.substr(0, end), nullptr, false);
    received_.erase(0, end + 1);
    if (answer.is_discarded())
        throw Failure("uveld's answer is not understood");
    if (answer.contains("error"))
        throw Failure(answer["error"].get<std::string>());
    return answer;
}

} // namespace uvelctl
