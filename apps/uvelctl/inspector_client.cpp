#include "inspector_client.h"

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <fstream>
#include <pwd.h>
#include <sys/file.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/time.h>
#include <sys/un.h>
#include <unistd.h>

namespace uvelctl {

namespace {

constexpr time_t PATIENCE_SECONDS = 10;
constexpr char NO_ANSWER[] = "uveld does not answer for ten seconds: it is held up by something";

/* Process id of the uveld that holds the run directory's lock; empty when none does. */
std::string HolderOf(const std::string &run_directory) {
    const std::string path = run_directory + "/uveld.pid";
    const int lock = open(path.c_str(), O_RDONLY | O_CLOEXEC);
    if (lock < 0)
        return {};
    const bool is_held = flock(lock, LOCK_SH | LOCK_NB) != 0 && errno == EWOULDBLOCK;
    close(lock);
    std::string pid;
    if (is_held)
        std::getline(std::ifstream(path), pid);
    return pid;
}

std::string OwnerOf(const std::string &path) {
    struct stat status {};
    if (stat(path.c_str(), &status) != 0)
        return "another user";
    const passwd *user = getpwuid(status.st_uid);
    return user != nullptr ? user->pw_name : "user " + std::to_string(status.st_uid);
}

std::string WhyNotConnected(int reason, const std::string &run_directory, const std::string &path) {
    if (reason == ENOENT || reason == ECONNREFUSED) {
        const std::string holder = HolderOf(run_directory);
        if (!holder.empty())
            return "uveld (process " + holder + ") in " + run_directory + " does not answer: it is starting or ending";
        return "no uveld runs in " + run_directory;
    }
    if (reason == EAGAIN)
        return NO_ANSWER;
    if (reason == EACCES)
        return path + ": " + std::strerror(reason) + ", it is for " + OwnerOf(path) + " alone";
    return path + ": " + std::strerror(reason);
}

} // namespace

InspectorClient::InspectorClient(const Options &options) : path_(options.run_directory + "/uveld.sock") {
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    if (path_.size() >= sizeof address.sun_path)
        throw Failure(path_ + " is too long for a socket");
    std::memcpy(address.sun_path, path_.data(), path_.size());
    descriptor_ = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    if (descriptor_ < 0)
        throw Failure(std::string("socket: ") + std::strerror(errno));
    const timeval patience{PATIENCE_SECONDS, 0};
    (void)setsockopt(descriptor_, SOL_SOCKET, SO_RCVTIMEO, &patience, sizeof patience);
    (void)setsockopt(descriptor_, SOL_SOCKET, SO_SNDTIMEO, &patience, sizeof patience);
    if (connect(descriptor_, reinterpret_cast<const sockaddr *>(&address), sizeof address) != 0) {
        const int reason = errno;
        close(descriptor_);
        throw Failure(WhyNotConnected(reason, options.run_directory, path_));
    }
}

InspectorClient::~InspectorClient() {
    close(descriptor_);
}

uvel::inspection::Table InspectorClient::Ask(const uvel::inspection::Request &request) {
    const std::string line = ToJson(request) + "\n";
    for (size_t sent = 0; sent < line.size();) {
        const ssize_t count = send(descriptor_, line.data() + sent, line.size() - sent, MSG_NOSIGNAL);
        if (count < 0 && errno == EAGAIN)
            throw Failure(NO_ANSWER);
        if (count < 0 && (errno == EPIPE || errno == ECONNRESET))
            break; /* what it said before it went away is still to be read */
        if (count < 0 && errno != EINTR)
            throw Failure("uveld does not listen any more");
        sent += count > 0 ? static_cast<size_t>(count) : 0;
    }
    size_t end;
    while ((end = received_.find('\n')) == std::string::npos) {
        char bytes[16384];
        const ssize_t count = recv(descriptor_, bytes, sizeof bytes, 0);
        if (count < 0 && errno == EAGAIN)
            throw Failure(NO_ANSWER);
        if (count == 0 || (count < 0 && errno != EINTR))
            throw Failure("uveld has ended before it answered");
        received_.append(bytes, count > 0 ? static_cast<size_t>(count) : 0);
    }
    const std::string answer = received_.substr(0, end);
    received_.erase(0, end + 1);
    try {
        return uvel::inspection::ParseAnswer(answer);
    } catch (const uvel::inspection::Refused &reason) {
        throw Failure(reason.what());
    } catch (const uvel::inspection::NotUnderstood &) {
        throw Failure("uveld's answer is not understood");
    }
}

} // namespace uvelctl
