#include "bridge/callbacks.h"

namespace ventrix {

void Notify(std::int32_t, std::uint32_t, const char*, std::int32_t) {}

}  // namespace ventrix
