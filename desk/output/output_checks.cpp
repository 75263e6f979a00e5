#include "desk/output/output_checks.h"

#include "desk/output/entries.h"
#include "desk/output/foreign_files.h"
#include "platform/drives.h"
#include "platform/file_identity.h"
#include "platform/home_folders.h"
#include "platform/mount_points.h"
#include "platform/native_files.h"
#include "platform/path_text.h"

namespace fs = std::filesystem;

namespace ventrix::desk {
namespace {

std::vector<fs::path> ProtectedFolders() {
    std::vector<fs::path> folders = platform::HomeFolders();
    for (const platform::Drive& drive : platform::ProcessDrives()) {
        folders.emplace_back(drive.folder);
    }
    return folders;
}

bool IsTopLevel(const fs::path& output) {
    return output.parent_path() == output.root_path();
}

std::string WhyProtected(const fs::path& output) {
    constexpr const char* kReason =
        "is or contains a home folder or a root folder; choose a separate folder for the result";
    if (output.filename().empty()) {
        return kReason;
    }
    for (const fs::path& folder : ProtectedFolders()) {
        if (platform::LiesIn(folder, output)) {
            return kReason;
        }
    }
    return {};
}

}  // namespace

fs::path RealOutput(const fs::path& folder) {
    std::error_code error;
    fs::path real = fs::weakly_canonical(folder, error);
    if (error) {
        real = folder.lexically_normal();
    }
    return real.has_filename() ? real : real.parent_path();
}

std::string WhyNeverAllowed(const fs::path& output, const std::vector<fs::path>& inputs) {
    if (Exists(output) && !IsFolder(output)) {
        return "is not a folder; choose a folder for the result";
    }
    if (std::string reason = WhyProtected(output); !reason.empty()) {
        return reason;
    }
    for (const fs::path& input : inputs) {
        if (!input.empty() && platform::LiesIn(input, output)) {
            return "contains " + platform::Utf8FromPath(input) +
                   ", which the run reads; choose a separate folder for the result";
        }
    }
    if (const std::vector<fs::path> mounts = platform::MountPointsBelow(output); !mounts.empty()) {
        return "contains " + platform::Utf8FromPath(mounts.front()) +
               ", which is a mount point; unmount it, or choose another folder for the result";
    }
    return {};
}

std::string WhyNotOurs(const fs::path& output, const Manifest& manifest, bool force) {
    const auto foreign = manifest.readable ? std::nullopt : FirstForeign(output, manifest);
    if (!foreign || !Exists(output)) {
        return {};
    }
    if (IsTopLevel(output)) {
        return "is a top-level folder and contains " + platform::Utf8FromPath(*foreign) +
               ", which no run created; choose another folder for the result";
    }
    return force ? std::string()
                 : "is not empty and was not created by an earlier run; --force publishes into it and "
                   "keeps what it contains";
}

std::string WhyNotMovable(const fs::path& output) {
    std::error_code error;
    if (!Exists(output)) {
        return {};
    }
    if (platform::IsMountPoint(output)) {
        return "is a mount point";
    }
    if (platform::LiesIn(fs::current_path(error), output)) {
        return "is or contains the current folder";
    }
    return platform::IsWritableFolder(output.parent_path()) ? std::string()
                                                            : "is in a folder that is not writable";
}

std::string WhyNotUsableInPlace(const fs::path& output, const Manifest& manifest,
                                const std::string& notMovable) {
    if (const auto foreign = FirstForeign(output, manifest)) {
        return notMovable + " and contains " +
               (foreign->empty() ? "files" : platform::Utf8FromPath(*foreign)) +
               ", which no run created or a user edited; choose a folder inside it for the result";
    }
    return platform::IsWritableFolder(output) ? std::string() : "cannot be written";
}

}  // namespace ventrix::desk
