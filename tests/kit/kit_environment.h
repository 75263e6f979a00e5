// What the kit's tests share: the encoding and the converters as start-up leaves them, and texts that free
// themselves.
#pragma once

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "kit/channels/channels.h"
#include "kit/text/strings.h"

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

/// A channel on the file of a path or URL; null where it does not open.
inline Q_Channel* OpenChannel(const std::string& path, const char* mode) {
    FilePath* file = Q_PathToFilePath(path.c_str(), nullptr, kNativePath);
    Q_Channel* channel = Q_ChannelOpen(file, mode);
    Q_FreeFilePath(file);
    return channel;
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
