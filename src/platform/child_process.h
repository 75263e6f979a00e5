// Programs that a run starts, each together with everything that it starts in turn: its tree. A tree never
// outlives the run, however the run ends. Programs, arguments, environment and files are native.
#pragma once

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace ventrix::platform {

struct ProgramStart {
    /// The program's path first. It is not looked up in PATH.
    std::vector<std::string> arguments = {};
    /// Set on top of this process's variables.
    std::vector<std::pair<std::string, std::string>> environment = {};
    /// Standard output and error are appended to it; empty: those of this process.
    std::string outputFile = {};
    /// The process with whose end the tree ends; 0 is this process.
    std::int64_t owner = 0;
};

struct StartedProgram {
    std::intptr_t handle = -1;  ///< Of the system; the end of the program is read from it.
    std::string notStarted;     ///< Why the program could not be started, naming it; empty if it runs.
};

struct ProgramEnd {
    std::string notStarted;  ///< As in StartedProgram; then the rest is 0.
    int exitCode = 0;
    int signal = 0;  ///< The signal that ended the program; 0 if it ended by itself.
};

/// Starts a program in this process's current folder and in a process group of its own, with no input, no
/// other open file and no signal ignored. An executable text file that names no interpreter runs in the
/// shell. Every result has to be waited for.
StartedProgram StartProgram(const ProgramStart& start);

/// Waits without a limit for the end of the program itself. What it left running in the background goes on
/// until the owner ends or calls EndStartedPrograms.
ProgramEnd WaitForProgram(StartedProgram& program);

/// The same, but nothing if the program still runs after that time.
std::optional<ProgramEnd> WaitForProgram(StartedProgram& program, std::chrono::milliseconds limit);

/// Makes this process responsible for every program that it or its libraries start from now on, even for
/// those that detach themselves, so that EndStartedPrograms finds them.
void OwnStartedPrograms();

/// Ends every running program that this process is the ancestor of or is responsible for: asks each to end,
/// and after a second ends the rest by force. No other thread may be waiting for a child process.
void EndStartedPrograms();

/// Makes this process end when the one that started it does.
void EndWithStarter();

/// The number of this process, for ProgramStart::owner.
std::int64_t ProcessId();

}  // namespace ventrix::platform
