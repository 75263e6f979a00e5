#include "platform/file_lock.h"

#include <utility>

#include "platform/file_identity.h"
#include "platform/win32/system_calls.h"

namespace fs = std::filesystem;

namespace ventrix::platform {
namespace {

constexpr std::intptr_t kNoFile = -1;
constexpr wchar_t kFolderLockName[] = L".ventrix-lock";

std::intptr_t NumberOf(HANDLE handle) {
    return reinterpret_cast<std::intptr_t>(handle);
}

/// A handle that holds the lock, or the reason why there is none.
struct HandleAttempt {
    Handle handle;
    bool busy = false;
    std::error_code error;
};

HandleAttempt LockNamed(const std::wstring& path, ::DWORD access, ::DWORD disposition, ::DWORD flags) {
    Handle opened(::CreateFileW(path.c_str(), access, kShareAll, nullptr, disposition,
                                flags | FILE_FLAG_OPEN_REPARSE_POINT, nullptr));
    if (!opened.IsOpen()) {
        const ::DWORD error = ::GetLastError();
        // What its owner is deleting keeps its name until the last handle is closed.
        const bool busy = error == ERROR_SHARING_VIOLATION || error == ERROR_DELETE_PENDING;
        return {Handle(), busy, busy ? std::error_code() : PortableError(error)};
    }
    ::BY_HANDLE_FILE_INFORMATION found = {};
    ::GetFileInformationByHandle(opened.Get(), &found);
    if ((found.dwFileAttributes & FILE_ATTRIBUTE_REPARSE_POINT) != 0) {
        return {Handle(), false, std::make_error_code(std::errc::too_many_symbolic_link_levels)};
    }
    ::OVERLAPPED start = {};
    if (::LockFileEx(opened.Get(), LOCKFILE_EXCLUSIVE_LOCK | LOCKFILE_FAIL_IMMEDIATELY, 0, 1, 0, &start) ==
        0) {
        const ::DWORD error = ::GetLastError();
        const bool busy = error == ERROR_LOCK_VIOLATION || error == ERROR_IO_PENDING;
        return {Handle(), busy, busy ? std::error_code() : PortableError(error)};
    }
    return {std::move(opened), false, {}};
}

}  // namespace

FileLock::~FileLock() {
    if (handle_ != kNoFile) {
        ::CloseHandle(reinterpret_cast<HANDLE>(handle_));
    }
}

FileLock::FileLock(FileLock&& other) noexcept : handle_(std::exchange(other.handle_, kNoFile)) {}

FileLock& FileLock::operator=(FileLock&& other) noexcept {
    std::swap(handle_, other.handle_);
    return *this;
}

LockAttempt LockFile(const fs::path& file) {
    HandleAttempt attempt = LockNamed(CallPathFrom(file), GENERIC_READ | GENERIC_WRITE, OPEN_ALWAYS, 0);
    if (!attempt.handle.IsOpen()) {
        return {std::nullopt, attempt.busy, attempt.error};
    }
    return {FileLock(NumberOf(attempt.handle.Detach())), false, {}};
}

// A folder has no bytes that could be locked, so a file in it is, which disappears with the lock.
LockAttempt LockFolder(const fs::path& folder) {
    const ::DWORD attributes = ::GetFileAttributesW(CallPathFrom(folder).c_str());
    if (attributes == INVALID_FILE_ATTRIBUTES) {
        return {std::nullopt, false, LastPortableError()};
    }
    if ((attributes & FILE_ATTRIBUTE_DIRECTORY) == 0) {
        return {std::nullopt, false, std::make_error_code(std::errc::not_a_directory)};
    }
    HandleAttempt attempt =
        LockNamed(CallPathFrom(folder / kFolderLockName), GENERIC_READ | GENERIC_WRITE | DELETE, OPEN_ALWAYS,
                  FILE_ATTRIBUTE_HIDDEN | FILE_FLAG_DELETE_ON_CLOSE);
    if (!attempt.handle.IsOpen()) {
        return {std::nullopt, attempt.busy, attempt.error};
    }
    return {FileLock(NumberOf(attempt.handle.Detach())), false, {}};
}

}  // namespace ventrix::platform
