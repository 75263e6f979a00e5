#include "bridge/callbacks.h"

namespace ventrix {

void HtmlDialogEventEx(std::int32_t, std::intptr_t, std::intptr_t) {}

}  // namespace ventrix
