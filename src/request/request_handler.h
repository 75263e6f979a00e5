// The road of one request: parse, check, run the driver, reply.
#pragma once

namespace ventrix {

/// Handles one request text and sends exactly one reply before it returns. A null text counts as the empty
/// text, which is no command and is refused.
void HandleRequest(const char* text);

}  // namespace ventrix
