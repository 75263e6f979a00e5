// Comparison of UTF-8 texts by the rules of the default locale's language.
#pragma once

#include <cstdint>

namespace ventrix {

/// 1 if the first text sorts after the second, -1 if before, 0 if they are alike or ICU has no rules.
/// Strength 1 ignores case; 2 compares in full. Null reads as the empty text.
int Q_CollateUtf8(const char* first, const char* second, int strength);

/// The same, without regard to case, for the first characters of two texts.
int Q_CollateChars(const char* first, const char* second);

}  // namespace ventrix
