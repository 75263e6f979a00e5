// CoCreateInstanceEx (com.h), for the library lookup that finds it by name.
#pragma once

#include "platform/com.h"

namespace ventrix::platform {

HRESULT CreateInstanceOnServer(REFCLSID classId, IUnknown* outer, DWORD context, COSERVERINFO* server,
                               DWORD count, MULTI_QI* results);

}  // namespace ventrix::platform
