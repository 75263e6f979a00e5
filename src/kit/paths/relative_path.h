// Expressing one path relative to another, in place. Strings are in the kit's current encoding.
#pragma once

namespace ventrix {

/// Rewrites the path relative to the folder of the base; a base that ends in a backslash is a folder itself.
/// The path's buffer has kPathBufferSize bytes. Nothing changes if one of the two is not absolute, if they
/// have no common root, if the result does not fit, or if the base is null. A null path is fatal.
void MakePathRelative(char* path, const char* base);

/// Turns a relative URL into a path in place: "/" becomes a backslash, and "%" with two hexadecimal digits
/// becomes that byte, except for the byte 0. Null is fatal.
void Q_UrlToPath(char* text);

}  // namespace ventrix
