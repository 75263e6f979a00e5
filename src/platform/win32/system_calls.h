// What every file of this backend needs to call the system: the system's header, strings and paths as its
// wide calls take them, its errors, and an owner for handles.
#pragma once

// The system's names must not become macros or types before ours are declared.
#include "platform/com.h"

#include <windows.h>

#include <filesystem>
#include <string>
#include <string_view>
#include <system_error>
#include <utility>

#include "platform/error_codes.h"

namespace ventrix::platform {

/// UTF-8 to and from the system's UTF-16.
std::wstring Wide(std::string_view text);
std::string Narrow(std::wstring_view text);

/// A native path (native_paths.h) as a wide call takes it: with backslashes and, if it is long, absolute and
/// with `\\?\` in front. Empty gives empty.
std::wstring CallPath(std::string_view nativePath);
std::wstring CallPathFrom(const std::filesystem::path& path);

/// The path that a wide call has given, in native notation: without `\\?\`, with slashes.
std::string NativeFromCall(std::wstring_view path);

/// Calls a function of the system that fills a buffer and returns the length of its text, or the size that it
/// needs if the buffer is too small, or 0. The text; empty for 0.
template <typename Fill>
std::wstring TextFromCall(const Fill& fill) {
    std::wstring text(MAX_PATH, L'\0');
    DWORD length = fill(text.data(), static_cast<DWORD>(text.size()));
    while (length > text.size()) {
        text.resize(length);
        length = fill(text.data(), static_cast<DWORD>(text.size()));
    }
    text.resize(length);
    return text;
}

/// GetLastError as an error code of the seam, which has the system's numbers.
ErrorCode LastErrorCode();

/// An error of the system as the standard library's portable condition, so that both platforms report the
/// same text. One without a counterpart stays an error of the system.
std::error_code PortableError(DWORD error);
std::error_code LastPortableError();

/// Owns a handle; null and INVALID_HANDLE_VALUE are none.
class Handle {
  public:
    explicit Handle(HANDLE handle = nullptr) : handle_(handle == INVALID_HANDLE_VALUE ? nullptr : handle) {}
    ~Handle() { Close(); }
    Handle(Handle&& other) noexcept : handle_(std::exchange(other.handle_, nullptr)) {}
    Handle& operator=(Handle&& other) noexcept {
        std::swap(handle_, other.handle_);
        return *this;
    }
    Handle(const Handle&) = delete;
    Handle& operator=(const Handle&) = delete;

    bool IsOpen() const { return handle_ != nullptr; }
    HANDLE Get() const { return handle_; }

    /// Releases the handle to the caller, who closes it.
    HANDLE Detach() { return std::exchange(handle_, nullptr); }

    void Close() {
        if (HANDLE handle = std::exchange(handle_, nullptr)) {
            ::CloseHandle(handle);
        }
    }

  private:
    HANDLE handle_;
};

/// How others may use a file while it is open here.
inline constexpr DWORD kShareAll = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;

/// Opens an existing file or folder without reading it, to ask for its properties. Links are followed.
Handle OpenForProperties(const std::wstring& callPath);

/// Writes all bytes. False after an error, which GetLastError gives.
bool WriteAll(HANDLE file, const char* bytes, std::size_t count);

}  // namespace ventrix::platform
