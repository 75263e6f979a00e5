// UTF-8 to UTF-16 and back, as the platform converts with code page 65001.
#pragma once

#include <string>
#include <string_view>

namespace ventrix::platform {

/// Each byte that belongs to no well-formed character becomes U+FFFD. Empty gives empty.
std::u16string WideFromUtf8(std::string_view text);

/// Each unpaired surrogate becomes U+FFFD. Empty gives empty.
std::string Utf8FromWide(std::u16string_view text);

/// True if the bytes are UTF-8 throughout: shortest forms, no surrogates, nothing above U+10FFFF.
bool IsUtf8(std::string_view text);

}  // namespace ventrix::platform
