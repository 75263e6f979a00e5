// The one form in which the module answers a calling client.
#pragma once

#include <cstdint>

namespace ventrix {

/// Hands the host a list of three values: the status and the two texts. A null text is sent as the empty
/// text.
void SendReply(std::int32_t status, const char* firstText, const char* secondText);

}  // namespace ventrix
