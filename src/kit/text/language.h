// The numbers of the host's language words, and the system encoding that follows from a language.
#pragma once

#include <cstdint>

namespace ventrix {

/// The number of a language word such as "deutsch", compared exactly; 0 for null and for an unknown word.
std::int32_t Q_LanguageNumber(const char* word);

/// Sets the system encoding code from a language word. Always 0.
int Q_SetSystemLanguage(const char* word);

/// The encoding code (convert.h) of a language: 6 for Japanese, Korean and both forms of Chinese, else 0.
std::int32_t Q_EncodingCodeOfLanguage(const char* word);

/// The encoding code for "%B" escapes (resource_strings.h); 0 until a language is set.
std::int32_t Q_SystemEncodingCode();

}  // namespace ventrix
