// The state of the process that targets rely on.
#pragma once

#include <string>
#include <string_view>

namespace ventrix::fuzz {

/// Selects UTF-8, finds the host's converters and maps the drive Z: to the root. Does nothing the second
/// time.
void PrepareProcess();

/// Writes the content to a temporary file and returns its path in system notation. The same name has the same
/// file each time.
std::string TempFileWith(const std::string& name, std::string_view content);

}  // namespace ventrix::fuzz
