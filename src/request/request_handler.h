// Processing of a request: parse it, check it, run the driver, send the reply.
#pragma once

namespace ventrix {

/// Handles a request and sends exactly one reply before it returns. Null counts as the empty string, which is
/// refused as it has no command.
void HandleRequest(const char* text);

}  // namespace ventrix
