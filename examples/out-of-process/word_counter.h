// A client of the host in a process of its own. Another client calls it by its name, "Word counter", with the
// command "Count" and a text, and receives two values: a status (0, or -43 for any other command) and a
// sentence.
#pragma once

#include <cstdint>

namespace ventrix::example {

/// Connects to the running host, on a server where one is named (null: this machine), and serves its calls
/// until the quit message. 0, or 1 if no host was reached.
std::int32_t RunWordCounter(const char* serverName);

}  // namespace ventrix::example
