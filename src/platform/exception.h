// The platform's exception, which no code of ours catches.
#pragma once

#include <cstdint>

namespace ventrix::platform {

/// Raises the platform exception with this code: prints one line to standard error and ends the process.
[[noreturn]] void RaisePlatformException(std::uint32_t code);

}  // namespace ventrix::platform
