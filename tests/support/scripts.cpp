#include "support/scripts.h"

namespace ventrix::test {

std::string ScriptWith(const std::string& steps) {
#ifdef _WIN32
    const std::string start = "@\"" VENTRIX_SCRIPT_PROGRAM "\" \"%~f0\" %*\r\n@exit /b %errorlevel%\r\n";
#else
    const std::string start = "#!" VENTRIX_SCRIPT_PROGRAM "\n";
#endif
    return start + ":steps\n" + steps;
}

std::string WriteScript(const TestFolder& folder, const std::string& name, const std::string& steps) {
    return folder.WriteProgram(ScriptFile(name), ScriptWith(steps));
}

}  // namespace ventrix::test
