#include "bridge/callbacks.h"

namespace ventrix {

void CMSCommand(std::int32_t, const char*, std::int32_t, std::intptr_t, Q_CmsRecord*) {}

}  // namespace ventrix
