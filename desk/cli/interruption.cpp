#include "desk/cli/interruption.h"

#include <unistd.h>

#include <atomic>
#include <csignal>

#include "desk/cli/exit_status.h"
#include "desk/cli/output_folder.h"

namespace ventrix::desk {
namespace {

std::atomic<const char*> markName = nullptr;

extern "C" void EndInterrupted(int) {
    if (const char* name = markName.load(); name != nullptr) {
        MarkOutput(name);
    }
    constexpr char kText[] = "\ninterrupted\n";
    [[maybe_unused]] const auto written = write(STDERR_FILENO, kText, sizeof kText - 1);
    _exit(kExitInterrupted);
}

}  // namespace

void WatchInterruptions() {
    std::signal(SIGINT, EndInterrupted);
    std::signal(SIGTERM, EndInterrupted);
    std::signal(SIGHUP, EndInterrupted);
}

InterruptionMark::InterruptionMark(const NativePath& file) : fileName_(file.utf8) {
    markName = fileName_.c_str();
}

InterruptionMark::~InterruptionMark() {
    markName = nullptr;
}

}  // namespace ventrix::desk
