// Start-up of the kit's runtime: the encoding and the folder of ICU's data.
#pragma once

#include <cstdint>

namespace ventrix {

/// Selects the host's own encoding unless one is selected already, and points ICU at `icu_data` in the host's
/// installation folder unless ICU has a data folder. 0, or 1 if the host did not name its folder.
std::int32_t Q_ApiRuntimeSetup();

}  // namespace ventrix
