#include "bridge/callbacks.h"

namespace ventrix {

void DialogEvent(std::int32_t, std::int32_t, std::int32_t) {}

}  // namespace ventrix
