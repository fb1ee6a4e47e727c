/* A folder that goes with the test. */
#pragma once

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <string>

class TemporaryFolder {
  public:
    TemporaryFolder() {
        std::string pattern = (std::filesystem::temp_directory_path() / "uvel_XXXXXX").string();
        if (mkdtemp(pattern.data()) == nullptr)
            throw std::runtime_error("mkdtemp");
        path_ = pattern;
    }
    ~TemporaryFolder() {
        std::error_code error;
        std::filesystem::remove_all(path_, error);
    }
    TemporaryFolder(const TemporaryFolder &) = delete;
    TemporaryFolder &operator=(const TemporaryFolder &) = delete;

    const std::string &Path() const { return path_; }
    std::string File(const std::string &name) const { return path_ + "/" + name; }

    std::string Write(const std::string &name, const std::string &text) const {
        std::ofstream(File(name)) << text;
        return File(name);
    }

  private:
    std::string path_;
};
