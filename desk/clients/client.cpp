#include "desk/clients/client.h"

#include <exception>

namespace ventrix::desk {

std::string ReasonOf(const std::function<std::string()>& action) {
    try {
        return action();
    } catch (const std::exception& error) {
        return std::string("unexpected error: ") + error.what();
    }
}

}  // namespace ventrix::desk
