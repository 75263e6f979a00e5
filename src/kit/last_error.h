// The kit's one error value. A failure sets it and a success does not clear it, so it holds the code of the
// latest failure.
#pragma once

#include <cstdint>

namespace ventrix {

inline std::int32_t Q_ApiLastError = 0;

}  // namespace ventrix
