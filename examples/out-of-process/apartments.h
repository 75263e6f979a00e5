// What differs between the platforms: where the client runs, and how a busy host rejects calls.
#pragma once

#include <cstdint>
#include <functional>
#include <string>

namespace ventrix::example {

/// Runs the client, which looks for its host on a server, or on this machine if the name is empty. As soon as
/// the client's message loop runs, calls `whileServing`, and then ends the loop. Returns the client's exit
/// status: 0, or 1 if it found no host and `whileServing` was not called. Throws std::runtime_error if the
/// client cannot be started.
///
/// On Windows the client is a program of its own beside this one. Elsewhere it is a thread, as our own
/// component runtime serves one process only.
std::int32_t RunClient(const std::string& server, const std::function<void()>& whileServing);

/// Called on the host's thread before its first call arrives: on Windows, registers a message filter that
/// rejects calls while `busy` returns true. It may be empty.
void RegisterBusyFilter(const std::function<bool()>& busy);

/// What the host's methods ask before they do anything: `busy` where no message filter rejects calls, else
/// nothing.
std::function<bool()> BusyForMethods(const std::function<bool()>& busy);

}  // namespace ventrix::example
