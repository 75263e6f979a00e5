#include "platform/native_roots.h"

namespace ventrix::platform {

std::size_t NativeRootLength(std::string_view nativePath) {
    return nativePath.starts_with('/') ? 1 : 0;
}

bool SystemHasDrives() {
    return false;
}

std::size_t NativePathLimit() {
    return 0;
}

char PathListSeparator() {
    return ':';
}

std::string_view TemporaryFolderVariable() {
    return "TMPDIR";
}

std::string_view ProgramSuffix() {
    return {};
}

std::string_view LibrarySuffix() {
    return ".so";
}

std::string_view StartScriptSuffix() {
    return {};
}

}  // namespace ventrix::platform
