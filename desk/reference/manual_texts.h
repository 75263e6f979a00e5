// The options and exit statuses as parts of man pages (roff with the man macros) and of Markdown documents.
#pragma once

#include <string>

#include "desk/cli/options.h"

namespace ventrix::desk {

/// The options of a command under the headings of their groups.
std::string ManOptions(Command command);
std::string MarkdownOptions(Command command);

/// The keys of the project file that are options.
std::string ManKeys();

std::string ManExitStatuses();
std::string MarkdownExitStatuses();

}  // namespace ventrix::desk
