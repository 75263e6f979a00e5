#include "bridge/callbacks.h"

namespace ventrix {

void Initialize(std::int32_t) {}

}  // namespace ventrix
