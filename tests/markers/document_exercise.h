// Takes arbitrary bytes through everything that a pass may do to a document, and reports what failed.
#pragma once

#include <string>
#include <string_view>

namespace ventrix::test {

/// Writes the bytes to the file `path` (system notation), loads and saves it unchanged, then replaces every
/// text and attribute value by itself, saves and loads again. Returns an empty string if a failed load has a
/// reason of one line, the unchanged file has the same bytes, and the rewritten one the same tree; otherwise
/// what failed.
std::string ExerciseDocument(std::string_view path, std::string_view bytes);

}  // namespace ventrix::test
