// The attribute bits of a file, from its mode.
#pragma once

#include <cstdint>
#include <string>

namespace ventrix::platform {

/// The bits of an entry of an open folder; attributeLink alone for a link that leads nowhere.
std::uint32_t EntryAttributes(int folder, const std::string& name);

}  // namespace ventrix::platform
