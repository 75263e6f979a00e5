#include "platform/file_handle.h"

#include <iterator>

#include "platform/drives.h"
#include "platform/win32/system_calls.h"

namespace ventrix::platform {
namespace {

// The system's handles have 32 significant bits.
FileHandle HandleNumber(HANDLE handle) {
    return static_cast<FileHandle>(reinterpret_cast<std::intptr_t>(handle));
}
HANDLE SystemHandle(FileHandle file) {
    return reinterpret_cast<HANDLE>(static_cast<std::intptr_t>(file));
}

DWORD AccessBits(FileAccess access) {
    switch (access) {
        case FileAccess::kRead:
            return GENERIC_READ;
        case FileAccess::kWrite:
            return GENERIC_WRITE;
        case FileAccess::kReadWrite:
            return GENERIC_READ | GENERIC_WRITE;
    }
    return 0;
}

DWORD CreationBits(FileDisposition disposition) {
    switch (disposition) {
        case FileDisposition::kOpenExisting:
            return OPEN_EXISTING;
        case FileDisposition::kOpenAlways:
            return OPEN_ALWAYS;
        case FileDisposition::kCreateAlways:
            return CREATE_ALWAYS;
    }
    return OPEN_EXISTING;
}

/// Keeps the system from asking the user for a medium that is missing.
class NoErrorDialogs {
  public:
    NoErrorDialogs() : former_(::SetErrorMode(SEM_FAILCRITICALERRORS)) {}
    ~NoErrorDialogs() { ::SetErrorMode(former_); }
    NoErrorDialogs(const NoErrorDialogs&) = delete;
    NoErrorDialogs& operator=(const NoErrorDialogs&) = delete;

  private:
    ::UINT former_;
};

/// Reads or writes with `move` until `count` bytes are moved or a call moves none.
template <typename Move>
std::uint32_t MoveAll(std::uint32_t count, const Move& move) {
    std::uint32_t done = 0;
    while (done < count) {
        ::DWORD moved = 0;
        if (move(done, count - done, &moved) == 0 || moved == 0) {
            break;
        }
        done += static_cast<std::uint32_t>(moved);
    }
    return done;
}

}  // namespace

FileHandle OpenFileHandle(std::string_view path, FileAccess access, FileDisposition disposition) {
    const NoErrorDialogs noDialogs;
    Handle file(::CreateFileW(CallPath(ToNative(path)).c_str(), AccessBits(access),
                              FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr, CreationBits(disposition),
                              FILE_ATTRIBUTE_NORMAL, nullptr));
    if (!file.IsOpen() || ::GetFileType(file.Get()) != FILE_TYPE_DISK) {
        return 0;
    }
    return HandleNumber(file.Detach());
}

std::uint32_t ReadFromHandle(FileHandle file, void* buffer, std::uint32_t count) {
    auto* bytes = static_cast<char*>(buffer);
    return MoveAll(count, [&](std::uint32_t done, std::uint32_t rest, ::DWORD* moved) {
        return ::ReadFile(SystemHandle(file), bytes + done, rest, moved, nullptr);
    });
}

std::uint32_t WriteToHandle(FileHandle file, const void* bytes, std::uint32_t count) {
    const auto* source = static_cast<const char*>(bytes);
    return MoveAll(count, [&](std::uint32_t done, std::uint32_t rest, ::DWORD* moved) {
        return ::WriteFile(SystemHandle(file), source + done, rest, moved, nullptr);
    });
}

std::optional<std::uint64_t> SeekHandle(FileHandle file, std::int64_t offset, SeekOrigin origin) {
    constexpr ::DWORD kOrigins[] = {FILE_BEGIN, FILE_CURRENT, FILE_END};
    const auto index = static_cast<std::uint32_t>(origin);
    if (index >= std::size(kOrigins)) {
        return std::nullopt;
    }
    ::LARGE_INTEGER move = {};
    ::LARGE_INTEGER position = {};
    move.QuadPart = offset;
    if (::SetFilePointerEx(SystemHandle(file), move, &position, kOrigins[index]) == 0) {
        return std::nullopt;
    }
    return static_cast<std::uint64_t>(position.QuadPart);
}

std::optional<std::uint64_t> SizeOfHandle(FileHandle file) {
    ::LARGE_INTEGER size = {};
    if (::GetFileSizeEx(SystemHandle(file), &size) == 0) {
        return std::nullopt;
    }
    return static_cast<std::uint64_t>(size.QuadPart);
}

void CloseFileHandle(FileHandle file) {
    if (file != 0) {
        ::CloseHandle(SystemHandle(file));
    }
}

}  // namespace ventrix::platform
