// One run of `ventrix`, of the build without sanitizers, in a folder of the test. It has no terminal and
// empty standard input. What it prints goes to files outside that folder.
#pragma once

#include <string>
#include <vector>

#include "support/test_folder.h"

namespace ventrix::test {

/// Why there is no such program to run; empty if there is one.
std::string ProgramMissing();

class ProgramRun {
  public:
    /// Starts the program. `environment` holds `NAME=value` strings and replaces the test's own variables.
    ProgramRun(const std::string& folder, std::vector<std::string> arguments,
               std::vector<std::string> environment);
    /// Ends a run that has not ended.
    ~ProgramRun();
    ProgramRun(const ProgramRun&) = delete;
    ProgramRun& operator=(const ProgramRun&) = delete;

    void Signal(int signal) const;

    /// Waits for the end and returns the exit status, or 1000 plus the number of the signal that ended the
    /// run. A run that takes more than 20 seconds is killed and gives -1.
    int Await();

    std::string Out() const { return streams_.Read("out"); }
    std::string Error() const { return streams_.Read("error"); }

  private:
    TestFolder streams_;
    int process_ = -1;
    int descriptor_ = -1;  ///< Of the process, to wait for it with a limit.
};

}  // namespace ventrix::test
