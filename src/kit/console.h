// The destination of the kit's console output: a function that the connection sets once the client is
// connected. Without one, output is dropped.
#pragma once

#include <cstdint>

namespace ventrix {

/// Takes zero-terminated text in the kit's current encoding. The result is ignored.
using Q_ConsoleFunction = std::int32_t (*)(const char* text);

inline Q_ConsoleFunction Q_ConsoleHook = nullptr;

}  // namespace ventrix
