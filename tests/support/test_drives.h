// Maps C:\, D:\ and \\server\ to an empty temporary folder, so that a test writes and reads the paths that
// the module sees. The destructor removes the folder and restores the former drives.
#pragma once

#include <algorithm>
#include <filesystem>
#include <string>
#include <vector>

#include "support/test_folder.h"

namespace ventrix::test {

class TestDrives {
  public:
    TestDrives() {
        for (const char* drive : {"c", "d", "server"}) {
            std::filesystem::create_directory(root_.Native(drive));
        }
        platform::SetProcessDrives({kWholeSystem,
                                    {R"(C:\)", root_.Native("c")},
                                    {R"(D:\)", root_.Native("d")},
                                    {R"(\\server\)", root_.Native("server")}});
    }
    ~TestDrives() { platform::SetProcessDrives(former_); }
    TestDrives(const TestDrives&) = delete;
    TestDrives& operator=(const TestDrives&) = delete;

    std::filesystem::path Native(const std::string& path) const {
        return platform::PathFromUtf8(platform::ToNative(path));
    }

    void Write(const std::string& path, const std::string& content) const {
        root_.Write(platform::ToNative(path), content);
    }

    void WriteScript(const std::string& path, const std::string& body) const {
        root_.WriteProgram(platform::ToNative(path), "#!/bin/sh\n" + body);
    }

    void MakeFolder(const std::string& path) const { std::filesystem::create_directories(Native(path)); }

    bool Exists(const std::string& path) const { return std::filesystem::exists(Native(path)); }

    /// The content of the file, or "(missing)".
    std::string Read(const std::string& path) const {
        return Exists(path) ? root_.Read(platform::ToNative(path)) : "(missing)";
    }

    /// Everything below the folder, sorted and relative to it; folders end in a backslash.
    std::vector<std::string> Tree(const std::string& folder) const {
        std::vector<std::string> tree;
        if (!Exists(folder)) {
            return tree;
        }
        for (const auto& entry : std::filesystem::recursive_directory_iterator(Native(folder))) {
            std::string name = platform::Utf8FromPath(entry.path().lexically_relative(Native(folder)));
            std::replace(name.begin(), name.end(), '/', '\\');
            tree.push_back(entry.is_directory() ? name + '\\' : name);
        }
        std::sort(tree.begin(), tree.end());
        return tree;
    }

  private:
#ifdef _WIN32
    // Z: is the system's own, under Wine for the root folder.
    inline static const platform::Drive kWholeSystem = {R"(Z:\)", "Z:"};
#else
    inline static const platform::Drive kWholeSystem = {R"(Z:\)", "/"};
#endif

    const platform::DriveTable former_ = platform::ProcessDrives();
    const TestFolder root_;
};

}  // namespace ventrix::test
