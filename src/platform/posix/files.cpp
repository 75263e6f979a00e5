#include "platform/files.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <memory>

#include "platform/drives.h"
#include "platform/folders.h"
#include "platform/memory.h"
#include "platform/posix/descriptor.h"
#include "platform/posix/errno_codes.h"
#include "platform/posix/held_files.h"
#include "platform/posix/whole_write.h"

namespace ventrix::platform {
namespace {

constexpr std::size_t kBlockSize = std::size_t{64} * 1024;

/// Opens a regular file for reading. O_NONBLOCK keeps the open of a pipe without a writer from waiting.
ErrorCode OpenFileToRead(const std::string& native, Descriptor& file, struct stat& found) {
    file = Descriptor(::open(native.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));
    if (!file.IsOpen() || ::fstat(file.Number(), &found) != 0) {
        return ErrorFromErrno(errno, native);
    }
    return S_ISREG(found.st_mode) ? kErrorNone : kErrorAccessDenied;
}

/// Passes each block of an open file to `take`, which returns 0 or an errno. Returns 0 or the first errno.
template <typename Take>
int ReadBlocks(int descriptor, const Take& take) {
    const std::unique_ptr<char[]> block(new char[kBlockSize]);
    for (;;) {
        const ssize_t count = ::read(descriptor, block.get(), kBlockSize);
        if (count < 0 && errno == EINTR) {
            continue;
        }
        if (count < 0) {
            return errno;
        }
        if (count == 0) {
            return 0;
        }
        const int error = take(block.get(), static_cast<std::size_t>(count));
        if (error != 0) {
            return error;
        }
    }
}

/// Reads an open file to its end; its size may have changed since it was determined. 0 or an errno.
int ReadAll(int descriptor, std::size_t expectedSize, Bytes& bytes) {
    std::size_t filled = 0;
    bytes.resize(expectedSize + 1);  // One byte more, so that the end is found without growing.
    for (;;) {
        const ssize_t count = ::read(descriptor, bytes.data() + filled, bytes.size() - filled);
        if (count < 0 && errno == EINTR) {
            continue;
        }
        if (count < 0) {
            return errno;
        }
        filled += static_cast<std::size_t>(count);
        if (count == 0) {
            bytes.resize(filled);
            return 0;
        }
        if (filled == bytes.size()) {
            bytes.resize(2 * filled);
        }
    }
}

/// Writes what `produce` passes on to an open file of `size` bytes, from its start. 0 or an errno.
int FillFile(int descriptor, off_t size, const std::function<bool(const PutPiece&)>& produce) {
    GrowingFile file(descriptor, size);
    int failure = 0;
    const bool produced = produce([&](std::string_view piece) {
        failure = file.Append(piece);
        return failure == 0;
    });
    if (failure != 0) {
        return failure;
    }
    return produced ? file.Finish() : ECANCELED;
}

/// Empties a file that was overwritten in part. A file that nothing was written to does not change.
void EmptyIfChanged(int descriptor) {
    if (::lseek(descriptor, 0, SEEK_CUR) > 0) {
        // The caller learns of the error that came before.
        [[maybe_unused]] const int ignored = ::ftruncate(descriptor, 0);
    }
}

}  // namespace

ErrorCode RemoveFile(std::string_view path) {
    const std::string native = ToNative(path);
    struct stat itself = {};
    if (::lstat(native.c_str(), &itself) != 0) {
        return ErrorFromErrno(errno, native);
    }
    struct stat reached = itself;
    const bool leadsSomewhere = !S_ISLNK(itself.st_mode) || ::stat(native.c_str(), &reached) == 0;
    const bool leadsToFolder = leadsSomewhere && S_ISDIR(reached.st_mode);
    const bool readOnly = S_ISREG(itself.st_mode) && (itself.st_mode & S_IWUSR) == 0;
    if (readOnly || leadsToFolder) {
        return kErrorAccessDenied;
    }
    if (IsHeld(itself)) {
        return kErrorSharingViolation;
    }
    return ::unlink(native.c_str()) == 0 ? kErrorNone : ErrorFromErrno(errno, native);
}

ErrorCode CopyFileOver(std::string_view source, std::string_view target) {
    Descriptor from;
    struct stat found = {};
    ErrorCode error = OpenFileToRead(ToNative(source), from, found);
    if (error != kErrorNone) {
        return error;
    }
    WriteTarget to;
    error = FindWriteTarget(ToNative(target), to);
    if (to.exists && to.device == found.st_dev && to.inode == found.st_ino) {
        return kErrorSharingViolation;
    }
    if (error != kErrorNone) {
        return error;
    }
    return ReplaceWhole(to, found.st_mode & 0777, [&](int descriptor) {
        return ReadBlocks(from.Number(), [&](const char* bytes, std::size_t count) {
            return WriteAll(descriptor, bytes, count);
        });
    });
}

bool OpensForReading(std::string_view path) {
    Descriptor file;
    struct stat found = {};
    return OpenFileToRead(ToNative(path), file, found) == kErrorNone;
}

ErrorCode ReadWholeFile(std::string_view path, Bytes& content) {
    const std::string native = ToNative(path);
    Descriptor file;
    struct stat found = {};
    const ErrorCode error = OpenFileToRead(native, file, found);
    if (error != kErrorNone) {
        return error;
    }
    Bytes bytes;
    const int failure = ReadAll(file.Number(), static_cast<std::size_t>(found.st_size), bytes);
    if (failure != 0) {
        return ErrorFromErrno(failure, native);
    }
    content = std::move(bytes);
    return kErrorNone;
}

ErrorCode ReadWholeFile(std::string_view path, std::string& content) {
    Bytes bytes;
    const ErrorCode error = ReadWholeFile(path, bytes);
    if (error == kErrorNone) {
        content.assign(bytes.begin(), bytes.end());
    }
    return error;
}

ErrorCode WriteWholeFile(std::string_view path, std::string_view content) {
    return WriteWholeFile(path, [&](const PutPiece& put) { return put(content); });
}

ErrorCode WriteWholeFile(std::string_view path, const std::function<bool(const PutPiece&)>& produce) {
    WriteTarget target;
    const ErrorCode error = FindWriteTarget(ToNative(path), target);
    if (error != kErrorNone) {
        return error;
    }
    return ReplaceWhole(target, target.exists ? target.mode : 0666,
                        [&](int descriptor) { return FillFile(descriptor, 0, produce); });
}

// The file is not opened with O_TRUNC: ext4 writes a file that was emptied first to the disk when it is
// closed.
ErrorCode OverwriteFile(std::string_view path, const std::function<bool(const PutPiece&)>& produce) {
    WriteTarget target;
    const ErrorCode error = FindWriteTarget(ToNative(path), target);
    if (error != kErrorNone) {
        return error;
    }
    if (!target.exists) {
        return WriteWholeFile(path, produce);
    }
    Descriptor file(::open(target.path.c_str(), O_WRONLY | O_CLOEXEC));
    if (!file.IsOpen()) {
        return ErrorFromErrno(errno, target.path);
    }
    const int failure = FillFile(file.Number(), target.size, produce);
    if (failure != 0) {
        EmptyIfChanged(file.Number());
        return ErrorFromErrno(failure, target.path);
    }
    return file.Close() ? kErrorNone : ErrorFromErrno(errno, target.path);
}

std::string LongPath(std::string_view path) {
    return AttributesOf(path) ? std::string(path) : std::string();
}

std::string AbsolutePath(std::string_view path) {
    if (path.empty() || IsAbsoluteSystemPath(path)) {
        return std::string(path);
    }
    std::string native = ToNative(path);
    if (!native.empty() && native[0] != '/') {
        const std::unique_ptr<char, decltype(&std::free)> here(::getcwd(nullptr, 0), &std::free);
        native = here == nullptr ? std::string() : here.get() + ("/" + native);
    }
    return ToSystem(native).value_or("");
}

}  // namespace ventrix::platform
