#include "platform/native_roots.h"

namespace ventrix::platform {
namespace {

bool IsLetter(char c) {
    return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z');
}

}  // namespace

std::size_t NativeRootLength(std::string_view nativePath) {
    if (nativePath.size() >= 3 && IsLetter(nativePath[0]) && nativePath.substr(1, 2) == ":/") {
        return 3;
    }
    if (nativePath.starts_with("//")) {
        const std::size_t end = nativePath.find('/', 2);
        return end == std::string_view::npos ? nativePath.size() : end + 1;
    }
    return nativePath.starts_with('/') ? 1 : 0;
}

bool SystemHasDrives() {
    return true;
}

std::size_t NativePathLimit() {
    return 259;
}

char PathListSeparator() {
    return ';';
}

std::string_view TemporaryFolderVariable() {
    return "TMP";
}

std::string_view ProgramSuffix() {
    return ".exe";
}

std::string_view LibrarySuffix() {
    return ".dll";
}

std::string_view StartScriptSuffix() {
    return ".bat";
}

}  // namespace ventrix::platform
