// Environment variables of the test program.
#pragma once

#include <cstdlib>

namespace ventrix::test {

inline void RemoveVariable(const char* name) {
    ::unsetenv(name);
}

}  // namespace ventrix::test
