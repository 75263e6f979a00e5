// Comparison of UTF-8 strings by the sorting rules of the default locale's language.
#pragma once

#include <cstdint>

namespace ventrix {

/// 1 if the first string sorts after the second, -1 if before, 0 if they are equal or ICU has no rules.
/// Strength 1 ignores case; any other value compares in full. Null reads as the empty string.
int Q_CollateUtf8(const char* first, const char* second, int strength);

/// Compares only the first characters of two strings, ignoring case.
int Q_CollateChars(const char* first, const char* second);

}  // namespace ventrix
