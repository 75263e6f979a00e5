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
        platform::SetProcessDrives({{R"(Z:\)", "/"},
                                    {R"(C:\)", root_.Native("c")},
                                    {R"(D:\)", root_.Native("d")},
                                    {R"(\\server\)", root_.Native("server")}});
    }
    ~TestDrives() { platform::SetProcessDrives(former_); }
    TestDrives(const TestDrives&) = delete;
    TestDrives& operator=(const TestDrives&) = delete;

    std::filesystem::path Native(const std::string& path) const { return platform::ToNative(path); }

    void Write(const std::string& path, const std::string& content) const {
        root_.Write(Native(path), content);
    }

    void WriteScript(const std::string& path, const std::string& body) const {
        root_.WriteProgram(Native(path), "#!/bin/sh\n" + body);
    }

    void MakeFolder(const std::string& path) const { std::filesystem::create_directories(Native(path)); }

    bool Exists(const std::string& path) const { return std::filesystem::exists(Native(path)); }

    /// The content of the file, or "(missing)".
    std::string Read(const std::string& path) const {
        return Exists(path) ? root_.Read(Native(path)) : "(missing)";
    }

    /// Everything below the folder, sorted and relative to it; folders end in a backslash.
    std::vector<std::string> Tree(const std::string& folder) const {
        std::vector<std::string> tree;
        if (!Exists(folder)) {
            return tree;
        }
        for (const auto& entry : std::filesystem::recursive_directory_iterator(Native(folder))) {
            std::string name = entry.path().lexically_relative(Native(folder)).string();
            std::replace(name.begin(), name.end(), '/', '\\');
            tree.push_back(entry.is_directory() ? name + '\\' : name);
        }
        std::sort(tree.begin(), tree.end());
        return tree;
    }

  private:
    const platform::DriveTable former_ = platform::ProcessDrives();
    const TestFolder root_;
};

}  // namespace ventrix::test
