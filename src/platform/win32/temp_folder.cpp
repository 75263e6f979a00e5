#include "platform/temp_folder.h"

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <filesystem>

#include "platform/win32/system_calls.h"

namespace fs = std::filesystem;

namespace ventrix::platform {
namespace {

constexpr unsigned kNameAttempts = 1000;

std::wstring SystemFolder() {
    return TextFromCall([](wchar_t* buffer, DWORD size) { return ::GetTempPathW(size, buffer); });
}

/// The folder's short name if the long one is not ASCII: the module opens the log in it with a narrow call,
/// which not every character survives.
std::wstring AsciiForm(const std::wstring& path) {
    const bool isAscii = std::ranges::all_of(path, [](wchar_t c) { return c < 0x80; });
    const std::wstring shortForm = isAscii ? path : TextFromCall([&](wchar_t* buffer, DWORD size) {
        return ::GetShortPathNameW(path.c_str(), buffer, size);
    });
    return shortForm.empty() ? path : shortForm;
}

std::wstring FinalPath(HANDLE file) {
    return TextFromCall(
        [&](wchar_t* buffer, DWORD size) { return ::GetFinalPathNameByHandleW(file, buffer, size, 0); });
}

/// Closes what this process has open in the folder. For a process that ends now: the module, which stands
/// still, has its log open, and nobody may remove an open file.
void CloseFilesIn(const std::string& folder) {
    constexpr std::uintptr_t kLastHandle = 0x4000;
    const std::wstring inFolder = FinalPath(OpenForProperties(CallPath(folder)).Get()) + L'\\';
    for (std::uintptr_t value = 4; value <= kLastHandle; value += 4) {
        const auto handle = reinterpret_cast<HANDLE>(value);
        if (::GetFileType(handle) == FILE_TYPE_DISK && FinalPath(handle).starts_with(inFolder)) {
            ::CloseHandle(handle);
        }
    }
}

}  // namespace

TemporaryFolder::TemporaryFolder(const std::string& prefix)
    : cleanUp_([this] {
          if (!path_.empty()) {
              CloseFilesIn(path_);
          }
          Remove();
      }) {
    const std::wstring parent = SystemFolder();
    const InterruptionPause pause;  // The folder is removed by name, which comes with it.
    ::DWORD error = ERROR_ALREADY_EXISTS;
    for (unsigned attempt = 0; attempt < kNameAttempts && error == ERROR_ALREADY_EXISTS; ++attempt) {
        const std::wstring folder = parent + Wide(prefix) + L'-' + std::to_wstring(::GetCurrentProcessId()) +
                                    L'-' + std::to_wstring(::GetTickCount() + attempt);
        if (::CreateDirectoryW(folder.c_str(), nullptr) != 0) {
            path_ = NativeFromCall(AsciiForm(folder));
            return;
        }
        error = ::GetLastError();
    }
    problem_ = "no folder for temporary files can be made in " + NativeFromCall(parent) + ": " +
               PortableError(error).message() + "; set TMP to one that can be written";
}

TemporaryFolder::~TemporaryFolder() {
    if (const std::error_code error = Remove()) {
        std::fprintf(stderr, "warning: the temporary folder %s cannot be removed: %s\n", path_.c_str(),
                     error.message().c_str());
    }
}

std::error_code TemporaryFolder::Remove() const {
    std::error_code error;
    if (!path_.empty() && !kept_) {
        fs::remove_all(fs::path(Wide(path_)), error);
    }
    return error;
}

}  // namespace ventrix::platform
