// The one object that --json prints.
#pragma once

#include <nlohmann/json_fwd.hpp>

namespace ventrix::desk {

/// One line on standard output. Bytes that are no UTF-8, which a cut path may hold, become U+FFFD.
void PrintObject(const nlohmann::json& object);

}  // namespace ventrix::desk
