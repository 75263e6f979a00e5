// A reader of formatted text in the manner of the C library's sscanf, with the kit's own rules for ends and
// spaces.
#pragma once

namespace ventrix {

/// Reads the text by the format into the variables that the pointers name. The conversions are "d", "i", "o",
/// "x", "X", "u", "c", "s", "f", "e", "g", "n", "[" and "%", with a width, a "*" that suppresses the store,
/// "h" for 16-bit integers and "l" for doubles; integers are 32 bits wide otherwise. White space is space,
/// tab and line feed. The number of items stored, or -1 where the text ends before the first; -1 for a null
/// or empty text.
int Q_ScanText(const char* text, const char* format, ...);

}  // namespace ventrix
