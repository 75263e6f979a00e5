// A temporary folder, which the destructor removes. Names are relative to it.
#pragma once

#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

#include "platform/drives.h"

namespace ventrix::test {

class TestFolder {
  public:
    TestFolder() {
        std::string pattern = (std::filesystem::temp_directory_path() / "ventrix-test-XXXXXX").string();
        path_ = std::filesystem::canonical(::mkdtemp(pattern.data()));
    }
    ~TestFolder() {
        std::error_code ignored;
        std::filesystem::remove_all(path_, ignored);
    }
    TestFolder(const TestFolder&) = delete;
    TestFolder& operator=(const TestFolder&) = delete;

    std::string Native(const std::string& name = {}) const {
        return (name.empty() ? path_ : path_ / name).string();
    }
    std::string System(const std::string& name = {}) const {
        return platform::ToSystem(Native(name)).value();
    }

    /// Writes a file and creates its folders. The file's native path.
    std::string Write(const std::string& name, const std::string& content) const {
        std::filesystem::create_directories((path_ / name).parent_path());
        std::ofstream(path_ / name, std::ios::binary) << content;
        return Native(name);
    }
    std::string WriteProgram(const std::string& name, const std::string& content) const {
        Write(name, content);
        std::filesystem::permissions(path_ / name, std::filesystem::perms::owner_all);
        return Native(name);
    }
    void SetReadOnly(const std::string& name) const {
        std::filesystem::permissions(path_ / name, std::filesystem::perms(0444));
    }

    /// The content of a file; empty if there is none.
    std::string Read(const std::string& name) const {
        std::ifstream file(path_ / name, std::ios::binary);
        return {std::istreambuf_iterator<char>(file), {}};
    }

    /// Whether there is an entry; a dangling link counts.
    bool Exists(const std::string& name) const {
        return std::filesystem::exists(std::filesystem::symlink_status(path_ / name));
    }

    /// The number of entries of the folder itself.
    long Count() const { return std::distance(std::filesystem::directory_iterator(path_), {}); }

  private:
    std::filesystem::path path_;
};

}  // namespace ventrix::test
