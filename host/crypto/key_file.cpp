#include "crypto/key_file.h"

#include <cerrno>
#include <climits>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <libgen.h>
#include <openssl/rand.h>
#include <sys/stat.h>
#include <unistd.h>

#include "crypto/report.h"

namespace uvel::host {

namespace {

constexpr char DEFAULT_KEY_FILE[] = "/var/lib/uvelhost/password.key";
constexpr char TEMPORARY_ENDING[] = ".XXXXXX";

class File {
  public:
    explicit File(int descriptor) : descriptor_(descriptor) {}
    ~File() {
        if (descriptor_ >= 0)
            close(descriptor_);
    }
    File(const File &) = delete;
    File &operator=(const File &) = delete;

    bool IsOpen() const { return descriptor_ >= 0; }
    int Get() const { return descriptor_; }

  private:
    int descriptor_;
};

const char *KeyFileName() {
    const char *name = secure_getenv("UVELHOST_KEY_FILE");
    return name == nullptr || *name == '\0' ? DEFAULT_KEY_FILE : name;
}

bool ReadAll(int descriptor, uint8_t *bytes, std::size_t size) {
    while (size > 0) {
        ssize_t got = read(descriptor, bytes, size);
        if (got < 0 && errno == EINTR)
            continue;
        if (got <= 0)
            return false;
        bytes += got;
        size -= static_cast<std::size_t>(got);
    }
    return true;
}

bool WriteAll(int descriptor, const uint8_t *bytes, std::size_t size) {
    while (size > 0) {
        ssize_t put = write(descriptor, bytes, size);
        if (put < 0 && errno == EINTR)
            continue;
        if (put <= 0)
            return false;
        bytes += put;
        size -= static_cast<std::size_t>(put);
    }
    return true;
}

/* Whether an open key file may be trusted: nobody but its owner, this user or root, reads or writes it. */
bool IsTrustworthy(const char *name, int descriptor) {
    struct stat status;
    if (fstat(descriptor, &status) != 0) {
        ReportTrouble(Trouble::KEY_UNREADABLE, "key file %s: %s", name, strerror(errno));
        return false;
    }
    if (!S_ISREG(status.st_mode)) {
        ReportTrouble(Trouble::KEY_NO_FILE, "key file %s: not a regular file", name);
        return false;
    }
    if (status.st_uid != geteuid() && status.st_uid != 0) {
        ReportTrouble(Trouble::KEY_OWNER, "key file %s: belongs to user %u", name, status.st_uid);
        return false;
    }
    if ((status.st_mode & 07177) != 0) {
        ReportTrouble(Trouble::KEY_MODE, "key file %s: mode %04o is too open, 0600 is expected", name,
                      status.st_mode & 07777);
        return false;
    }
    if (status.st_size != static_cast<off_t>(DEVICE_KEY_SIZE)) {
        ReportTrouble(Trouble::KEY_SIZE, "key file %s: %lld bytes, %zu are expected", name,
                      static_cast<long long>(status.st_size), DEVICE_KEY_SIZE);
        return false;
    }
    return true;
}

enum class Outcome { READ, MISSING, REFUSED };

Outcome ReadKey(const char *name, DeviceKey &key) {
    /* Without waiting: the name may be that of a pipe. */
    File file(open(name, O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY));
    if (!file.IsOpen()) {
        if (errno == ENOENT)
            return Outcome::MISSING;
        ReportTrouble(Trouble::KEY_UNREADABLE, "key file %s: %s", name, strerror(errno));
        return Outcome::REFUSED;
    }
    if (!IsTrustworthy(name, file.Get()))
        return Outcome::REFUSED;
    if (!ReadAll(file.Get(), key.bytes, sizeof key.bytes)) {
        ReportTrouble(Trouble::KEY_UNREADABLE, "key file %s: cannot be read", name);
        return Outcome::REFUSED;
    }
    TroubleIsOver();
    return Outcome::READ;
}

bool FillWithNewKey(int descriptor) {
    DeviceKey key;
    return fchmod(descriptor, S_IRUSR | S_IWUSR) == 0 && RAND_priv_bytes(key.bytes, sizeof key.bytes) == 1 &&
           WriteAll(descriptor, key.bytes, sizeof key.bytes) && fsync(descriptor) == 0;
}

/* What was encrypted must not outlive the name of its key. Some file systems cannot do it for a folder; the key stands
 * there all the same. */
void SyncFolder(const char *folder) {
    File file(open(folder, O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (file.IsOpen())
        (void)fsync(file.Get());
}

/* Writes a whole key under another name and then links it to its own, which succeeds for the first one only. */
bool MakeKey(const char *name) {
    char name_copy[PATH_MAX];
    char temporary[PATH_MAX];
    std::size_t length = strlen(name);
    if (length + sizeof TEMPORARY_ENDING > sizeof temporary) {
        errno = ENAMETOOLONG;
        return false;
    }
    memcpy(name_copy, name, length + 1);
    const char *folder = dirname(name_copy);
    memcpy(temporary, name, length);
    memcpy(temporary + length, TEMPORARY_ENDING, sizeof TEMPORARY_ENDING);

    if (mkdir(folder, S_IRWXU) != 0 && errno != EEXIST)
        return false;
    File file(mkostemp(temporary, O_CLOEXEC));
    if (!file.IsOpen())
        return false;
    bool made = FillWithNewKey(file.Get()) && (link(temporary, name) == 0 || errno == EEXIST);
    int error = errno;
    unlink(temporary);
    SyncFolder(folder);
    errno = error;
    return made;
}

} // namespace

bool ReadDeviceKey(DeviceKey &key) {
    const char *name = KeyFileName();
    Outcome outcome = ReadKey(name, key);
    if (outcome == Outcome::MISSING)
        ReportTrouble(Trouble::KEY_MISSING, "key file %s: missing, stored passwords cannot be decrypted", name);
    return outcome == Outcome::READ;
}

bool ReadOrMakeDeviceKey(DeviceKey &key) {
    const char *name = KeyFileName();
    Outcome outcome = ReadKey(name, key);
    if (outcome != Outcome::MISSING)
        return outcome == Outcome::READ;
    if (!MakeKey(name)) {
        ReportTrouble(Trouble::KEY_NOT_MADE, "key file %s: cannot be made: %s", name, strerror(errno));
        return false;
    }
    return ReadDeviceKey(key);
}

} // namespace uvel::host
