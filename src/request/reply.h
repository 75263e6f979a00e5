// The one form in which the module answers a calling client.
#pragma once

#include <cstdint>

namespace ventrix {

constexpr std::int32_t kRequestRefused = -43;  ///< Status of a request that did not reach a driver.

/// Hands the host a list of three values: the status and the two texts. A null text is sent as the empty
/// text.
void SendReply(std::int32_t status, const char* firstText, const char* secondText);

}  // namespace ventrix
