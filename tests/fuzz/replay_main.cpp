/* Runs a fuzz target over files: every one named on the command line, and every one in the folders named there. A
 * target that finds a fault ends the process. */
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <memory>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size);

namespace {

bool Replay(const std::filesystem::path &file) {
    std::ifstream stream(file, std::ios::binary);
    const std::vector<char> bytes((std::istreambuf_iterator<char>(stream)), std::istreambuf_iterator<char>());
    if (!stream.is_open() || stream.bad()) {
        std::fprintf(stderr, "%s: cannot be read\n", file.c_str());
        return false;
    }
    std::printf("%s, %zu bytes\n", file.c_str(), bytes.size());
    std::fflush(stdout); /* the last line names the file when the target ends the process */
    /* A block of exactly this size, so that AddressSanitizer sees whoever reads behind it. */
    const std::unique_ptr<uint8_t[]> block(new uint8_t[bytes.size()]);
    if (!bytes.empty())
        std::memcpy(block.get(), bytes.data(), bytes.size());
    return LLVMFuzzerTestOneInput(block.get(), bytes.size()) == 0;
}

} // namespace

int main(int argc, char **argv) {
    std::vector<std::filesystem::path> files;
    for (int i = 1; i < argc; ++i) {
        if (!std::filesystem::is_directory(argv[i])) {
            files.emplace_back(argv[i]);
            continue;
        }
        for (const auto &entry : std::filesystem::recursive_directory_iterator(argv[i])) {
            if (entry.is_regular_file())
                files.push_back(entry.path());
        }
    }
    std::sort(files.begin(), files.end());
    if (files.empty()) {
        std::fprintf(stderr, "no files to replay\n");
        return 1;
    }
    bool good = true;
    for (const auto &file : files)
        good = Replay(file) && good;
    return good ? 0 : 1;
}
