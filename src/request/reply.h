// The reply that the module sends to a calling client.
#pragma once

#include <cstdint>

namespace ventrix {

/// Sends a list of three values: the status and two strings. A null string is sent as the empty string.
void SendReply(std::int32_t status, const char* firstText, const char* secondText);

}  // namespace ventrix
