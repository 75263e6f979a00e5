// What the kit's tests share: the encoding and the converters as start-up leaves them, and texts that free
// themselves.
#pragma once

#include <string>

#include "kit/strings.h"

namespace ventrix {

/// Takes a text of the kit's, and frees it; null reads as "(null)".
inline std::string Take(char* text) {
    const Q_String owner(text);
    return text == nullptr ? "(null)" : text;
}

/// The same for a result in UTF-16.
inline std::u16string TakeWide(char* text) {
    const Q_String owner(text);
    return text == nullptr ? u"(null)" : reinterpret_cast<const char16_t*>(text);
}

/// Makes another encoding current for the length of a scope.
class EncodingScope {
  public:
    explicit EncodingScope(const char* name);
    ~EncodingScope();
    EncodingScope(const EncodingScope&) = delete;
    EncodingScope& operator=(const EncodingScope&) = delete;
};

}  // namespace ventrix
