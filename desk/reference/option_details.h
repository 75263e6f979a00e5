// What the reference says about options beyond the one line of the help.
#pragma once

#include <string>

namespace ventrix::desk {

/// Sentences about an option, by its long name; empty if its line of help says everything. Names are in
/// backquotes.
std::string DetailsOf(const std::string& option);

}  // namespace ventrix::desk
