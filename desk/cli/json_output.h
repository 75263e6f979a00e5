// The one object that --json prints.
#pragma once

#include <nlohmann/json_fwd.hpp>

#include "desk/paths/paths.h"

namespace ventrix::desk {

/// One line on standard output. Bytes that are no UTF-8, which a cut path may hold, become U+FFFD.
void PrintObject(const nlohmann::json& object);

/// A path is a string in JSON.
void to_json(nlohmann::json& json, const NativePath& path);

}  // namespace ventrix::desk
