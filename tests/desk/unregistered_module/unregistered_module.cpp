// A client module that does not register with its host. The build sets the result of its entry point.
#include "bridge/contract/host_interfaces.h"

extern "C" [[gnu::visibility("default")]] std::int32_t Q_ApiClientInit(void*, ventrix::IUnknown*,
                                                                       ventrix::IUnknown*,
                                                                       const ventrix::Q_PropList*) {
    return VENTRIX_INIT_RESULT;
}
