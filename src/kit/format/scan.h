// Formatted input in the manner of the C library's sscanf, with the kit's own rules for the end of the input
// and for white space.
#pragma once

namespace ventrix {

/// Reads the text according to the format and stores values through the pointers. The conversions are "d",
/// "i", "o", "x", "X", "u", "c", "s", "f", "e", "g", "n", "[" and "%". They take a width and a "*" that
/// suppresses the store. Integers are 32 bits wide, with "h" 16 bits; a floating value is a float, with "l" a
/// double. White space is space, tab and line feed. Returns the number of items stored ("n" does not count),
/// or -1 if the text ends before the first item; -1 for a null or empty text.
int Q_ScanText(const char* text, const char* format, ...);

}  // namespace ventrix
