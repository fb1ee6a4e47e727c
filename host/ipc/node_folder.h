/* The folder in which the processes of a device find each other.
 *
 * Every process ("node") has a file <node>.node there, which it keeps locked for as long as it lives and in which it
 * notes the components it serves, and a socket <node>.sock. The kernel drops the lock with the process, however that
 * ends, so what the dead left behind is recognised, and swept away by whoever comes across it and gets the lock.
 *
 * The folder is $UVELHOST_RUN_DIR; without that /run/uvelhost for root and $XDG_RUNTIME_DIR/uvelhost (failing that
 * /tmp/uvelhost-<uid>) for others. It must belong to the user and be writable for nobody else. */
#ifndef UVEL_HOST_IPC_NODE_FOLDER_H
#define UVEL_HOST_IPC_NODE_FOLDER_H

#include <cstdint>
#include <string>
#include <vector>

namespace uvel::host {

struct Component {
    uint32_t node;
    uint32_t mid;
    uint32_t type;
    uint32_t slot;
};

class NodeFolder {
  public:
    NodeFolder() = default;
    NodeFolder(const NodeFolder &) = delete;
    NodeFolder &operator=(const NodeFolder &) = delete;

    /* Opens the folder, which is made when it is missing. Again is a success. */
    bool Open();

    /* Makes and locks the file of this process. Again is a success. */
    bool Claim();

    /* Removes file and socket of this process, if it claimed. */
    void Leave();

    std::string SocketPath(uint32_t node) const;

    /* Notes a component of this process, which has claimed. */
    bool Publish(const Component &component);

    /* The components of all living processes. */
    std::vector<Component> Components();

  private:
    std::string FileName(uint32_t node) const;
    std::string SocketName(uint32_t node) const;
    bool Lives(int file, uint32_t node) const;
    bool LockFresh(int file) const;
    void Sweep(uint32_t node) const;
    void ReadFile(uint32_t node, std::vector<Component> &components) const;

    std::string path_;
    int folder_ = -1;
    int own_file_ = -1; /* never closed: closing any descriptor of a file drops the process's locks on it */
    uint32_t own_node_ = 0;
};

} // namespace uvel::host

#endif
