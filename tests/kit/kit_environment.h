// What the kit's tests share: the encoding and converters as start-up sets them, and helpers that free kit
// strings.
#pragma once

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "kit/channels/channels.h"
#include "kit/text/encodings.h"
#include "kit/text/strings.h"

namespace ventrix {

/// The content of a kit string, which is freed; "(null)" for null.
inline std::string Take(char* text) {
    const Q_String owner(text);
    return text == nullptr ? "(null)" : text;
}

/// The same for a result in UTF-16.
inline std::u16string TakeWide(char* text) {
    const Q_String owner(text);
    return text == nullptr ? u"(null)" : reinterpret_cast<const char16_t*>(text);
}

/// Opens a channel on a path or URL; null if that fails.
inline Q_Channel* OpenChannel(const std::string& path, const char* mode) {
    FilePath* file = Q_PathToFilePath(path.c_str(), nullptr, kNativePath);
    Q_Channel* channel = Q_ChannelOpen(file, mode);
    Q_FreeFilePath(file);
    return channel;
}

/// Makes another encoding current for the length of a scope.
class EncodingScope {
  public:
    explicit EncodingScope(const char* name) { Q_SetEncoding(name); }
    ~EncodingScope() { Q_SetEncoding("UTF-8"); }
    EncodingScope(const EncodingScope&) = delete;
    EncodingScope& operator=(const EncodingScope&) = delete;
};

}  // namespace ventrix
