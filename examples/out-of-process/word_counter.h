// A client of the host in its own process. Another client calls it by its name, "Word counter", with the
// command "Count" and a string, and receives two values: a status (0, or -43 for any other command) and a
// sentence.
#pragma once

#include <cstdint>

namespace ventrix::example {

/// Connects to the host that runs on a server, or on this machine if `serverName` is null, and serves its
/// calls until the quit message. 0, or 1 if no host was found.
std::int32_t RunWordCounter(const char* serverName);

}  // namespace ventrix::example
