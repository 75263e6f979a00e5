#include "desk/output/entries.h"

#include <algorithm>

#include "platform/native_files.h"
#include "platform/path_text.h"

namespace fs = std::filesystem;

namespace ventrix::desk {
namespace {

constexpr std::size_t kNameLimit = 255;  // Bytes, on all common file systems.
constexpr int kNumberLimit = 100'000;

bool ContinuesCharacter(char byte) {
    return (static_cast<unsigned char>(byte) & 0xC0) == 0x80;
}

}  // namespace

std::vector<fs::path> NamesIn(const fs::path& folder, std::error_code& error) {
    std::vector<fs::path> names;
    fs::directory_iterator entry(folder, error);
    while (!error && entry != fs::directory_iterator()) {
        names.push_back(entry->path().filename());
        entry.increment(error);
    }
    std::ranges::sort(names);
    return names;
}

std::vector<fs::path> NamesIn(const fs::path& folder, std::vector<std::string>& findings) {
    std::error_code error;
    std::vector<fs::path> names = NamesIn(folder, error);
    if (error) {
        findings.push_back(platform::Utf8FromPath(folder) + " cannot be listed: " + error.message());
    }
    return names;
}

bool Exists(const fs::path& path) {
    return platform::StatusOfEntry(path).has_value();
}

bool IsFolder(const fs::path& path) {
    const auto status = platform::StatusOfEntry(path);
    return status && status->kind == platform::EntryKind::kFolder;
}

fs::perms ModeOf(const fs::path& folder) {
    std::error_code error;
    const fs::file_status status = fs::symlink_status(folder, error);
    return fs::is_directory(status) ? status.permissions() : fs::perms::none;
}

void SetMode(const fs::path& folder, fs::perms mode) {
    std::error_code ignored;
    if (IsFolder(folder) && ModeOf(folder) != mode) {
        fs::permissions(folder, mode, ignored);
    }
}

void MakeWritable(const fs::path& folder) {
    if (IsFolder(folder)) {
        SetMode(folder, ModeOf(folder) | fs::perms::owner_all);
    }
}

std::string NumberedName(const std::string& name, const std::string& suffix, int number) {
    const std::string end = suffix + (number > 1 ? "." + std::to_string(number) : "");
    std::size_t length = std::min(name.size(), kNameLimit - end.size());
    while (length > 0 && length < name.size() && ContinuesCharacter(name[length])) {
        --length;
    }
    return name.substr(0, length) + end;
}

fs::path MoveToFreeName(const fs::path& from, const fs::path& folder, const std::string& name,
                        const std::string& suffix, std::error_code& error) {
    error = std::make_error_code(std::errc::file_exists);
    for (int number = 1; number < kNumberLimit; ++number) {
        const fs::path free = platform::PathFromUtf8(NumberedName(name, suffix, number));
        if (Exists(from.parent_path() / free)) {
            continue;
        }
        fs::path to = folder / free;
        error = platform::RenameToFree(from, to);
        if (!error) {
            return to;
        }
        if (error != std::errc::file_exists) {
            break;
        }
    }
    return {};
}

void RemoveEmptyFolders(const fs::path& folder) {
    std::error_code ignored;
    for (const fs::path& name : NamesIn(folder, ignored)) {
        const fs::path entry = folder / name;
        if (IsFolder(entry)) {
            RemoveEmptyFolders(entry);
            fs::remove(entry, ignored);
        }
    }
}

}  // namespace ventrix::desk
