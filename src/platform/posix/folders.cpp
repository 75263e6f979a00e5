#include "platform/folders.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>
#include <wctype.h>

#include <cerrno>
#include <clocale>
#include <memory>

#include "platform/drives.h"
#include "platform/folder_order.h"
#include "platform/posix/errno_codes.h"

namespace ventrix::platform {
namespace {

std::uint32_t BitsOfMode(mode_t mode) {
    if (S_ISDIR(mode)) {
        return kAttributeDirectory;
    }
    return S_ISREG(mode) && (mode & S_IWUSR) == 0 ? kAttributeReadOnly : 0;
}

/// The attributes of an entry of an open folder; kAttributeLink alone for a link that leads nowhere.
std::uint32_t EntryAttributes(int folder, const std::string& name) {
    struct stat itself = {};
    if (::fstatat(folder, name.c_str(), &itself, AT_SYMLINK_NOFOLLOW) != 0) {
        return 0;
    }
    if (!S_ISLNK(itself.st_mode)) {
        return BitsOfMode(itself.st_mode);
    }
    struct stat reached = {};
    const bool leadsSomewhere = ::fstatat(folder, name.c_str(), &reached, 0) == 0;
    return kAttributeLink | (leadsSomewhere ? BitsOfMode(reached.st_mode) : 0);
}

/// The upper-case form that NTFS sorts by. It pairs letters one to one: a letter whose upper-case form has
/// another lower-case form stays as it is.
char16_t Capital(char16_t unit) {
    static const locale_t unicode = ::newlocale(LC_CTYPE_MASK, "C.UTF-8", nullptr);
    if (unit < 0x80 || unicode == nullptr) {
        return unit >= u'a' && unit <= u'z' ? static_cast<char16_t>(unit - 32) : unit;
    }
    const wint_t upper = ::towupper_l(unit, unicode);
    const bool paired = upper <= 0xFFFF && ::towlower_l(upper, unicode) == unit;
    return paired ? static_cast<char16_t>(upper) : unit;
}

bool IsListed(const std::string& name) {
    return name != "." && name != ".." && name.find('\\') == std::string::npos;
}

bool IsLinkToFolder(const std::string& native) {
    struct stat itself = {};
    struct stat reached = {};
    return ::lstat(native.c_str(), &itself) == 0 && S_ISLNK(itself.st_mode) &&
           ::stat(native.c_str(), &reached) == 0 && S_ISDIR(reached.st_mode);
}

std::string WithoutClosingSlashes(std::string native) {
    while (native.size() > 1 && native.back() == '/') {
        native.pop_back();
    }
    return native;
}

}  // namespace

std::vector<FolderEntry> ListFolder(std::string_view folder) {
    const std::string native = ToNative(folder);
    const std::unique_ptr<DIR, int (*)(DIR*)> listing(::opendir(native.c_str()), &::closedir);
    if (listing == nullptr) {
        return {};
    }
    std::vector<FolderEntry> entries;
    while (const dirent* item = ::readdir(listing.get())) {
        const std::string name = item->d_name;
        if (IsListed(name)) {
            entries.push_back({name, EntryAttributes(::dirfd(listing.get()), name)});
        }
    }
    SortAsListed(entries, Capital);
    return entries;
}

std::optional<std::uint32_t> AttributesOf(std::string_view path) {
    const std::string native = ToNative(path);
    struct stat found = {};
    if (::lstat(native.c_str(), &found) != 0) {
        return std::nullopt;
    }
    const bool isLink = S_ISLNK(found.st_mode);
    if (isLink && ::stat(native.c_str(), &found) != 0) {
        return std::nullopt;
    }
    return BitsOfMode(found.st_mode) | (isLink ? kAttributeLink : 0);
}

ErrorCode SetAttributes(std::string_view path, std::uint32_t attributes) {
    const std::string native = ToNative(path);
    struct stat found = {};
    if (::stat(native.c_str(), &found) != 0) {
        return ErrorFromErrno(errno, native);
    }
    if (S_ISDIR(found.st_mode)) {
        return kErrorNone;
    }
    constexpr mode_t kWriters = S_IWUSR | S_IWGRP | S_IWOTH;
    const mode_t before = found.st_mode & 07777;
    const mode_t after = (attributes & kAttributeReadOnly) != 0 ? before & ~kWriters : before | S_IWUSR;
    if (after != before && ::chmod(native.c_str(), after) != 0) {
        return ErrorFromErrno(errno, native);
    }
    return kErrorNone;
}

ErrorCode MakeFolder(std::string_view path) {
    const std::string native = ToNative(path);
    if (::mkdir(native.c_str(), 0777) == 0) {
        return kErrorNone;
    }
    return errno == ENOENT ? kErrorPathNotFound : ErrorFromErrno(errno);
}

ErrorCode RemoveEmptyFolder(std::string_view path) {
    const std::string native = WithoutClosingSlashes(ToNative(path));
    const int result = IsLinkToFolder(native) ? ::unlink(native.c_str()) : ::rmdir(native.c_str());
    if (result == 0) {
        return kErrorNone;
    }
    if (errno == ENOTDIR) {
        return kErrorNotADirectory;
    }
    return errno == EEXIST ? kErrorDirNotEmpty : ErrorFromErrno(errno, native);
}

}  // namespace ventrix::platform
