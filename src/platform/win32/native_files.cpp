#include "platform/native_files.h"

#include <algorithm>

#include "platform/win32/system_calls.h"
#include "platform/win32/whole_write.h"

namespace fs = std::filesystem;

namespace ventrix::platform {
namespace {

/// From 1601, in steps of 100 nanoseconds, to 1970, in nanoseconds.
std::int64_t NanosecondsSince1970(const ::FILETIME& time) {
    constexpr std::int64_t kStepsTo1970 = 116'444'736'000'000'000;
    constexpr std::int64_t kNanosecondsPerStep = 100;
    const auto steps =
        static_cast<std::int64_t>((std::uint64_t{time.dwHighDateTime} << 32) | time.dwLowDateTime);
    return (steps - kStepsTo1970) * kNanosecondsPerStep;
}

bool IsMissing(::DWORD error) {
    return error == ERROR_FILE_NOT_FOUND || error == ERROR_PATH_NOT_FOUND || error == ERROR_DIRECTORY;
}

/// Whether a reparse point is a link or a junction. Others, such as those of files that a cloud keeps, look
/// like what they stand for, and so does the root of a drive.
bool IsLink(const std::wstring& path) {
    ::WIN32_FIND_DATAW found = {};
    const HANDLE search = ::FindFirstFileW(path.c_str(), &found);
    if (search == INVALID_HANDLE_VALUE) {
        return false;
    }
    ::FindClose(search);
    return found.dwReserved0 == IO_REPARSE_TAG_SYMLINK || found.dwReserved0 == IO_REPARSE_TAG_MOUNT_POINT;
}

EntryKind KindOf(const std::wstring& path, ::DWORD attributes) {
    if ((attributes & FILE_ATTRIBUTE_DEVICE) != 0 ||
        ((attributes & FILE_ATTRIBUTE_REPARSE_POINT) != 0 && IsLink(path))) {
        return EntryKind::kOther;
    }
    return (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0 ? EntryKind::kFolder : EntryKind::kFile;
}

/// `expected` is the size that the file had; it may have grown.
std::error_code ReadAll(HANDLE file, std::uint64_t expected, std::uint64_t limit, std::string& content) {
    constexpr std::size_t kPiece = std::size_t{64} * 1024;
    content.reserve(static_cast<std::size_t>(std::min(expected, limit)) + kPiece);
    while (true) {
        const std::size_t size = content.size();
        content.resize(size + kPiece);
        ::DWORD got = 0;
        const bool succeeded = ::ReadFile(file, content.data() + size, kPiece, &got, nullptr) != 0;
        const std::error_code error = succeeded ? std::error_code() : LastPortableError();
        content.resize(size + got);
        if (succeeded && got == 0) {
            return {};
        }
        if (!succeeded || content.size() > limit) {
            content.clear();
            return succeeded ? std::make_error_code(std::errc::file_too_large) : error;
        }
    }
}

}  // namespace

std::optional<EntryStatus> StatusOfEntry(const fs::path& path, std::error_code& error) {
    error.clear();
    ::WIN32_FILE_ATTRIBUTE_DATA found = {};
    const std::wstring name = CallPathFrom(path);
    if (::GetFileAttributesExW(name.c_str(), GetFileExInfoStandard, &found) == 0) {
        const ::DWORD reason = ::GetLastError();
        if (!IsMissing(reason)) {
            error = PortableError(reason);
        }
        return std::nullopt;
    }
    const EntryKind kind = KindOf(name, found.dwFileAttributes);
    const std::uint64_t size = (std::uint64_t{found.nFileSizeHigh} << 32) | found.nFileSizeLow;
    return EntryStatus{kind, kind == EntryKind::kFolder ? 0 : size,
                       NanosecondsSince1970(found.ftLastWriteTime)};
}

std::optional<EntryStatus> StatusOfEntry(const fs::path& path) {
    std::error_code ignored;
    return StatusOfEntry(path, ignored);
}

std::error_code ReadRegularFile(const fs::path& file, std::uint64_t limit, std::string& content) {
    content.clear();
    const std::wstring path = CallPathFrom(file);
    const ::DWORD attributes = ::GetFileAttributesW(path.c_str());
    if (attributes == INVALID_FILE_ATTRIBUTES) {
        return LastPortableError();
    }
    if ((attributes & FILE_ATTRIBUTE_DIRECTORY) != 0) {
        return std::make_error_code(std::errc::is_a_directory);
    }
    const Handle opened(::CreateFileW(path.c_str(), GENERIC_READ, kShareAll, nullptr, OPEN_EXISTING,
                                      FILE_FLAG_SEQUENTIAL_SCAN, nullptr));
    if (!opened.IsOpen()) {
        return LastPortableError();
    }
    ::LARGE_INTEGER size = {};
    if (::GetFileType(opened.Get()) != FILE_TYPE_DISK || ::GetFileSizeEx(opened.Get(), &size) == 0) {
        return std::make_error_code(std::errc::not_supported);
    }
    return ReadAll(opened.Get(), static_cast<std::uint64_t>(size.QuadPart), limit, content);
}

std::error_code RenameToFree(const fs::path& from, const fs::path& to) {
    const bool done = ::MoveFileExW(CallPathFrom(from).c_str(), CallPathFrom(to).c_str(), 0) != 0;
    return done ? std::error_code() : LastPortableError();
}

std::error_code WriteDurably(const fs::path& file, std::string_view content) {
    const std::u8string name = file.u8string();
    WriteTarget target;
    ErrorCode error = FindWriteTarget(std::string(name.begin(), name.end()), target);
    if (error == kErrorNone) {
        error = ReplaceWhole(target, true,
                             [&](HANDLE opened) { return WriteAll(opened, content.data(), content.size()); });
    }
    return PortableError(error);
}

std::error_code WriteNewFile(const fs::path& file, std::string_view content) {
    const std::wstring path = CallPathFrom(file);
    Handle opened(
        ::CreateFileW(path.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_NEW, FILE_ATTRIBUTE_NORMAL, nullptr));
    if (!opened.IsOpen()) {
        return LastPortableError();
    }
    if (WriteAll(opened.Get(), content.data(), content.size())) {
        return {};
    }
    const std::error_code error = LastPortableError();
    opened.Close();
    ::DeleteFileW(path.c_str());
    return error;
}

std::error_code CopyReplacing(const fs::path& from, const fs::path& to) {
    const bool done = ::CopyFileW(CallPathFrom(from).c_str(), CallPathFrom(to).c_str(), FALSE) != 0;
    return done ? std::error_code() : LastPortableError();
}

// The permissions of a folder say little: rights are inherited, and groups count. A file that exists for a
// moment shows it.
bool IsWritableFolder(const fs::path& folder) {
    const std::wstring path = NameBeside(CallPathFrom(folder) + L'\\');
    const Handle probe(::CreateFileW(path.c_str(), DELETE, 0, nullptr, CREATE_NEW,
                                     FILE_ATTRIBUTE_TEMPORARY | FILE_FLAG_DELETE_ON_CLOSE, nullptr));
    return probe.IsOpen();
}

// A new file has its owner and rights from the folder, as users expect here.
void CopyOwner(const fs::path& /*from*/, const fs::path& /*to*/) {}

}  // namespace ventrix::platform
