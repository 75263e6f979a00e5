#include "desk/script/marked_copies.h"

#include <algorithm>
#include <cstdint>
#include <fstream>
#include <string_view>

#include "platform/native_files.h"
#include "platform/path_text.h"

namespace fs = std::filesystem;

namespace ventrix::desk {
namespace {

constexpr char kCompleteMark[] = ".complete";

bool IsXml(const fs::path& path) {
    const fs::path extension = path.extension();
    return extension == ".xml" || extension == ".dita" || extension == ".ditamap";
}

/// Whether the bytes may be those of a file with marker text. A graphic has null bytes near its beginning, as
/// UTF-16 has, which begins with a byte order mark.
bool MayHoldMarkers(const fs::path& path) {
    std::ifstream file(path, std::ios::binary);
    std::string content(4096, '\0');
    file.read(content.data(), static_cast<std::streamsize>(content.size()));
    content.resize(static_cast<std::size_t>(file.gcount()));
    if (content.starts_with("\xFF\xFE") || content.starts_with("\xFE\xFF")) {
        return true;
    }
    if (content.find('\0') != std::string::npos) {
        return false;
    }
    std::error_code error;
    const std::uintmax_t size = fs::file_size(path, error);
    const std::size_t first = content.size();
    content.resize(error ? first : std::max<std::size_t>(first, size));
    file.read(content.data() + first, static_cast<std::streamsize>(content.size() - first));
    return content.find("QL_") != std::string::npos;
}

/// The regular files below the folder, relative to it, by name.
std::vector<fs::path> FilesBelow(const std::string& folder) {
    std::vector<fs::path> names;
    std::error_code error;
    fs::recursive_directory_iterator entry(platform::PathFromUtf8(folder), error);
    for (; !error && entry != fs::recursive_directory_iterator(); entry.increment(error)) {
        std::error_code ignored;
        if (fs::is_regular_file(entry->symlink_status(ignored))) {
            names.push_back(entry->path().lexically_relative(platform::PathFromUtf8(folder)));
        }
    }
    std::ranges::sort(names);
    return names;
}

/// Marks the copies as complete when all are made.
void CopyFiles(const std::string& source, const std::string& target, const std::vector<fs::path>& names) {
    const fs::path from = platform::PathFromUtf8(source);
    const fs::path to = platform::PathFromUtf8(target);
    std::error_code error;
    for (const fs::path& name : names) {
        const fs::path copy = to / name;
        fs::create_directories(copy.parent_path(), error);
        if (error || platform::CopyReplacing(from / name, copy)) {
            return;
        }
    }
    const std::ofstream mark(platform::PathFromUtf8(target + kCompleteMark));
}

}  // namespace

std::vector<fs::path> XmlFilesBelow(const std::string& folder) {
    std::vector<fs::path> names = FilesBelow(folder);
    std::erase_if(names, [](const fs::path& name) { return !IsXml(name); });
    return names;
}

std::vector<fs::path> MarkedFilesBelow(const std::string& folder, const std::vector<fs::path>& sources) {
    std::vector<fs::path> names = FilesBelow(folder);
    std::erase_if(names, [&](const fs::path& name) {
        return std::ranges::binary_search(sources, name) ||
               !MayHoldMarkers(platform::PathFromUtf8(folder) / name);
    });
    return names;
}

MarkedFolders MarkedFoldersIn(const std::string& runFolder) {
    return {runFolder + "/sources", runFolder + "/result"};
}

void CopySources(const std::string& package, const MarkedFolders& folders) {
    if (!AreCopied(folders.sources)) {
        CopyFiles(package, folders.sources, XmlFilesBelow(package));
    }
}

void CopyResult(const std::string& package, const MarkedFolders& folders) {
    CopyFiles(package, folders.result, MarkedFilesBelow(package, XmlFilesBelow(folders.sources)));
}

bool AreCopied(const std::string& folder) {
    std::error_code error;
    return fs::exists(platform::PathFromUtf8(folder + kCompleteMark), error);
}

}  // namespace ventrix::desk
