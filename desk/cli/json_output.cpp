#include "desk/cli/json_output.h"

#include <iostream>
#include <nlohmann/json.hpp>

namespace ventrix::desk {

void PrintObject(const nlohmann::json& object) {
    std::cout << object.dump(-1, ' ', false, nlohmann::json::error_handler_t::replace) << '\n';
}

}  // namespace ventrix::desk
