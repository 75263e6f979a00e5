#include "desk/cli/json_output.h"

#include <iostream>
#include <nlohmann/json.hpp>

namespace ventrix::desk {

void PrintObject(const nlohmann::json& object) {
    std::cout << object.dump(-1, ' ', false, nlohmann::json::error_handler_t::replace) << '\n';
}

void to_json(nlohmann::json& json, const NativePath& path) {
    json = path.utf8;
}

}  // namespace ventrix::desk
