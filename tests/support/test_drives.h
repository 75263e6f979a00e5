// Maps C:\, D:\ and \\server\ to an empty temporary folder, so that a test writes and reads the paths that
// the module sees. The destructor removes the folder and restores the former drives.
#pragma once

#include <algorithm>
#include <filesystem>
#include <string>
#include <vector>

#include "support/scripts.h"
#include "support/test_folder.h"

namespace ventrix::test {

/// The native path of Z:, without a closing slash. On Windows it is the system's own, under Wine for the root
/// folder. kSystemDrives is the table of a run without drives of its own.
#ifdef _WIN32
inline const std::string kDriveZ = "Z:";
inline const platform::Drive kWholeSystem = {R"(Z:\)", "Z:"};
inline const platform::DriveTable kSystemDrives;
#else
inline const std::string kDriveZ;
inline const platform::Drive kWholeSystem = {R"(Z:\)", "/"};
inline const platform::DriveTable kSystemDrives = {kWholeSystem};
#endif

class TestDrives {
  public:
    /// Who sees the drives: this program only, or libraries that it loads, too. On Windows those know the
    /// system's drives only, so that the paths are those of the folder, which Seen gives.
    enum class For { kProgram, kLibraries };

    explicit TestDrives(For whom = For::kProgram)
        : isSystemPath_(whom == For::kLibraries && kSystemDrives.empty()) {
        for (const char* drive : {"c", "d", "server"}) {
            std::filesystem::create_directory(root_.Native(drive));
        }
        if (isSystemPath_) {
            platform::SetProcessDrives({});
            return;
        }
        platform::SetProcessDrives({kWholeSystem,
                                    {R"(C:\)", root_.Native("c")},
                                    {R"(D:\)", root_.Native("d")},
                                    {R"(\\server\)", root_.Native("server")}});
    }
    ~TestDrives() { platform::SetProcessDrives(former_); }
    TestDrives(const TestDrives&) = delete;
    TestDrives& operator=(const TestDrives&) = delete;

    /// The text with each path on C: and D: as whoever the drives are for sees it.
    std::string Seen(std::string text) const {
        for (const char* drive : {"C:\\", "D:\\"}) {
            const std::string folder = root_.System(drive[0] == 'C' ? "c" : "d") + '\\';
            for (std::size_t at = text.find(drive); isSystemPath_ && at != std::string::npos;
                 at = text.find(drive, at + folder.size())) {
                text.replace(at, 3, folder);
            }
        }
        return text;
    }

    std::filesystem::path Native(const std::string& path) const {
        return platform::PathFromUtf8(NativeText(path));
    }

    void Write(const std::string& path, const std::string& content) const {
        root_.Write(NativeText(path), content);
    }

    /// Writes a script, whose path ends in kScriptSuffix, with these steps (scripts.h).
    void WriteScript(const std::string& path, const std::string& steps) const {
        root_.WriteProgram(NativeText(path), ScriptWith(steps));
    }

    void MakeFolder(const std::string& path) const { std::filesystem::create_directories(Native(path)); }

    bool Exists(const std::string& path) const { return std::filesystem::exists(Native(path)); }

    /// The content of the file, or "(missing)".
    std::string Read(const std::string& path) const {
        return Exists(path) ? root_.Read(NativeText(path)) : "(missing)";
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
    std::string NativeText(const std::string& path) const { return platform::ToNative(Seen(path)); }

    const bool isSystemPath_;
    const platform::DriveTable former_ = platform::ProcessDrives();
    const TestFolder root_;
};

}  // namespace ventrix::test
