// The command string that a client receives: a verb, then options with or without a value. UTF-8.
#pragma once

#include <map>
#include <string>
#include <string_view>

#include "desk/paths/paths.h"

namespace ventrix::desk {

struct ClientCommand {
    std::string verb;
    std::map<std::string, std::string>
        options;  ///< By name with its dash; empty for an option without a value.
};

/// A value follows its option, in double quotes or up to the next space. There are no escapes: a backslash
/// before the closing quote is part of the value, and so is a quote that neither ends the command nor
/// precedes an option. The last of repeated options counts; a word without an option is ignored.
ClientCommand ParseClientCommand(std::string_view text);

/// Empty if the option is missing.
std::string OptionOf(const ClientCommand& command, const std::string& name);

/// The value of an option that names a file or folder.
NativePath PathOptionOf(const ClientCommand& command, const std::string& name);

}  // namespace ventrix::desk
