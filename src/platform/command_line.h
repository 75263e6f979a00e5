// The rules by which a command line is split into arguments. Strings are UTF-8.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "platform/drives.h"

namespace ventrix::platform {

/// Splits a command line. The program is the text between a leading quote and the next one, or the text up to
/// the first space or tab; nothing in it is escaped. In the arguments, a quote starts or ends a quoted part,
/// in which spaces and tabs are text. 2n backslashes before a quote are n backslashes; 2n+1 are n backslashes
/// and a literal quote; two quotes in a quoted part are a literal quote. Empty text and whitespace give no
/// arguments.
std::vector<std::string> SplitCommandLine(std::string_view text);

/// The arguments for a native program. The first one (the program), and every other that is an absolute path
/// on a mapped drive or server, is converted to native notation; the rest do not change.
std::vector<std::string> NativeArguments(const DriveTable& drives, std::vector<std::string> arguments);

}  // namespace ventrix::platform
