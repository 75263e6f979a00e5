// Runs `ventrix` as a separate process in a folder of the test.
#pragma once

#include <string>
#include <utility>
#include <vector>

#include "support/child.h"
#include "support/test_folder.h"

namespace ventrix::test {

struct Finished {
    int status = -1;  ///< The exit status, or 1000 plus the number of the signal that ended it.
    std::string out, error;
};

struct RunSettings {
    std::string program = VENTRIX_PROGRAM;
    std::string standardOutput = {};  ///< A file to write to instead of `Finished::out`.
};

/// Runs the program with these arguments in the folder, without a terminal and with empty standard input.
inline Finished RunVentrix(const TestFolder& folder, std::vector<std::string> arguments,
                           const RunSettings& settings = {}) {
    const TestFolder streams;
    const std::string out = settings.standardOutput.empty() ? streams.Native("out") : settings.standardOutput;
    Child child({settings.program, std::move(arguments), folder.Native(), out, streams.Native("error")});
    Finished finished;
    finished.status = child.Await();
    finished.out = settings.standardOutput.empty() ? streams.Read("out") : "";
    finished.error = streams.Read("error");
    return finished;
}

/// Why the objects in a file of the folder, one on a line, do not match a schema; empty if they do. The
/// checker is a program of POSIX; what it checks is the same on Windows.
inline std::string SchemaProblem(const TestFolder& folder, const std::string& schema,
                                 const std::string& file) {
#ifdef _WIN32
    return {};
#else
    const Finished checked = RunVentrix(
        folder, {"-c", "PATH=/usr/bin:$PATH; exec python3 \"$@\"", "sh", VENTRIX_JSON_CHECK, schema, file},
        {.program = "/bin/sh"});
    return checked.status == 0 ? "" : checked.out + checked.error + "(no valid objects)";
#endif
}

}  // namespace ventrix::test
