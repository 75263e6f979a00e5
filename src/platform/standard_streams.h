// What a program with a command line has from its starter: its arguments and its standard streams.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace ventrix::platform {

/// The arguments in UTF-8 with the program's name first, from those of main. To be called once, at the start:
/// on Windows, it also sets up the standard streams, so that a console shows UTF-8 and lines end as on POSIX.
std::vector<std::string> ProgramArguments(int count, char** arguments);

/// Whether standard error is a terminal that shows colors.
bool IsErrorTerminal();

/// What UseOutput needs to write to this process's standard error: 0 where programs inherit it from whoever
/// starts them, on Windows a handle, as the module passes none on.
std::int64_t OutputToPass();

/// Makes another process's output the standard output of this one. An output of 0 changes nothing.
void UseOutput(std::int64_t process, std::int64_t output);

/// From now on, writing to a pipe that nobody reads is an error and does not end the process.
void SurviveClosedPipes();

/// Whether such a write has been tried.
bool WroteToClosedPipe();

/// While it lives, what is written to standard output goes to standard error.
class StandardOutputRedirection {
  public:
    StandardOutputRedirection();
    ~StandardOutputRedirection();
    StandardOutputRedirection(const StandardOutputRedirection&) = delete;
    StandardOutputRedirection& operator=(const StandardOutputRedirection&) = delete;

  private:
    int kept_ = -1;
};

}  // namespace ventrix::platform
