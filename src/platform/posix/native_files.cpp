#include "platform/native_files.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <string>

#include "platform/posix/descriptor.h"
#include "platform/posix/whole_write.h"

namespace fs = std::filesystem;

namespace ventrix::platform {
namespace {

constexpr std::int64_t kNanosecondsPerSecond = 1'000'000'000;

std::error_code ErrorOf(int number) {
    return {number, std::generic_category()};
}

EntryKind KindOf(mode_t mode) {
    if (S_ISDIR(mode)) {
        return EntryKind::kFolder;
    }
    return S_ISREG(mode) ? EntryKind::kFile : EntryKind::kOther;
}

int WriteAndSync(Descriptor& file, std::string_view content) {
    if (const int error = WriteAll(file.Number(), content.data(), content.size()); error != 0) {
        return error;
    }
    if (::fsync(file.Number()) != 0) {
        return errno;
    }
    return file.Close() ? 0 : errno;
}

/// `expected` is the size that the file had; it may have grown.
std::error_code ReadAll(const Descriptor& file, std::uint64_t expected, std::uint64_t limit,
                        std::string& content) {
    // One byte more than expected, so that the end is found without growing.
    content.resize(static_cast<std::size_t>(std::min(expected, limit)) + 1);
    std::size_t filled = 0;
    while (true) {
        const ssize_t got = ::read(file.Number(), content.data() + filled, content.size() - filled);
        if (got < 0 && errno != EINTR) {
            const std::error_code error = ErrorOf(errno);
            content.clear();
            return error;
        }
        filled += static_cast<std::size_t>(std::max<ssize_t>(got, 0));
        if (got == 0) {
            content.resize(filled);
            return {};
        }
        if (filled > limit) {
            content.clear();
            return std::make_error_code(std::errc::file_too_large);
        }
        if (filled == content.size()) {
            content.resize(2 * filled);
        }
    }
}

/// A name is durable once its folder is. Some file systems cannot sync folders; the file itself is safe then.
void SyncFolder(const fs::path& folder) {
    const Descriptor opened(::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (opened.IsOpen()) {
        ::fsync(opened.Number());
    }
}

}  // namespace

std::optional<EntryStatus> StatusOfEntry(const fs::path& path, std::error_code& error) {
    error.clear();
    struct stat found = {};
    if (::lstat(path.c_str(), &found) != 0) {
        if (errno != ENOENT && errno != ENOTDIR) {
            error = ErrorOf(errno);
        }
        return std::nullopt;
    }
    return EntryStatus{KindOf(found.st_mode), static_cast<std::uint64_t>(found.st_size),
                       found.st_mtim.tv_sec * kNanosecondsPerSecond + found.st_mtim.tv_nsec};
}

std::optional<EntryStatus> StatusOfEntry(const fs::path& path) {
    std::error_code ignored;
    return StatusOfEntry(path, ignored);
}

std::error_code ReadRegularFile(const fs::path& file, std::uint64_t limit, std::string& content) {
    content.clear();
    struct stat found = {};
    if (::stat(file.c_str(), &found) != 0) {
        return ErrorOf(errno);
    }
    if (KindOf(found.st_mode) != EntryKind::kFile) {
        return std::make_error_code(S_ISDIR(found.st_mode) ? std::errc::is_a_directory
                                                           : std::errc::not_supported);
    }
    // If a pipe has taken the file's place since, opening it must not wait for a writer.
    const Descriptor opened(::open(file.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC));
    if (!opened.IsOpen()) {
        return ErrorOf(errno);
    }
    if (::fstat(opened.Number(), &found) != 0 || KindOf(found.st_mode) != EntryKind::kFile) {
        return std::make_error_code(std::errc::not_supported);
    }
    return ReadAll(opened, static_cast<std::uint64_t>(found.st_size), limit, content);
}

std::error_code RenameToFree(const fs::path& from, const fs::path& to) {
    if (::renameat2(AT_FDCWD, from.c_str(), AT_FDCWD, to.c_str(), RENAME_NOREPLACE) == 0) {
        return {};
    }
    if (errno != EINVAL && errno != ENOSYS) {
        return ErrorOf(errno);
    }
    // Some network file systems do not support the flag.
    if (StatusOfEntry(to)) {
        return ErrorOf(EEXIST);
    }
    return ::rename(from.c_str(), to.c_str()) == 0 ? std::error_code() : ErrorOf(errno);
}

std::error_code WriteDurably(const fs::path& file, std::string_view content) {
    std::string beside;
    Descriptor opened = CreateBeside(file.string(), 0644, beside);
    if (!opened.IsOpen()) {
        return ErrorOf(errno);
    }
    int error = WriteAndSync(opened, content);
    if (error == 0 && ::rename(beside.c_str(), file.c_str()) != 0) {
        error = errno;
    }
    if (error != 0) {
        ::unlink(beside.c_str());
        return ErrorOf(error);
    }
    SyncFolder(file.parent_path());
    return {};
}

std::error_code WriteNewFile(const fs::path& file, std::string_view content) {
    Descriptor opened(::open(file.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666));
    if (!opened.IsOpen()) {
        return ErrorOf(errno);
    }
    int error = WriteAll(opened.Number(), content.data(), content.size());
    if (!opened.Close() && error == 0) {
        error = errno;
    }
    if (error != 0) {
        ::unlink(file.c_str());
    }
    return error == 0 ? std::error_code() : ErrorOf(error);
}

std::error_code CopyReplacing(const fs::path& from, const fs::path& to) {
    std::error_code error;
    fs::copy_file(from, to, fs::copy_options::overwrite_existing, error);
    return error;
}

bool IsWritableFolder(const fs::path& folder) {
    return ::access(folder.c_str(), W_OK | X_OK) == 0;
}

void CopyOwner(const fs::path& from, const fs::path& to) {
    struct stat source = {};
    struct stat target = {};
    const bool differs = ::lstat(from.c_str(), &source) == 0 && ::lstat(to.c_str(), &target) == 0 &&
                         (source.st_uid != target.st_uid || source.st_gid != target.st_gid);
    if (differs && ::lchown(to.c_str(), source.st_uid, source.st_gid) != 0) {
        // An ordinary user cannot change the owner, but can share the file with one of their own groups.
        [[maybe_unused]] const int ignored = ::lchown(to.c_str(), static_cast<uid_t>(-1), source.st_gid);
    }
}

}  // namespace ventrix::platform
