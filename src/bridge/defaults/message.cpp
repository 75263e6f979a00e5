#include "bridge/callbacks.h"

namespace ventrix {

void Message(std::intptr_t, std::int32_t, std::int32_t) {}

}  // namespace ventrix
