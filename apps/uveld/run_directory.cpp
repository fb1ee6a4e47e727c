#include "run_directory.h"

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <stdexcept>
#include <sys/file.h>
#include <unistd.h>

namespace uveld {

namespace {

/* What the holder of a lock wrote into it: its process id and a line end. */
std::string HolderOf(int lock) {
    char text[32];
    const ssize_t length = pread(lock, text, sizeof text, 0);
    const std::string holder(text, length > 0 ? static_cast<size_t>(length) : 0);
    return holder.substr(0, holder.find('\n'));
}

} // namespace

RunDirectory::RunDirectory(const std::string &path) : path_(path) {
    std::error_code error;
    std::filesystem::create_directories(path, error);
    if (error)
        throw std::runtime_error("the run directory " + path + " cannot be made: " + error.message());
    lock_ = open(File("uveld.pid").c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0644);
    if (lock_ < 0)
        throw std::runtime_error(File("uveld.pid") + ": " + std::strerror(errno));
    if (flock(lock_, LOCK_EX | LOCK_NB) != 0) {
        const std::string holder = HolderOf(lock_);
        close(lock_);
        throw std::runtime_error("another uveld (process " + holder + ") runs in " + path);
    }
    const std::string pid = std::to_string(getpid()) + "\n";
    if (ftruncate(lock_, 0) != 0 || pwrite(lock_, pid.data(), pid.size(), 0) != static_cast<ssize_t>(pid.size())) {
        const std::string reason = std::strerror(errno);
        close(lock_);
        throw std::runtime_error(File("uveld.pid") + ": " + reason);
    }
}

/* The file stays: who removes it could remove the one that a successor has just locked. */
RunDirectory::~RunDirectory() {
    (void)!ftruncate(lock_, 0);
    close(lock_);
}

} // namespace uveld
