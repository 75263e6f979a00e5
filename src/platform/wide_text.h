// Conversion between UTF-8 and UTF-16, as code page 65001 defines it.
#pragma once

#include <string>
#include <string_view>

namespace ventrix::platform {

/// Each byte that is not part of a well-formed character becomes U+FFFD.
std::u16string WideFromUtf8(std::string_view text);

/// Each unpaired surrogate becomes U+FFFD.
std::string Utf8FromWide(std::u16string_view text);

/// True if the bytes are valid UTF-8; also for an empty string.
bool IsUtf8(std::string_view text);

}  // namespace ventrix::platform
