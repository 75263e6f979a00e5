#include "platform/temp_folder.h"

#include <algorithm>
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

}  // namespace

TemporaryFolder::TemporaryFolder(const std::string& prefix) : cleanUp_([this] { Remove(); }) {
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
