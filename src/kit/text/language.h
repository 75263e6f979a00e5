// The kit's table of language words with their numbers, and the system encoding that a language sets.
#pragma once

#include <cstdint>

namespace ventrix {

/// The number of a language word such as "deutsch", compared exactly; 0 for null, the empty and any other
/// word.
std::int32_t Q_LanguageNumber(const char* word);

/// Sets the system encoding code from a language word. Always 0.
int Q_SetSystemLanguage(const char* word);

/// The encoding code (convert.h) of a language: 6 for Japanese, both Chinese ones and Korean, otherwise 0.
std::int32_t Q_EncodingCodeOfLanguage(const char* word);

/// The encoding code of the system, in which "%B" escapes stand: 0 until a language is set.
std::int32_t Q_SystemEncodingCode();

}  // namespace ventrix
