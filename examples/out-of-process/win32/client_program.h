// What the client's program on Windows and the host that starts it agree on. Its arguments are the number of
// the host's waiting thread and, if it shall look for its host there, the name of a server.
#pragma once

#include <cstdint>

namespace ventrix::example {

/// Posted to the host's waiting thread when the client's message loop runs, with the number of the client's
/// thread as first parameter.
constexpr std::uint32_t kServingMessage = 0x8001;  // In the range that is free for programs.

}  // namespace ventrix::example
