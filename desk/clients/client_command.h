// The command text that a client gets: a verb, then options with or without a value.
#pragma once

#include <map>
#include <string>
#include <string_view>

#include "desk/paths/paths.h"

namespace ventrix::desk {

struct ClientCommand {
    std::string verb;
    std::map<std::string, std::string>
        options;  ///< By name with its dash; an option without a value has the empty text.
};

/// A value stands behind its option, in double quotes or up to the next blank. Nothing is escaped: a
/// backslash before the closing quote is a part of the value. Of a repeated option the last counts; a word
/// without an option is dropped.
ClientCommand ParseClientCommand(std::string_view text);

/// Empty if the option is missing.
std::string OptionOf(const ClientCommand& command, const std::string& name);

/// The value of an option that names a file or folder.
NativePath PathOptionOf(const ClientCommand& command, const std::string& name);

}  // namespace ventrix::desk
