// Scripts that a test's run starts: an executable file without a suffix, on Windows a batch file. A program
// of the tests (script_program.cpp) carries out their steps, so that one script serves both platforms.
#pragma once

#include <string>

#include "support/test_folder.h"

namespace ventrix::test {

#ifdef _WIN32
inline constexpr char kScriptSuffix[] = ".bat";
inline constexpr bool kHasShell = false;
#else
inline constexpr char kScriptSuffix[] = "";
inline constexpr bool kHasShell = true;
#endif

inline std::string ScriptFile(const std::string& name) {
    return name + kScriptSuffix;
}

/// Writes the script `name` with its suffix. Its native path.
std::string WriteScript(const TestFolder& folder, const std::string& name, const std::string& steps);

/// The content of a script with these steps.
std::string ScriptWith(const std::string& steps);

}  // namespace ventrix::test
