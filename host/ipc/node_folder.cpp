#include "ipc/node_folder.h"

#include "confdb/descriptor.h"
#include "crypto/report.h"
#include "ipc/message.h"
#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <dirent.h>
#include <fcntl.h>
#include <memory>
#include <sys/stat.h>
#include <thread>
#include <unistd.h>

namespace uvel::host {

namespace {

std::string FolderName() {
    if (const char *name = secure_getenv("UVELHOST_RUN_DIR"); name != nullptr && *name != '\0')
        return name;
    if (geteuid() == 0)
        return "/run/uvelhost";
    if (const char *name = secure_getenv("XDG_RUNTIME_DIR"); name != nullptr && *name != '\0')
        return std::string(name) + "/uvelhost";
    return "/tmp/uvelhost-" + std::to_string(geteuid());
}

struct flock WholeFile(short type) {
    struct flock lock = {};
    lock.l_type = type;
    lock.l_whence = SEEK_SET;
    return lock;
}

constexpr std::size_t LINE = 27;                    /* "%08x %08x %08x\n" */
constexpr std::chrono::milliseconds PATIENCE{1000}; /* with whoever sweeps: it holds a file while it unlinks two */
constexpr std::chrono::milliseconds PAUSE{1};

struct FolderCloser {
    void operator()(DIR *folder) const { closedir(folder); }
};

} // namespace

bool NodeFolder::Open() {
    if (folder_ >= 0)
        return true;
    path_ = FolderName();
    if (mkdir(path_.c_str(), 0700) != 0 && errno != EEXIST) {
        ReportText("%.512s: %s", path_.c_str(), std::strerror(errno));
        return false;
    }
    const int folder = open(path_.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC);
    struct stat about = {};
    if (folder < 0 || fstat(folder, &about) != 0) {
        ReportText("%.512s: %s", path_.c_str(), std::strerror(errno));
    } else if (about.st_uid != geteuid() || (about.st_mode & (S_IWGRP | S_IWOTH)) != 0) {
        ReportText("%.512s: must belong to user %u and be writable for nobody else", path_.c_str(), geteuid());
    } else {
        folder_ = folder;
        return true;
    }
    if (folder >= 0)
        close(folder);
    return false;
}

std::string NodeFolder::FileName(uint32_t node) const {
    return std::to_string(node) + ".node";
}

std::string NodeFolder::SocketName(uint32_t node) const {
    return std::to_string(node) + ".sock";
}

std::string NodeFolder::SocketPath(uint32_t node) const {
    return path_ + "/" + SocketName(node);
}

/* A file that was swept away between opening and locking it is nobody's any more. */
bool NodeFolder::LockFresh(int file) const {
    struct flock lock = WholeFile(F_WRLCK);
    struct stat about = {};
    return fcntl(file, F_SETLK, &lock) == 0 && fstat(file, &about) == 0 && about.st_nlink != 0;
}

bool NodeFolder::Claim() {
    if (own_file_ >= 0)
        return true;
    if (!Open())
        return false;
    const auto deadline = std::chrono::steady_clock::now() + PATIENCE;
    do {
        const int file = openat(folder_, FileName(SelfNode()).c_str(), O_RDWR | O_CREAT | O_NOFOLLOW | O_CLOEXEC, 0600);
        if (file < 0)
            break;
        if (LockFresh(file) && ftruncate(file, 0) == 0) {
            own_file_ = file;
            own_node_ = SelfNode();
            return true;
        }
        close(file);
        std::this_thread::sleep_for(PAUSE);
    } while (std::chrono::steady_clock::now() < deadline);
    ReportText("%.512s/%u.node: %s", path_.c_str(), SelfNode(), std::strerror(errno));
    return false;
}

void NodeFolder::Leave() {
    if (own_file_ >= 0 && own_node_ == static_cast<uint32_t>(getpid()))
        Sweep(own_node_);
}

/* Only who has locked the node's file sweeps: a process that comes up with this number waits until that is done. */
void NodeFolder::Sweep(uint32_t node) const {
    unlinkat(folder_, SocketName(node).c_str(), 0);
    unlinkat(folder_, FileName(node).c_str(), 0);
}

bool NodeFolder::Publish(const Component &component) {
    char line[LINE + 1];
    std::snprintf(line, sizeof line, "%08x %08x %08x\n", component.mid, component.type, component.slot);
    const off_t end = lseek(own_file_, 0, SEEK_END);
    return end >= 0 && pwrite(own_file_, line, LINE, end) == static_cast<ssize_t>(LINE);
}

bool NodeFolder::Lives(int file, uint32_t node) const {
    struct flock lock = WholeFile(F_RDLCK);
    return fcntl(file, F_GETLK, &lock) == 0 && lock.l_type != F_UNLCK && static_cast<uint32_t>(lock.l_pid) == node;
}

void NodeFolder::ReadFile(uint32_t node, std::vector<Component> &components) const {
    const bool own = own_file_ >= 0 && node == own_node_;
    const int file = own ? own_file_ : openat(folder_, FileName(node).c_str(), O_RDWR | O_NOFOLLOW | O_CLOEXEC);
    const confdb::Descriptor opened(own ? -1 : file); /* closing it also unlocks the file */
    if (file < 0)
        return;
    if (own || Lives(file, node)) {
        char line[LINE + 1] = {};
        for (off_t at = 0; pread(file, line, LINE, at) == static_cast<ssize_t>(LINE); at += LINE) {
            Component found{node, 0, 0, 0};
            if (std::sscanf(line, "%8x %8x %8x", &found.mid, &found.type, &found.slot) == 3)
                components.push_back(found);
        }
    } else if (LockFresh(file)) {
        Sweep(node);
    }
}

std::vector<Component> NodeFolder::Components() {
    std::vector<Component> components;
    /* a descriptor of its own: descriptors that were copied share the position of the listing */
    const int listing = openat(folder_, ".", O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    const std::unique_ptr<DIR, FolderCloser> folder(listing < 0 ? nullptr : fdopendir(listing));
    if (folder == nullptr)
        return components;
    while (const dirent *entry = readdir(folder.get())) {
        unsigned node = 0;
        int used = 0;
        if (std::sscanf(entry->d_name, "%u.node%n", &node, &used) == 1 && used > 0 && entry->d_name[used] == '\0')
            ReadFile(node, components);
    }
    std::sort(components.begin(), components.end(),
              [](const Component &a, const Component &b) { return a.node < b.node; });
    return components;
}

} // namespace uvel::host
