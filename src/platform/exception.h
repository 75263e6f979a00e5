// The platform exception, which ends the process: nothing catches it.
#pragma once

#include <cstdint>

namespace ventrix::platform {

/// Prints one line with the code to standard error and ends the process.
[[noreturn]] void RaisePlatformException(std::uint32_t code);

}  // namespace ventrix::platform
