// The options as parts of completion scripts for shells.
#pragma once

#include <string>

#include "desk/cli/options.h"

namespace ventrix::desk {

/// The options of a command as words.
std::string BashOptions(Command command);

/// Branches of a case statement on the previous word: what follows an option of any command.
std::string BashValues();

/// The options of a command as arguments of _arguments, each on a line that ends in a backslash.
std::string ZshOptions(Command command);

/// A "complete" command for each option of a command.
std::string FishOptions(Command command);

}  // namespace ventrix::desk
