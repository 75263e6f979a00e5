#include "pipeline/scripts.h"

#include <cstdio>

#include "platform/process.h"

namespace ventrix {

void RunScript(Path script, const Path& documentPath) {
    platform::ProcessHandle process;
    const auto error = platform::StartProcess("\"" + script + "\" \"" + documentPath + "\"", process);
    if (error != platform::kErrorNone) {
        std::printf("CreateProcess failed (%d)\n", static_cast<int>(error));
        std::fflush(stdout);  // in its place between the outputs of the programs of a run
    }
    platform::WaitForProcess(process);
}

}  // namespace ventrix
