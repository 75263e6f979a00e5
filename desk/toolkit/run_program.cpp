#include "desk/toolkit/run_program.h"

#include "platform/process.h"
#include "platform/program.h"

namespace ventrix::desk {

NativePath FindProgram(const std::string& name) {
    if (name.find('/') != std::string::npos) {
        return platform::IsExecutable(name) ? NativePath{name} : NativePath{};
    }
    return {platform::FindInPath(name)};
}

platform::ProgramEnd RunProgram(const std::vector<std::string>& arguments, const NativePath& outputFile) {
    platform::StartedProgram program =
        platform::StartProgram({.arguments = arguments,
                                .environment = {{"LC_ALL", "C.UTF-8"}, {"DITA_HOME", ""}},
                                .outputFile = outputFile.utf8});
    return platform::WaitForProgram(program);
}

}  // namespace ventrix::desk
