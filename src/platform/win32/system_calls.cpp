#include "platform/win32/system_calls.h"

#include <algorithm>

#include "platform/wide_text.h"

namespace ventrix::platform {
namespace {

/// Folders must leave room for a name of eight and three characters, so their limit is below that of files.
constexpr std::size_t kPlainPathLimit = MAX_PATH - 12;
constexpr std::wstring_view kLongPrefix = LR"(\\?\)";
constexpr std::wstring_view kLongServerPrefix = LR"(\\?\UNC\)";
constexpr std::wstring_view kServerPrefix = LR"(\\)";

std::wstring FullPath(const std::wstring& path) {
    return TextFromCall(
        [&](wchar_t* buffer, DWORD size) { return ::GetFullPathNameW(path.c_str(), size, buffer, nullptr); });
}

std::errc ConditionOf(DWORD error) {
    switch (error) {
        case ERROR_FILE_NOT_FOUND:
        case ERROR_PATH_NOT_FOUND:
        case ERROR_BAD_NETPATH:
        case ERROR_INVALID_DRIVE:
            return std::errc::no_such_file_or_directory;
        case ERROR_ACCESS_DENIED:
            return std::errc::permission_denied;
        case ERROR_SHARING_VIOLATION:
        case ERROR_LOCK_VIOLATION:
            return std::errc::device_or_resource_busy;
        case ERROR_FILE_EXISTS:
        case ERROR_ALREADY_EXISTS:
            return std::errc::file_exists;
        case ERROR_DIR_NOT_EMPTY:
            return std::errc::directory_not_empty;
        case ERROR_DIRECTORY:
            return std::errc::not_a_directory;
        case ERROR_DISK_FULL:
        case ERROR_HANDLE_DISK_FULL:
            return std::errc::no_space_on_device;
        case ERROR_INVALID_NAME:
        case ERROR_INVALID_PARAMETER:
            return std::errc::invalid_argument;
        case ERROR_FILENAME_EXCED_RANGE:
            return std::errc::filename_too_long;
        case ERROR_NOT_SAME_DEVICE:
            return std::errc::cross_device_link;
        case ERROR_WRITE_PROTECT:
            return std::errc::read_only_file_system;
        case ERROR_NOT_ENOUGH_MEMORY:
        case ERROR_OUTOFMEMORY:
            return std::errc::not_enough_memory;
        case ERROR_TOO_MANY_OPEN_FILES:
            return std::errc::too_many_files_open;
        default:
            return {};
    }
}

}  // namespace

std::wstring Wide(std::string_view text) {
    const std::u16string wide = WideFromUtf8(text);
    return {wide.begin(), wide.end()};
}

std::string Narrow(std::wstring_view text) {
    return Utf8FromWide(std::u16string(text.begin(), text.end()));
}

std::wstring CallPath(std::string_view nativePath) {
    std::wstring path = Wide(nativePath);
    std::replace(path.begin(), path.end(), L'/', L'\\');
    if (path.size() < kPlainPathLimit || path.starts_with(kLongPrefix)) {
        return path;
    }
    const std::wstring full = FullPath(path);
    if (full.starts_with(kServerPrefix)) {
        return std::wstring(kLongServerPrefix) + full.substr(kServerPrefix.size());
    }
    return std::wstring(kLongPrefix) + full;
}

std::wstring CallPathFrom(const std::filesystem::path& path) {
    const std::u8string text = path.u8string();
    return CallPath(std::string_view(reinterpret_cast<const char*>(text.data()), text.size()));
}

std::string NativeFromCall(std::wstring_view path) {
    std::wstring plain(path);
    if (plain.starts_with(kLongServerPrefix)) {
        plain.replace(0, kLongServerPrefix.size(), kServerPrefix);
    } else if (plain.starts_with(kLongPrefix)) {
        plain.erase(0, kLongPrefix.size());
    }
    std::replace(plain.begin(), plain.end(), L'\\', L'/');
    return Narrow(plain);
}

ErrorCode LastErrorCode() {
    return ::GetLastError();
}

std::error_code PortableError(DWORD error) {
    if (error == ERROR_SUCCESS) {
        return {};
    }
    const std::errc condition = ConditionOf(error);
    return condition == std::errc() ? std::error_code(static_cast<int>(error), std::system_category())
                                    : std::make_error_code(condition);
}

std::error_code LastPortableError() {
    return PortableError(::GetLastError());
}

Handle OpenForProperties(const std::wstring& callPath) {
    return Handle(::CreateFileW(callPath.c_str(), FILE_READ_ATTRIBUTES, kShareAll, nullptr, OPEN_EXISTING,
                                FILE_FLAG_BACKUP_SEMANTICS, nullptr));
}

bool WriteAll(HANDLE file, const char* bytes, std::size_t count) {
    constexpr std::size_t kPiece = std::size_t{1} << 30;
    while (count > 0) {
        ::DWORD written = 0;
        if (::WriteFile(file, bytes, static_cast<DWORD>(std::min(count, kPiece)), &written, nullptr) == 0) {
            return false;
        }
        bytes += written;
        count -= written;
    }
    return true;
}

}  // namespace ventrix::platform
