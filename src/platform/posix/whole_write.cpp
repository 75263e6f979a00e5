#include "platform/posix/whole_write.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <climits>
#include <cstdio>
#include <cstdlib>
#include <memory>

#include "platform/posix/descriptor.h"
#include "platform/posix/errno_codes.h"
#include "platform/posix/native_paths.h"

namespace ventrix::platform {
namespace {

constexpr int kNameAttempts = 1000;
constexpr off_t kLargeFile = off_t{1} * 1024 * 1024;
constexpr off_t kPreallocatedAhead = off_t{8} * 1024 * 1024;

std::string Resolved(const std::string& path) {
    const std::unique_ptr<char, decltype(&std::free)> resolved(::realpath(path.c_str(), nullptr), &std::free);
    return resolved == nullptr ? path : resolved.get();
}

int FillAndClose(Descriptor& file, const WriteTarget& target, mode_t mode,
                 const std::function<int(int)>& fill) {
    const int error = fill(file.Number());
    if (error != 0) {
        return error;
    }
    if (target.exists && ::fchmod(file.Number(), mode) != 0) {
        return errno;
    }
    return file.Close() ? 0 : errno;
}

}  // namespace

Descriptor CreateBeside(const std::string& path, mode_t mode, std::string& created) {
    const std::string folder = NativeParent(path);
    for (int attempt = 0; attempt < kNameAttempts; ++attempt) {
        created = folder + "/.ventrix-" + std::to_string(::getpid()) + "-" + std::to_string(attempt);
        const int number = ::open(created.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, mode);
        if (number >= 0 || errno != EEXIST) {
            return Descriptor(number);
        }
    }
    return Descriptor();
}

ErrorCode FindWriteTarget(const std::string& nativePath, WriteTarget& target) {
    target = {};
    target.path = nativePath;
    struct stat found = {};
    int result = ::lstat(nativePath.c_str(), &found);
    const bool isLink = result == 0 && S_ISLNK(found.st_mode);
    if (isLink) {
        result = ::stat(nativePath.c_str(), &found);
    }
    if (result != 0) {
        return errno == ENOENT ? kErrorNone : ErrorFromErrno(errno, nativePath);
    }
    target.exists = true;
    target.device = found.st_dev;
    target.inode = found.st_ino;
    target.size = found.st_size;
    target.mode = found.st_mode & 07777;
    if (!S_ISREG(found.st_mode) || (found.st_mode & S_IWUSR) == 0) {
        return kErrorAccessDenied;
    }
    if (isLink) {
        target.path = Resolved(nativePath);
    }
    return kErrorNone;
}

ErrorCode ReplaceWhole(const WriteTarget& target, mode_t mode, const std::function<int(int)>& fill) {
    std::string beside;
    Descriptor file = CreateBeside(target.path, mode, beside);
    if (!file.IsOpen()) {
        return ErrorFromErrno(errno, target.path);
    }
    int error = FillAndClose(file, target, mode, fill);
    if (error == 0 && std::rename(beside.c_str(), target.path.c_str()) != 0) {
        error = errno;
    }
    if (error == 0) {
        return kErrorNone;
    }
    ::unlink(beside.c_str());
    return ErrorFromErrno(error, target.path);
}

int WriteAll(int descriptor, const char* bytes, std::size_t count) {
    while (count > 0) {
        const ssize_t written = ::write(descriptor, bytes, count);
        if (written < 0 && errno == EINTR) {
            continue;
        }
        if (written < 0) {
            return errno;
        }
        bytes += written;
        count -= static_cast<std::size_t>(written);
    }
    return 0;
}

int GrowingFile::Append(std::string_view piece) {
    written_ += static_cast<off_t>(piece.size());
    if (canPreallocate_ && written_ > preallocated_ && written_ >= kLargeFile) {
        // Some file systems cannot preallocate, and a full one fails; the file is then written without it.
        preallocated_ = written_ + kPreallocatedAhead;
        canPreallocate_ = ::fallocate(descriptor_, FALLOC_FL_KEEP_SIZE, 0, preallocated_) == 0;
    }
    return WriteAll(descriptor_, piece.data(), piece.size());
}

// Even a preallocation that failed on a full file system may have reserved a part.
int GrowingFile::Finish() {
    const bool isLonger = preallocated_ > 0 || sizeBefore_ > written_;
    return isLonger && ::ftruncate(descriptor_, written_) != 0 ? errno : 0;
}

}  // namespace ventrix::platform
