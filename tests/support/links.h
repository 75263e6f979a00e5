// What files may be: symbolic links, of which Wine has none, and names with other bytes than UTF-8, with
// colons and backslashes, which only POSIX has.
#pragma once

#include <filesystem>
#include <string>

#include "platform/path_text.h"

namespace ventrix::test {

#ifdef _WIN32
inline constexpr bool kHasLinks = false;
inline constexpr bool kHasAnyNames = false;
#else
inline constexpr bool kHasLinks = true;
inline constexpr bool kHasAnyNames = true;
#endif

/// Makes a link where the system has them.
inline void MakeLink(const std::string& target, const std::string& link) {
    if (kHasLinks) {
        std::filesystem::create_symlink(platform::PathFromUtf8(target), platform::PathFromUtf8(link));
    }
}

}  // namespace ventrix::test
