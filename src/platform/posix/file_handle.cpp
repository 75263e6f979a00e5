#include "platform/file_handle.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <iterator>

#include "platform/drives.h"
#include "platform/posix/descriptor.h"

namespace ventrix::platform {
namespace {

// A handle is the descriptor plus one, since 0 is a valid descriptor.
FileHandle HandleOf(int descriptor) {
    return descriptor + 1;
}
int DescriptorOf(FileHandle file) {
    return file - 1;
}

int OpenFlags(FileAccess access, FileDisposition disposition) {
    // O_NONBLOCK keeps the open of a pipe without a peer from waiting; only regular files are used
    // afterwards.
    int flags = O_CLOEXEC | O_NONBLOCK;
    flags |= access == FileAccess::kRead ? O_RDONLY : access == FileAccess::kWrite ? O_WRONLY : O_RDWR;
    if (disposition != FileDisposition::kOpenExisting) {
        flags |= O_CREAT;
    }
    return flags;
}

bool IsRegularFile(int descriptor) {
    struct stat found = {};
    return ::fstat(descriptor, &found) == 0 && S_ISREG(found.st_mode);
}

/// Reads or writes with `move` until `count` bytes are moved or a call moves none.
template <typename Move>
std::uint32_t MoveAll(std::uint32_t count, const Move& move) {
    std::uint32_t done = 0;
    while (done < count) {
        const ssize_t moved = move(done, count - done);
        if (moved < 0 && errno == EINTR) {
            continue;
        }
        if (moved <= 0) {
            break;
        }
        done += static_cast<std::uint32_t>(moved);
    }
    return done;
}

}  // namespace

FileHandle OpenFileHandle(std::string_view path, FileAccess access, FileDisposition disposition) {
    Descriptor file(::open(ToNative(path).c_str(), OpenFlags(access, disposition), 0666));
    if (!file.IsOpen() || !IsRegularFile(file.Number())) {
        return 0;
    }
    if (disposition == FileDisposition::kCreateAlways && ::ftruncate(file.Number(), 0) != 0) {
        return 0;
    }
    return HandleOf(file.Detach());
}

std::uint32_t ReadFromHandle(FileHandle file, void* buffer, std::uint32_t count) {
    auto* bytes = static_cast<char*>(buffer);
    return MoveAll(count, [&](std::uint32_t done, std::uint32_t rest) {
        return ::read(DescriptorOf(file), bytes + done, rest);
    });
}

std::uint32_t WriteToHandle(FileHandle file, const void* bytes, std::uint32_t count) {
    const auto* source = static_cast<const char*>(bytes);
    return MoveAll(count, [&](std::uint32_t done, std::uint32_t rest) {
        return ::write(DescriptorOf(file), source + done, rest);
    });
}

std::optional<std::uint64_t> SeekHandle(FileHandle file, std::int64_t offset, SeekOrigin origin) {
    constexpr int kOrigins[] = {SEEK_SET, SEEK_CUR, SEEK_END};
    const auto index = static_cast<std::uint32_t>(origin);
    if (index >= std::size(kOrigins)) {
        return std::nullopt;
    }
    const off_t position = ::lseek(DescriptorOf(file), offset, kOrigins[index]);
    return position < 0 ? std::nullopt : std::optional(static_cast<std::uint64_t>(position));
}

std::optional<std::uint64_t> SizeOfHandle(FileHandle file) {
    struct stat found = {};
    if (::fstat(DescriptorOf(file), &found) != 0) {
        return std::nullopt;
    }
    return static_cast<std::uint64_t>(found.st_size);
}

void CloseFileHandle(FileHandle file) {
    if (file != 0) {
        ::close(DescriptorOf(file));
    }
}

}  // namespace ventrix::platform
