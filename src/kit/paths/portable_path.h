// The portable notation writes a path as tokens: "<r>" root, "<v>" volume, "<c>" component, "<u>" one level
// up, "<h>" host. C:\a\..\b is written <v>C:<c>a<u><c>b. In the text of a token a backslash escapes the next
// byte.
#pragma once

namespace ventrix {

/// Converts portable text to native notation, in kit memory. A network file is copied. Null for null, tokens
/// in an invalid order, an empty result, and a result of more than 4095 bytes.
char* Q_PortableToNative(const char* text);

/// Converts a native path to portable text, in kit memory, relative to the anchor if that is not null. A
/// network file is copied. Null for null, a path of more than 4095 bytes, and a component of more than 1024
/// bytes.
char* Q_NativeToPortable(const char* text, const char* anchor);

}  // namespace ventrix
