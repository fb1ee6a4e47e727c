#include "confdb/wake_up.h"

#include <cerrno>
#include <cstring>
#include <dirent.h>
#include <fcntl.h>
#include <memory>
#include <random>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>

#include "confdb/item.h"

namespace uvel::host::confdb {

namespace {

struct DirectoryCloser {
    void operator()(DIR *directory) const { closedir(directory); }
};

/* The name of a socket has room for 107 characters, so the folder is named by its descriptor. */
bool AddressOf(int folder, const char *name, sockaddr_un &address) {
    address = {};
    address.sun_family = AF_UNIX;
    const int length = std::snprintf(address.sun_path, sizeof address.sun_path, "/proc/self/fd/%d/%s", folder, name);
    return length > 0 && static_cast<std::size_t>(length) < sizeof address.sun_path;
}

const sockaddr *Plain(const sockaddr_un &address) {
    return reinterpret_cast<const sockaddr *>(&address);
}

[[noreturn]] void Fail(const std::string &path) {
    throw StoreError(path + ": " + strerror(errno));
}

Descriptor OpenFolder(const std::string &path) {
    return Descriptor(open(path.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
}

Descriptor MakeSocket() {
    return Descriptor(socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
}

} // namespace

void WakeUpFolder::Make() const {
    if (mkdir(path_.c_str(), S_IRWXU) != 0 && errno != EEXIST)
        Fail(path_);
}

void WakeUpFolder::WakeAll() const {
    std::unique_ptr<DIR, DirectoryCloser> listing(opendir(path_.c_str()));
    Descriptor sender = MakeSocket();
    if (listing == nullptr || !sender.IsOpen())
        return;
    const int folder = dirfd(listing.get());
    while (const dirent *entry = readdir(listing.get())) {
        sockaddr_un address;
        if (entry->d_name[0] == '.' || !AddressOf(folder, entry->d_name, address))
            continue;
        /* A full socket (EAGAIN) has wake-ups waiting already. */
        if (sendto(sender.Get(), "", 0, 0, Plain(address), sizeof address) < 0 && errno == ECONNREFUSED)
            unlinkat(folder, entry->d_name, 0);
    }
}

WakeUpSocket::WakeUpSocket(const WakeUpFolder &folder) : folder_(OpenFolder(folder.path_)), socket_(MakeSocket()) {
    if (!folder_.IsOpen() || !socket_.IsOpen())
        Fail(folder.path_);
    name_ = std::to_string(getpid()) + "-" + std::to_string(std::random_device()());
    /* The name appears a moment before there is a socket behind it, which then looks like a dead one: a name with a dot
     * is not looked at. */
    const std::string hidden = "." + name_;
    sockaddr_un address;
    if (!AddressOf(folder_.Get(), hidden.c_str(), address) ||
        bind(socket_.Get(), Plain(address), sizeof address) != 0 ||
        renameat(folder_.Get(), hidden.c_str(), folder_.Get(), name_.c_str()) != 0)
        Fail(folder.path_);
}

WakeUpSocket::~WakeUpSocket() {
    unlinkat(folder_.Get(), name_.c_str(), 0);
}

void WakeUpSocket::TakeAll() const {
    char nothing;
    while (recv(socket_.Get(), &nothing, sizeof nothing, 0) >= 0)
        ;
}

} // namespace uvel::host::confdb
