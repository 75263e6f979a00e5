#include "platform/exception.h"

#include <cstdio>
#include <cstdlib>

#include "platform/win32/system_calls.h"

namespace ventrix::platform {

void RaisePlatformException(std::uint32_t code) {
    std::fprintf(stderr, "Ventrix: platform exception 0x%08x, the process ends\n",
                 static_cast<unsigned>(code));
    std::fflush(stderr);
    ::RaiseException(code, 0, 0, nullptr);
    std::abort();  // A debugger may continue after the exception.
}

}  // namespace ventrix::platform
