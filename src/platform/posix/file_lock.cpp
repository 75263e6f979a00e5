#include "platform/file_lock.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <utility>

#include "platform/posix/descriptor.h"

namespace fs = std::filesystem;

namespace ventrix::platform {
namespace {

bool HasName(int descriptor, const fs::path& path) {
    struct stat locked = {};
    struct stat named = {};
    return ::fstat(descriptor, &locked) == 0 && ::lstat(path.c_str(), &named) == 0 &&
           locked.st_dev == named.st_dev && locked.st_ino == named.st_ino;
}

std::error_code LastError() {
    return {errno, std::generic_category()};
}

/// A lock that works on the path's present file, or the reason why there is none.
struct DescriptorAttempt {
    Descriptor descriptor;
    bool busy = false;
    std::error_code error;
};

DescriptorAttempt LockNamed(const fs::path& path, int flags) {
    while (true) {
        Descriptor opened(::open(path.c_str(), flags | O_NOFOLLOW | O_CLOEXEC, 0600));
        if (!opened.IsOpen()) {
            return {Descriptor(), false, LastError()};
        }
        if (::flock(opened.Number(), LOCK_EX | LOCK_NB) != 0) {
            const bool busy = errno == EWOULDBLOCK;
            return {Descriptor(), busy, busy ? std::error_code() : LastError()};
        }
        if (HasName(opened.Number(), path)) {
            return {std::move(opened), false, {}};
        }
    }
}

}  // namespace

FileLock::~FileLock() {
    Descriptor(static_cast<int>(handle_)).Close();
}

FileLock::FileLock(FileLock&& other) noexcept : handle_(std::exchange(other.handle_, -1)) {}

FileLock& FileLock::operator=(FileLock&& other) noexcept {
    std::swap(handle_, other.handle_);
    return *this;
}

LockAttempt LockFile(const fs::path& file) {
    DescriptorAttempt attempt = LockNamed(file, O_RDWR | O_CREAT);
    if (!attempt.descriptor.IsOpen()) {
        return {std::nullopt, attempt.busy, attempt.error};
    }
    return {FileLock(attempt.descriptor.Detach()), false, {}};
}

LockAttempt LockFolder(const fs::path& folder) {
    DescriptorAttempt attempt = LockNamed(folder, O_RDONLY | O_DIRECTORY);
    if (!attempt.descriptor.IsOpen()) {
        return {std::nullopt, attempt.busy, attempt.error};
    }
    return {FileLock(attempt.descriptor.Detach()), false, {}};
}

}  // namespace ventrix::platform
