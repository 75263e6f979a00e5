// Environment variables of the test program.
#pragma once

#include <cstdlib>
#include <string>

namespace ventrix::test {

/// The variable that names the folder for temporary files.
#ifdef _WIN32
inline constexpr char kTemporary[] = "TMP";
#else
inline constexpr char kTemporary[] = "TMPDIR";
#endif

inline void RemoveVariable(const char* name) {
#ifdef _WIN32
    ::_putenv((std::string(name) + "=").c_str());
#else
    ::unsetenv(name);
#endif
}

}  // namespace ventrix::test
