// The portable notation of a path: "<r>" root, "<v>" volume, "<c>" component, "<u>" one level up, "<h>" host.
// C:\a\..\b is written <v>C:<c>a<u><c>b. A backslash inside a token's text escapes the next byte.
#pragma once

namespace ventrix {

/// The native form of a portable text, in kit memory. A network file is copied. Null for a null text, an
/// empty outcome, tokens in an impossible order and an outcome of more than 4095 bytes.
char* Q_PortableToNative(const char* text);

/// The portable form of a native text, in kit memory, relative to the anchor's text if that is not null. A
/// network file is copied. Null for a null text and for a component of more than 1024 bytes.
char* Q_NativeToPortable(const char* text, const char* anchor);

}  // namespace ventrix
