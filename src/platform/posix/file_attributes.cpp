#include "platform/posix/file_attributes.h"
#include "platform/drives.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <cerrno>

#include "platform/files.h"
#include "platform/posix/errno_codes.h"

namespace ventrix::platform {
namespace {

std::uint32_t BitsOfMode(mode_t mode) {
    if (S_ISDIR(mode)) {
        return kAttributeDirectory;
    }
    return S_ISREG(mode) && (mode & S_IWUSR) == 0 ? kAttributeReadOnly : 0;
}

}  // namespace

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

std::optional<std::uint32_t> AttributesOf(std::string_view path) {
    const std::string native = ToNative(path);
    struct stat reached = {};
    if (::stat(native.c_str(), &reached) != 0) {
        return std::nullopt;
    }
    struct stat itself = {};
    const bool link = ::lstat(native.c_str(), &itself) == 0 && S_ISLNK(itself.st_mode);
    return BitsOfMode(reached.st_mode) | (link ? kAttributeLink : 0);
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

}  // namespace ventrix::platform
