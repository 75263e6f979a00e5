// Takes a document of any bytes through everything that a pass may do to it, and tells what did not hold.
#pragma once

#include <string>
#include <string_view>

namespace ventrix::test {

/// Writes the bytes to the file `path` (system notation), loads it, saves it untouched, rewrites every text
/// and attribute value as it reads, saves and loads again. Empty if all held: a reason of one line where it
/// does not load; the same bytes where nothing changed; the same tree where everything was rewritten.
std::string ExerciseDocument(std::string_view path, std::string_view bytes);

}  // namespace ventrix::test
