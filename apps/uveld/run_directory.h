/* The folder of a running uveld: its lock, its sockets, its configuration database. */
#pragma once

#include <string>

namespace uveld {

class RunDirectory {
  public:
    /* Creates the folder where necessary (mode 0755) and takes its lock. Throws std::runtime_error when another uveld
     * holds the lock, with its process id, and when the folder cannot be used. */
    explicit RunDirectory(const std::string &path);
    ~RunDirectory();
    RunDirectory(const RunDirectory &) = delete;
    RunDirectory &operator=(const RunDirectory &) = delete;

    const std::string &Path() const { return path_; }

    /* Path of a file in the folder. */
    std::string File(const std::string &name) const { return path_ + "/" + name; }

  private:
    std::string path_;
    int lock_;
};

} // namespace uveld
