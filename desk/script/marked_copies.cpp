#include "desk/script/marked_copies.h"

#include <filesystem>
#include <fstream>
#include <functional>
#include <iterator>
#include <string_view>

namespace fs = std::filesystem;

namespace ventrix::desk {
namespace {

constexpr char kCompleteMark[] = ".complete";

bool IsXml(const fs::path& path) {
    const fs::path extension = path.extension();
    return extension == ".xml" || extension == ".dita" || extension == ".ditamap";
}

/// Whether the bytes may be those of a page with marker text. A graphic has null bytes near its beginning, as
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
    content.append(std::istreambuf_iterator<char>(file), {});
    return content.find("QL_") != std::string::npos;
}

/// Copies the files that are chosen by their path and their name below the folder. False if it stopped.
bool CopyFiles(const fs::path& from, const fs::path& to,
               const std::function<bool(const fs::path& path, const fs::path& name)>& isChosen) {
    std::error_code error;
    fs::create_directories(to, error);
    fs::recursive_directory_iterator entry(from, error);
    for (; !error && entry != fs::recursive_directory_iterator(); entry.increment(error)) {
        const fs::path name = entry->path().lexically_relative(from);
        std::error_code ignored;
        if (!fs::is_regular_file(entry->symlink_status(ignored)) || !isChosen(entry->path(), name)) {
            continue;
        }
        fs::create_directories((to / name).parent_path(), error);
        if (error || !fs::copy_file(entry->path(), to / name, fs::copy_options::overwrite_existing, error)) {
            return false;
        }
    }
    return !error;
}

void Complete(const std::string& folder) {
    std::ofstream mark(folder + kCompleteMark);
}

bool IsComplete(const std::string& folder) {
    std::error_code error;
    return fs::exists(folder + kCompleteMark, error);
}

}  // namespace

MarkedFolders MarkedFoldersIn(const std::string& runFolder) {
    return {runFolder + "/sources", runFolder + "/result"};
}

void CopySources(const std::string& package, const MarkedFolders& folders) {
    if (IsComplete(folders.sources)) {
        return;
    }
    const auto isXml = [](const fs::path& path, const fs::path&) { return IsXml(path); };
    if (CopyFiles(package, folders.sources, isXml)) {
        Complete(folders.sources);
    }
}

void CopyResult(const std::string& package, const MarkedFolders& folders) {
    std::error_code error;
    fs::remove(folders.result + kCompleteMark, error);
    fs::remove_all(folders.result, error);
    const fs::path sources = folders.sources;
    const auto isMarked = [&sources](const fs::path& path, const fs::path& name) {
        std::error_code ignored;
        return !fs::exists(sources / name, ignored) && MayHoldMarkers(path);
    };
    if (CopyFiles(package, folders.result, isMarked)) {
        Complete(folders.result);
    }
}

bool AreCopied(const MarkedFolders& folders) {
    return IsComplete(folders.sources) && IsComplete(folders.result);
}

}  // namespace ventrix::desk
