#include "kit/paths/path_alias.h"

#include <string>
#include <unordered_map>

namespace ventrix {
namespace {

std::unordered_map<std::string, std::string> aliases;

}  // namespace

const char* Q_PathAlias(const char* path) {
    if (path == nullptr || aliases.empty()) {
        return path;
    }
    const auto found = aliases.find(path);
    return found == aliases.end() ? path : found->second.c_str();
}

void Q_SetPathAlias(const char* path, const char* alias) {
    if (path == nullptr) {
        return;
    }
    if (alias == nullptr) {
        aliases.erase(path);
    } else {
        aliases[path] = alias;
    }
}

}  // namespace ventrix
