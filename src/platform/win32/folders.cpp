#include "platform/folders.h"

#include "platform/drives.h"
#include "platform/folder_order.h"
#include "platform/win32/system_calls.h"

namespace ventrix::platform {
namespace {

/// The attributes of an entry as a search reports them. Other reparse points than links are plain files here.
std::uint32_t AttributesOfEntry(const ::WIN32_FIND_DATAW& found) {
    const bool isFolder = (found.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
    const bool isLink =
        (found.dwFileAttributes & FILE_ATTRIBUTE_REPARSE_POINT) != 0 &&
        (found.dwReserved0 == IO_REPARSE_TAG_SYMLINK || found.dwReserved0 == IO_REPARSE_TAG_MOUNT_POINT);
    const bool isReadOnly = !isFolder && (found.dwFileAttributes & FILE_ATTRIBUTE_READONLY) != 0;
    return (isFolder ? kAttributeDirectory : 0) | (isLink ? kAttributeLink : 0) |
           (isReadOnly ? kAttributeReadOnly : 0);
}

char16_t Capital(char16_t unit) {
    const auto from = static_cast<wchar_t>(unit);
    wchar_t capital = from;
    ::LCMapStringEx(LOCALE_NAME_INVARIANT, LCMAP_UPPERCASE, &from, 1, &capital, 1, nullptr, nullptr, 0);
    return static_cast<char16_t>(capital);
}

std::wstring WithoutClosingSeparators(std::wstring path) {
    while (path.size() > 1 && path.back() == L'\\' && path[path.size() - 2] != L':') {
        path.pop_back();
    }
    return path;
}

}  // namespace

std::vector<FolderEntry> ListFolder(std::string_view folder) {
    std::wstring pattern = CallPath(ToNative(folder));
    if (pattern.empty()) {
        return {};
    }
    pattern += pattern.back() == L'\\' ? L"*" : L"\\*";
    ::WIN32_FIND_DATAW found = {};
    const HANDLE search = ::FindFirstFileW(pattern.c_str(), &found);
    if (search == INVALID_HANDLE_VALUE) {
        return {};
    }
    std::vector<FolderEntry> entries;
    do {
        const std::wstring_view name = found.cFileName;
        if (name != L"." && name != L"..") {
            entries.push_back({Narrow(name), AttributesOfEntry(found)});
        }
    } while (::FindNextFileW(search, &found) != 0);
    ::FindClose(search);
    SortAsListed(entries, Capital);
    return entries;
}

std::optional<std::uint32_t> AttributesOf(std::string_view path) {
    const std::wstring native = WithoutClosingSeparators(CallPath(ToNative(path)));
    const ::DWORD attributes = ::GetFileAttributesW(native.c_str());
    if (attributes == INVALID_FILE_ATTRIBUTES) {
        return std::nullopt;
    }
    ::WIN32_FIND_DATAW found = {};
    found.dwFileAttributes = attributes;
    if ((attributes & FILE_ATTRIBUTE_REPARSE_POINT) != 0) {
        const HANDLE search = ::FindFirstFileW(native.c_str(), &found);
        if (search != INVALID_HANDLE_VALUE) {
            ::FindClose(search);
        }
        if (!OpenForProperties(native).IsOpen()) {
            return std::nullopt;  // The link leads nowhere.
        }
    }
    return AttributesOfEntry(found);
}

ErrorCode SetAttributes(std::string_view path, std::uint32_t attributes) {
    const std::wstring native = CallPath(ToNative(path));
    const ::DWORD before = ::GetFileAttributesW(native.c_str());
    if (before == INVALID_FILE_ATTRIBUTES) {
        return LastErrorCode();
    }
    if ((before & FILE_ATTRIBUTE_DIRECTORY) != 0) {
        return kErrorNone;
    }
    const ::DWORD after = (before & ~DWORD{FILE_ATTRIBUTE_READONLY}) | (attributes & kAttributeReadOnly);
    const bool done = after == before || ::SetFileAttributesW(native.c_str(), after) != 0;
    return done ? kErrorNone : LastErrorCode();
}

ErrorCode MakeFolder(std::string_view path) {
    return ::CreateDirectoryW(CallPath(ToNative(path)).c_str(), nullptr) != 0 ? kErrorNone : LastErrorCode();
}

ErrorCode RemoveEmptyFolder(std::string_view path) {
    const std::wstring native = WithoutClosingSeparators(CallPath(ToNative(path)));
    return ::RemoveDirectoryW(native.c_str()) != 0 ? kErrorNone : LastErrorCode();
}

}  // namespace ventrix::platform
