// Text as Java programs read it: property files and file URIs. Strings are UTF-8.
#pragma once

#include <string>
#include <string_view>

#include "desk/paths/paths.h"

namespace ventrix::desk {

/// A line of a property file, with its line break. Every character of the value but letters, digits and a few
/// signs is written as \uXXXX, so that nothing in it has a meaning for the format. Bytes that are not UTF-8
/// become U+FFFD. The name must be plain ASCII.
std::string PropertyLine(std::string_view name, std::string_view value);

/// The URI of an absolute path exactly as Java's File.toURI writes it. The toolkit compares such URIs as
/// strings, so that an escape too many makes a file unknown: "$", "+" and characters beyond ASCII stay.
std::string JavaFileUri(const NativePath& path);

}  // namespace ventrix::desk
