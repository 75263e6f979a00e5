#include "desk/checks/leftover_markers.h"

#include <algorithm>
#include <filesystem>

#include "desk/xml/marker_text.h"
#include "platform/files.h"

namespace ventrix::desk {
namespace {

namespace fs = std::filesystem;

/// A text has no null bytes. A binary file shows one early.
bool IsText(const std::string& content) {
    return content.find('\0') == std::string::npos;
}

void CleanFile(const fs::path& path, CleanedFiles& cleaned) {
    const NativePath file = FromFilesystem(path);
    std::string content;
    if (platform::ReadWholeFile(file.utf8, content) != platform::kErrorNone) {
        cleaned.findings.push_back(
            {file, 0, "not-cleaned", "cannot be read, so that it may still contain marker text"});
        return;
    }
    if (!HoldsMarkerText(content) || !IsText(content)) {
        return;
    }
    const std::size_t groups = RemoveMarkerGroups(content);
    if (groups > 0 && platform::WriteWholeFile(file.utf8, content) != platform::kErrorNone) {
        cleaned.findings.push_back(
            {file, 0, "not-cleaned", "cannot be written, so that it still contains marker text"});
        return;
    }
    cleaned.groups += groups;
    cleaned.files += groups > 0 ? 1 : 0;
    if (HoldsMarkerText(content)) {
        cleaned.findings.push_back({file, 0, "not-cleaned", "still contains parts of marker text"});
    }
}

}  // namespace

void CleanFiles(const NativePath& place, CleanedFiles& cleaned) {
    std::error_code error;
    const fs::path path = ToFilesystem(place);
    if (fs::is_regular_file(fs::symlink_status(path, error))) {
        CleanFile(path, cleaned);
        return;
    }
    std::vector<fs::path> files;
    for (fs::recursive_directory_iterator entry(path, error), end; !error && entry != end;
         entry.increment(error)) {
        std::error_code ignored;
        if (fs::is_regular_file(entry->symlink_status(ignored))) {
            files.push_back(entry->path());
        }
    }
    std::ranges::sort(files);
    for (const fs::path& file : files) {
        CleanFile(file, cleaned);
    }
}

NativePath FirstWithMarkerWord(const std::vector<NativePath>& files) {
    for (const NativePath& file : files) {
        std::string content;
        if (platform::ReadWholeFile(file.utf8, content) == platform::kErrorNone && IsText(content) &&
            HoldsMarkerWord(content)) {
            return file;
        }
    }
    return {};
}

}  // namespace ventrix::desk
