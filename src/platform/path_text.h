// Paths of the standard library from and to UTF-8. Its own conversions from char take another encoding on
// Windows.
#pragma once

#include <filesystem>
#include <string>
#include <string_view>

namespace ventrix::platform {

inline std::filesystem::path PathFromUtf8(std::string_view text) {
    return std::u8string(text.begin(), text.end());
}

/// With slashes on every platform.
inline std::string Utf8FromPath(const std::filesystem::path& path) {
    const std::u8string text = path.generic_u8string();
    return {text.begin(), text.end()};
}

}  // namespace ventrix::platform
