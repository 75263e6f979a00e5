#include "platform/files.h"

#include <algorithm>
#include <limits>
#include <memory>

#include "platform/drives.h"
#include "platform/file_identity.h"
#include "platform/win32/system_calls.h"
#include "platform/win32/whole_write.h"

namespace ventrix::platform {
namespace {

/// Opens a regular file for reading.
ErrorCode OpenFileToRead(const std::wstring& path, Handle& file) {
    file = Handle(::CreateFileW(path.c_str(), GENERIC_READ, kShareAll, nullptr, OPEN_EXISTING,
                                FILE_FLAG_SEQUENTIAL_SCAN, nullptr));
    if (!file.IsOpen()) {
        return LastErrorCode();
    }
    return ::GetFileType(file.Get()) == FILE_TYPE_DISK ? kErrorNone : kErrorAccessDenied;
}

/// Gives every page of fresh memory its frame by a write. Wine's ReadFile reads from each page before it
/// writes to it, and would cause two page faults for each.
void TouchPages(Bytes& bytes) {
    constexpr std::size_t kPage = 4096;
    for (std::size_t place = 0; place < bytes.size(); place += kPage) {
        bytes[place] = 0;
    }
}

/// Reads an open file to its end; its size may have changed since it was determined.
ErrorCode ReadAll(HANDLE file, std::size_t expectedSize, Bytes& bytes) {
    constexpr std::size_t kPiece = std::size_t{1} << 30;
    std::size_t filled = 0;
    bytes.resize(expectedSize + 1);  // One byte more, so that the end is found without growing.
    TouchPages(bytes);
    for (;;) {
        ::DWORD count = 0;
        const auto wanted = static_cast<DWORD>(std::min(bytes.size() - filled, kPiece));
        if (::ReadFile(file, bytes.data() + filled, wanted, &count, nullptr) == 0) {
            return LastErrorCode();
        }
        filled += count;
        if (count == 0) {
            bytes.resize(filled);
            return kErrorNone;
        }
        if (filled == bytes.size()) {
            bytes.resize(2 * filled);
        }
    }
}

bool IsSameFile(const std::string& nativeA, const std::string& nativeB) {
    const auto identity = IdentityOf(std::filesystem::path(Wide(nativeA)));
    return identity && identity == IdentityOf(std::filesystem::path(Wide(nativeB)));
}

/// Writes what `produce` passes on to an open file. False after an error that GetLastError gives.
bool FillFile(HANDLE file, const std::function<bool(const PutPiece&)>& produce) {
    return produce([&](std::string_view piece) { return WriteAll(file, piece.data(), piece.size()); });
}

/// Empties a file that was overwritten in part. A file that nothing was written to does not change.
void EmptyIfChanged(HANDLE file) {
    ::LARGE_INTEGER position = {};
    if (::SetFilePointerEx(file, {}, &position, FILE_CURRENT) != 0 && position.QuadPart > 0) {
        ::SetFilePointerEx(file, {}, nullptr, FILE_BEGIN);
        ::SetEndOfFile(file);
    }
}

}  // namespace

ErrorCode RemoveFile(std::string_view path) {
    return ::DeleteFileW(CallPath(ToNative(path)).c_str()) != 0 ? kErrorNone : LastErrorCode();
}

ErrorCode CopyFileOver(std::string_view source, std::string_view target) {
    const std::wstring from = CallPath(ToNative(source));
    Handle opened;
    ErrorCode error = OpenFileToRead(from, opened);
    if (error != kErrorNone) {
        return error;
    }
    WriteTarget to;
    error = FindWriteTarget(ToNative(target), to);
    if (to.exists && IsSameFile(ToNative(source), ToNative(target))) {
        return kErrorSharingViolation;
    }
    if (error != kErrorNone) {
        return error;
    }
    const std::wstring beside = NameBeside(to.path);
    if (::CopyFileW(from.c_str(), beside.c_str(), TRUE) == 0) {
        return LastErrorCode();
    }
    return TakePlace(beside, to);
}

bool OpensForReading(std::string_view path) {
    Handle file;
    return OpenFileToRead(CallPath(ToNative(path)), file) == kErrorNone;
}

ErrorCode ReadWholeFile(std::string_view path, Bytes& content) {
    Handle file;
    ErrorCode error = OpenFileToRead(CallPath(ToNative(path)), file);
    if (error != kErrorNone) {
        return error;
    }
    ::LARGE_INTEGER size = {};
    ::GetFileSizeEx(file.Get(), &size);
    Bytes bytes;
    error = ReadAll(file.Get(), static_cast<std::size_t>(size.QuadPart), bytes);
    if (error == kErrorNone) {
        content = std::move(bytes);
    }
    return error;
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
    return ReplaceWhole(target, false, [&](HANDLE file) { return FillFile(file, produce); });
}

ErrorCode OverwriteFile(std::string_view path, const std::function<bool(const PutPiece&)>& produce) {
    WriteTarget target;
    const ErrorCode error = FindWriteTarget(ToNative(path), target);
    if (error != kErrorNone) {
        return error;
    }
    if (!target.exists) {
        return WriteWholeFile(path, produce);
    }
    Handle file(::CreateFileW(target.path.c_str(), GENERIC_WRITE, FILE_SHARE_READ, nullptr, OPEN_EXISTING,
                              FILE_ATTRIBUTE_NORMAL, nullptr));
    if (!file.IsOpen()) {
        return LastErrorCode();
    }
    if (FillFile(file.Get(), produce) && ::SetEndOfFile(file.Get()) != 0) {
        return kErrorNone;
    }
    const ErrorCode failure = LastErrorCode();
    EmptyIfChanged(file.Get());
    return failure == kErrorNone ? kErrorInvalidFunction : failure;
}

std::string LongPath(std::string_view path) {
    const std::wstring native = CallPath(ToNative(path));
    const std::wstring longForm = TextFromCall(
        [&](wchar_t* buffer, DWORD size) { return ::GetLongPathNameW(native.c_str(), buffer, size); });
    return ToSystem(NativeFromCall(longForm)).value_or("");
}

std::string AbsolutePath(std::string_view path) {
    if (path.empty() || IsAbsoluteSystemPath(path)) {
        return std::string(path);
    }
    const std::wstring native = CallPath(ToNative(path));
    const std::wstring full = TextFromCall([&](wchar_t* buffer, DWORD size) {
        return ::GetFullPathNameW(native.c_str(), size, buffer, nullptr);
    });
    return ToSystem(NativeFromCall(full)).value_or("");
}

}  // namespace ventrix::platform
