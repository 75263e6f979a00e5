// Where the kit's own text output goes: a function that the connection sets once the client is connected.
// While there is none, output is dropped.
#pragma once

#include <cstdint>

namespace ventrix {

/// Takes finished, terminated text in the kit's current encoding. Its answer is not looked at.
using Q_ConsoleFunction = std::int32_t (*)(const char* text);

inline Q_ConsoleFunction Q_ConsoleHook = nullptr;

}  // namespace ventrix
