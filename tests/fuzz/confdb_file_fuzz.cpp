// A file where the configuration database should be: it is read, or refused with a reason, and then left as it is.
//
// The input is written over the beginning of a database with a few values, from the offset that its first two bytes
// name.

#include <cstring>
#include <filesystem>
#include <fstream>
#include <unistd.h>
#include <vector>

#include <uvelhost/confdb_writer.h>

#include "fuzz_input.h"

namespace {

using Bytes = std::vector<char>;

/* A folder of this process in memory, gone at its end. */
class Folder {
  public:
    Folder() : path_("/dev/shm/confdb_file_fuzz." + std::to_string(getpid())) {
        std::filesystem::create_directory(path_);
    }
    ~Folder() { std::filesystem::remove_all(path_); }
    std::string File() const { return path_ + "/confdb"; }
    void Clear() const {
        for (const auto &entry : std::filesystem::directory_iterator(path_))
            std::filesystem::remove_all(entry);
    }

  private:
    std::string path_;
};

Bytes Contents(const std::string &file) {
    std::ifstream stream(file, std::ios::binary);
    return Bytes((std::istreambuf_iterator<char>(stream)), std::istreambuf_iterator<char>());
}

/* A database as it is written, closed in order. */
Bytes GoodFile(const Folder &folder) {
    DB_STORE_S *store = nullptr;
    REQUIRE(db_store_open(("sqlite:" + folder.File()).c_str(), &store) == 0);
    for (const char *key : {"system_mac", "system_mac_number", "sys_name"})
        REQUIRE(db_store_put(store, "system_info", key, key, static_cast<uint32_t>(std::strlen(key)), nullptr) == 0);
    REQUIRE(db_store_delete(store, "system_info", "sys_name", nullptr) == 0);
    db_store_close(store);
    return Contents(folder.File());
}

void Use(const std::string &file) {
    DB_STORE_S *store = nullptr;
    if (db_store_open(("sqlite:" + file).c_str(), &store) != 0) {
        REQUIRE(db_last_error()[0] != '\0');
        return;
    }
    const auto look = [](void *, const DB_RECORD_S *record) {
        REQUIRE(record->pszTable[0] != '\0' && record->stKv.pszKey[0] != '\0');
        REQUIRE(record->stKv.ulValueLength == 0 || record->stKv.pValue != nullptr);
    };
    (void)db_store_list(store, nullptr, look, nullptr);
    char value[64];
    uint32_t length = sizeof value;
    (void)db_store_get(store, "system_info", "system_mac", value, &length);
    (void)db_store_put(store, "t", "k", "v", 1, nullptr);
    db_store_close(store);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    static const Folder folder;
    static const Bytes good = GoodFile(folder);
    if (size < 2)
        return 0;
    Bytes bytes = good;
    const std::size_t offset = (data[0] * 256u + data[1]) % good.size();
    for (std::size_t i = 2; i < size && offset + i - 2 < bytes.size(); ++i)
        bytes[offset + i - 2] = static_cast<char>(data[i]);
    folder.Clear();
    std::ofstream(folder.File(), std::ios::binary).write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    Use(folder.File());
    return 0;
}
