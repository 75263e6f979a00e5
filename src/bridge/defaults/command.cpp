#include "bridge/callbacks.h"

namespace ventrix {

void Command(std::int32_t) {}

}  // namespace ventrix
