// Expressing one path relative to another, in place.
#pragma once

namespace ventrix {

/// Rewrites the path relative to the folder of the base. The buffer has kPathBufferSize bytes. Nothing
/// changes if either is no absolute path, if the two share no root, or if the outcome does not fit. A null
/// path is fatal.
void MakePathRelative(char* path, const char* base);

/// Turns a relative URL into a path: "/" becomes a backslash, and "%" with two hexadecimal digits its byte,
/// except for the zero byte. Null is fatal.
void Q_UrlToPath(char* text);

}  // namespace ventrix
