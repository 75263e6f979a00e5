#include "bridge/callbacks.h"
#include "platform/module.h"

namespace ventrix {

// Resource types of a module have 16 bits.
std::uint32_t GetResource(void* module, std::uint32_t type, const char* name, const void** data) {
    const auto bytes =
        platform::FindNamedResource(module, static_cast<std::uint16_t>(type), name == nullptr ? "" : name);
    if (!bytes) {
        return 0;
    }
    *data = bytes->data();
    return static_cast<std::uint32_t>(bytes->size());
}

}  // namespace ventrix
