// libFuzzer's entry point. VENTRIX_FUZZ_TARGET is the target's function (targets.h).
#include <cstddef>
#include <cstdint>

#include "fuzz/environment.h"
#include "fuzz/targets.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t count) {
    ventrix::fuzz::PrepareProcess();
    ventrix::fuzz::VENTRIX_FUZZ_TARGET({reinterpret_cast<const char*>(bytes), count});
    return 0;
}
