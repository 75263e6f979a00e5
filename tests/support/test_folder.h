// A temporary folder, which the destructor removes. Names are relative to it.
#pragma once

#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>
#include <string>

#include "platform/drives.h"
#include "platform/path_text.h"

namespace ventrix::test {

class TestFolder {
  public:
    TestFolder() : path_(MakeFolder()) {}
    ~TestFolder() {
        std::error_code ignored;
        std::filesystem::remove_all(path_, ignored);
    }
    TestFolder(const TestFolder&) = delete;
    TestFolder& operator=(const TestFolder&) = delete;

    std::string Native(const std::string& name = {}) const {
        return platform::Utf8FromPath(name.empty() ? path_ : PathOf(name));
    }
    std::string System(const std::string& name = {}) const {
        return platform::ToSystem(Native(name)).value();
    }

    /// Writes a file and creates its folders. The file's native path.
    std::string Write(const std::string& name, const std::string& content) const {
        std::filesystem::create_directories(PathOf(name).parent_path());
        std::ofstream(PathOf(name), std::ios::binary) << content;
        return Native(name);
    }
    std::string WriteProgram(const std::string& name, const std::string& content) const {
        Write(name, content);
        std::filesystem::permissions(PathOf(name), std::filesystem::perms::owner_all);
        return Native(name);
    }
    void SetReadOnly(const std::string& name) const {
        std::filesystem::permissions(PathOf(name), std::filesystem::perms(0444));
    }

    /// The content of a file; empty if there is none.
    std::string Read(const std::string& name) const {
        std::ifstream file(PathOf(name), std::ios::binary);
        return {std::istreambuf_iterator<char>(file), {}};
    }

    void Remove(const std::string& name) const { std::filesystem::remove(PathOf(name)); }

    /// Whether there is an entry; a dangling link counts.
    bool Exists(const std::string& name) const {
        return std::filesystem::exists(std::filesystem::symlink_status(PathOf(name)));
    }

    /// The number of entries of the folder itself.
    long Count() const {
        return static_cast<long>(std::distance(std::filesystem::directory_iterator(path_), {}));
    }

  private:
    static std::filesystem::path MakeFolder() {
        std::random_device random;
        for (;;) {
            const std::string name = "ventrix-test-" + std::to_string(random());
            const std::filesystem::path folder = std::filesystem::temp_directory_path() / name;
            if (std::filesystem::create_directory(folder)) {
                return std::filesystem::canonical(folder);
            }
        }
    }

    std::filesystem::path PathOf(const std::string& name) const {
        return path_ / platform::PathFromUtf8(name);
    }

    std::filesystem::path path_;
};

}  // namespace ventrix::test
