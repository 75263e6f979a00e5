// A program that a test runs as a separate process, on both platforms.
#pragma once

#include <chrono>
#include <cstdint>
#include <string>
#include <thread>
#include <vector>

#include "platform/process.h"

namespace ventrix::test {

struct ChildStart {
    std::string program;                 ///< Its native path.
    std::vector<std::string> arguments;  ///< Without the program's name.
    std::string folder;                  ///< The program's current folder.
    std::string out, error;              ///< Files that its output is written to.
};

enum class Ending {
    kInterrupt,  ///< As the user does with Ctrl-C.
    kTerminate,  ///< As the system does when it stops.
    kHangUp,     ///< As the terminal does when it closes.
    kKill,
};

/// Those that a program can handle, as far as they can be tried: Wine has no other event than Ctrl-C.
std::vector<Ending> Interruptions();

/// What a program's exit status is after that ending, if it handles it; 1000 and more if it cannot.
int StatusAfter(Ending ending);

/// Starts the program without a terminal and with empty standard input. On Windows it has a console of its
/// own without a window. Throws std::system_error if the system does not start it.
class Child {
  public:
    explicit Child(const ChildStart& start);
    /// Ends a program that still runs by force.
    ~Child();
    Child(const Child&) = delete;
    Child& operator=(const Child&) = delete;

    void End(Ending ending) const;

    /// Waits for the end, once. The exit status, or 1000 and the signal that ended the program; -1 if it does
    /// not end in that time.
    int Await(std::chrono::seconds limit = std::chrono::seconds(120));

  private:
    std::intptr_t process_ = -1;
    std::uint32_t number_ = 0;  ///< Of the process.
};

/// True if the condition becomes true within ten seconds.
template <typename Condition>
bool Eventually(const Condition& condition) {
    for (int look = 0; look < 500; ++look) {
        if (condition()) {
            return true;
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
    }
    return false;
}

/// Ends a process by force that platform::StartProcess has started.
void KillStarted(const platform::ProcessHandle& process);

/// The number of an open file for platform::UseOutput.
std::int64_t PassedOutput(int file);

/// True if the process runs whose number a program wrote into the file.
bool IsRunning(const std::string& numberFile);

}  // namespace ventrix::test
