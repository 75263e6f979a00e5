#include "desk/script/package_state.h"

#include <algorithm>
#include <chrono>
#include <filesystem>

#include "platform/file_identity.h"
#include "platform/path_text.h"

namespace fs = std::filesystem;

namespace ventrix::desk {
namespace {

constexpr std::chrono::seconds kBack(10);

std::int64_t Nanoseconds(fs::file_time_type time) {
    const auto sinceEpoch = fs::file_time_type::clock::to_sys(time).time_since_epoch();
    return std::chrono::duration_cast<std::chrono::nanoseconds>(sinceEpoch).count();
}

void Add(const fs::directory_entry& entry, const fs::path& folder, std::vector<PackageFile>& files) {
    std::error_code error;
    if (!fs::is_regular_file(entry.symlink_status(error))) {
        return;
    }
    PackageFile file;
    file.size = entry.file_size(error);
    if (error) {
        return;
    }
    file.modified = Nanoseconds(entry.last_write_time(error));
    file.file = platform::IdentityOf(entry.path()).value_or(platform::FileIdentity{}).file;
    file.name = platform::Utf8FromPath(entry.path().lexically_relative(folder));
    if (!error) {
        files.push_back(std::move(file));
    }
}

}  // namespace

std::vector<PackageFile> ListPackage(const std::string& folder) {
    const fs::path root = platform::PathFromUtf8(folder);
    std::vector<PackageFile> files;
    std::error_code error;
    fs::recursive_directory_iterator entry(root, fs::directory_options::skip_permission_denied, error);
    while (!error && entry != fs::recursive_directory_iterator()) {
        Add(*entry, root, files);
        entry.increment(error);
    }
    std::ranges::sort(files, {}, &PackageFile::name);
    return files;
}

void DateBack(const std::string& folder, PackageFile& file) {
    const fs::path path = platform::PathFromUtf8(folder) / platform::PathFromUtf8(file.name);
    std::error_code error;
    const fs::file_time_type modified = fs::last_write_time(path, error);
    if (error) {
        return;
    }
    fs::last_write_time(path, modified - kBack, error);
    const fs::file_time_type noted = fs::last_write_time(path, error);
    if (!error) {
        file.modified = Nanoseconds(noted);
    }
}

}  // namespace ventrix::desk
