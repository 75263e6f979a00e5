#include "platform/exception.h"

#include <cstdio>
#include <cstdlib>

namespace ventrix::platform {

void RaisePlatformException(std::uint32_t code) {
    std::fprintf(stderr, "Ventrix: platform exception 0x%08x, the process ends\n",
                 static_cast<unsigned>(code));
    std::abort();
}

}  // namespace ventrix::platform
