// Environment variables of the test program.
#pragma once

#include <cstdlib>
#include <optional>
#include <string>

#include "platform/environment.h"

namespace ventrix::test {

/// The variables that name the folder for temporary files and the user's own folder.
#ifdef _WIN32
inline constexpr char kTemporary[] = "TMP";
inline constexpr char kHome[] = "USERPROFILE";
#else
inline constexpr char kTemporary[] = "TMPDIR";
inline constexpr char kHome[] = "HOME";
#endif

inline void RemoveVariable(const char* name) {
#ifdef _WIN32
    ::_putenv((std::string(name) + "=").c_str());
#else
    ::unsetenv(name);
#endif
}

/// Sets a variable, for child processes too, as long as the object exists.
class VariableChange {
  public:
    VariableChange(const char* name, const std::string& value)
        : name_(name), before_(platform::EnvironmentValue(name)) {
        platform::SetEnvironmentValue(name, value);
    }
    ~VariableChange() {
        if (before_) {
            platform::SetEnvironmentValue(name_, *before_);
        } else {
            RemoveVariable(name_);
        }
    }
    VariableChange(const VariableChange&) = delete;
    VariableChange& operator=(const VariableChange&) = delete;

  private:
    const char* name_;
    std::optional<std::string> before_;
};

}  // namespace ventrix::test
