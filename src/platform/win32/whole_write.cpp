#include "platform/win32/whole_write.h"

#include <atomic>

namespace ventrix::platform {
namespace {

bool IsLink(const std::wstring& path) {
    ::WIN32_FIND_DATAW found = {};
    const HANDLE search = ::FindFirstFileW(path.c_str(), &found);
    if (search == INVALID_HANDLE_VALUE) {
        return false;
    }
    ::FindClose(search);
    return (found.dwFileAttributes & FILE_ATTRIBUTE_REPARSE_POINT) != 0 &&
           found.dwReserved0 == IO_REPARSE_TAG_SYMLINK;
}

std::wstring Resolved(const std::wstring& path) {
    const Handle opened = OpenForProperties(path);
    const std::wstring resolved = TextFromCall([&](wchar_t* buffer, DWORD size) {
        return ::GetFinalPathNameByHandleW(opened.Get(), buffer, size, FILE_NAME_NORMALIZED);
    });
    return resolved.empty() ? path : resolved;
}

bool OpensForDeletion(const std::wstring& path) {
    return Handle(::CreateFileW(path.c_str(), DELETE, kShareAll, nullptr, OPEN_EXISTING, 0, nullptr))
        .IsOpen();
}

}  // namespace

ErrorCode FindWriteTarget(const std::string& nativePath, WriteTarget& target) {
    target = {CallPath(nativePath), false};
    const ::DWORD attributes = ::GetFileAttributesW(target.path.c_str());
    if (attributes == INVALID_FILE_ATTRIBUTES) {
        const ErrorCode error = LastErrorCode();
        return error == kErrorFileNotFound ? kErrorNone : error;
    }
    target.exists = true;
    if ((attributes & (FILE_ATTRIBUTE_DIRECTORY | FILE_ATTRIBUTE_DEVICE | FILE_ATTRIBUTE_READONLY)) != 0) {
        return kErrorAccessDenied;
    }
    if (IsLink(target.path)) {
        target.path = Resolved(target.path);
    }
    return kErrorNone;
}

std::wstring NameBeside(const std::wstring& path) {
    static std::atomic<unsigned> lastNumber = 0;
    const std::wstring folder = path.substr(0, path.rfind(L'\\') + 1);
    return folder + L".ventrix-" + std::to_wstring(::GetCurrentProcessId()) + L"-" +
           std::to_wstring(++lastNumber);
}

ErrorCode TakePlace(const std::wstring& finished, const WriteTarget& target) {
    // Asked first, since a replacement that fails may leave the new file open.
    const bool isReplaceable = !target.exists || OpensForDeletion(target.path);
    const bool done =
        isReplaceable &&
        ((target.exists && ::ReplaceFileW(target.path.c_str(), finished.c_str(), nullptr,
                                          REPLACEFILE_IGNORE_MERGE_ERRORS, nullptr, nullptr) != 0) ||
         ::MoveFileExW(finished.c_str(), target.path.c_str(), MOVEFILE_REPLACE_EXISTING) != 0);
    if (done) {
        return kErrorNone;
    }
    const ErrorCode error = LastErrorCode();
    ::DeleteFileW(finished.c_str());
    return error;
}

ErrorCode ReplaceWhole(const WriteTarget& target, bool durable, const std::function<bool(HANDLE)>& fill) {
    const std::wstring beside = NameBeside(target.path);
    Handle file(::CreateFileW(beside.c_str(), GENERIC_WRITE, FILE_SHARE_READ, nullptr, CREATE_NEW,
                              FILE_ATTRIBUTE_NORMAL, nullptr));
    if (!file.IsOpen()) {
        return LastErrorCode();
    }
    const bool written = fill(file.Get()) && (!durable || ::FlushFileBuffers(file.Get()) != 0);
    const ErrorCode error = written ? kErrorNone : LastErrorCode();
    file.Close();
    if (!written) {
        ::DeleteFileW(beside.c_str());
        return error == kErrorNone ? kErrorInvalidFunction : error;
    }
    return TakePlace(beside, target);
}

}  // namespace ventrix::platform
