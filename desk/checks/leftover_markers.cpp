#include "desk/checks/leftover_markers.h"

#include <algorithm>
#include <filesystem>
#include <functional>
#include <optional>
#include <string_view>

#include "desk/xml/encodings.h"
#include "desk/xml/marker_text.h"
#include "platform/files.h"

namespace ventrix::desk {
namespace {

namespace fs = std::filesystem;

/// A text has no null bytes. A binary file shows one early.
bool IsText(const std::string& content) {
    return content.find('\0') == std::string::npos;
}

/// Marker text in UTF-16 of either byte order.
bool HoldsWideMarkerText(const std::string& content) {
    constexpr std::string_view kWideStart("Q\0L\0_", 5);
    return content.find(kWideStart) != std::string::npos;
}

void AddFinding(const NativePath& file, const char* text, CleanedFiles& cleaned) {
    cleaned.findings.push_back({file, 0, "not-cleaned", text});
}

/// Takes the groups out. `write` gets the changed text and returns whether it could be written.
void CleanText(const NativePath& file, std::string text,
               const std::function<bool(const std::string& text)>& write, CleanedFiles& cleaned) {
    const std::size_t groups = RemoveMarkerGroups(text);
    if (groups > 0 && !write(text)) {
        AddFinding(file, "cannot be written, so that it still contains marker text", cleaned);
        return;
    }
    cleaned.groups += groups;
    if (groups > 0) {
        cleaned.files.insert(file);
    }
    if (HoldsMarkerText(text)) {
        AddFinding(file, "still contains parts of marker text", cleaned);
    }
}

bool Write(const NativePath& file, const std::string& content) {
    return platform::WriteWholeFile(file.utf8, content) == platform::kErrorNone;
}

void CleanUtf16(const NativePath& file, const std::string& content, CleanedFiles& cleaned) {
    constexpr std::size_t kMark = 2;
    const char* encoding = Utf16Encoding(content);
    const std::string_view wide = std::string_view(content).substr(kMark);
    const std::optional<std::string> text = encoding == nullptr ? std::nullopt : ToUtf8(wide, encoding);
    if (!text.has_value() || FromUtf8(*text, encoding) != wide) {
        AddFinding(
            file,
            "seems to be UTF-16 but has no byte order mark or is damaged, so that it may still contain "
            "marker text",
            cleaned);
        return;
    }
    const auto write = [&](const std::string& changed) {
        return Write(file, content.substr(0, kMark) + FromUtf8(changed, encoding).value_or(std::string()));
    };
    CleanText(file, *text, write, cleaned);
}

void CleanFile(const fs::path& path, CleanedFiles& cleaned) {
    const NativePath file = FromFilesystem(path);
    std::string content;
    if (platform::ReadWholeFile(file.utf8, content) != platform::kErrorNone) {
        AddFinding(file, "cannot be read, so that it may still contain marker text", cleaned);
    } else if (HoldsWideMarkerText(content)) {
        CleanUtf16(file, content, cleaned);
    } else if (HoldsMarkerText(content) && IsText(content)) {
        CleanText(
            file, content, [&file](const std::string& changed) { return Write(file, changed); }, cleaned);
    }
}

/// The regular files of a folder and below, by name; a file is itself. Links are not followed.
std::vector<fs::path> FilesAt(const NativePath& place) {
    std::error_code error;
    const fs::path path = ToFilesystem(place);
    if (fs::is_regular_file(fs::symlink_status(path, error))) {
        return {path};
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
    return files;
}

}  // namespace

void CleanFiles(const NativePath& place, CleanedFiles& cleaned) {
    for (const fs::path& file : FilesAt(place)) {
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
