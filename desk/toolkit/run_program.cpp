#include "desk/toolkit/run_program.h"

#include <unistd.h>

#include <algorithm>
#include <cstdlib>

namespace ventrix::desk {

std::string FindProgram(const std::string& name) {
    if (name.find('/') != std::string::npos) {
        return access(name.c_str(), X_OK) == 0 ? name : std::string();
    }
    const char* variable = std::getenv("PATH");
    const std::string path = variable == nullptr ? "/usr/bin:/bin" : variable;
    for (std::size_t begin = 0; begin <= path.size();) {
        const std::size_t end = std::min(path.find(':', begin), path.size());
        std::string candidate = path.substr(begin, end - begin) + "/" + name;
        if (end > begin && access(candidate.c_str(), X_OK) == 0) {
            return candidate;
        }
        begin = end + 1;
    }
    return {};
}

platform::ProgramEnd RunProgram(const std::vector<std::string>& arguments, const std::string& outputFile) {
    platform::StartedProgram program = platform::StartProgram(
        {.arguments = arguments, .environment = {{"LC_ALL", "C.UTF-8"}}, .outputFile = outputFile});
    return platform::WaitForProgram(program);
}

}  // namespace ventrix::desk
