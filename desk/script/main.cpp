// ventrix-script, the recorder: started by the module in place of a user's script, it starts that script and
// records the outcome (script_record.h). What the script prints appears where the module's own output does.
#include <chrono>
#include <exception>
#include <filesystem>
#include <fstream>
#include <iostream>

#include "desk/script/marked_copies.h"
#include "desk/script/script_record.h"
#include "platform/child_process.h"
#include "platform/path_text.h"
#include "platform/standard_streams.h"

namespace {

using namespace ventrix;
using namespace ventrix::desk;

constexpr int kExitNoSettings = 2;
constexpr int kExitNotStarted = 127;
constexpr int kSignalExitBase = 128;
constexpr auto kBetweenLooks = std::chrono::milliseconds(50);

/// Passes on what has been added to the output past the first `passed` bytes, and counts it. The script
/// writes to a file and not to a pipe, so that a program that it leaves running in the background cannot hold
/// up the recorder.
void PassOn(std::ifstream& output, std::streamoff& passed) {
    char bytes[65536];
    output.clear();
    output.seekg(passed);  // On Windows, a stream does not read on after the end of the file.
    while (output.read(bytes, sizeof bytes), output.gcount() > 0) {
        std::cout.write(bytes, output.gcount());
        passed += output.gcount();
    }
    std::cout.flush();
}

platform::ProgramEnd WaitAndPassOn(platform::StartedProgram& script, const std::string& outputFile) {
    std::ifstream output(platform::PathFromUtf8(outputFile), std::ios::binary);
    std::optional<platform::ProgramEnd> end;
    std::streamoff passed = 0;
    while (!end) {
        end = platform::WaitForProgram(script, kBetweenLooks);
        PassOn(output, passed);
    }
    return *end;
}

ScriptRecord Run(const std::string& path, const ScriptSettings& settings,
                 const std::vector<std::string>& arguments) {
    platform::ProgramStart start;
    start.arguments = arguments;
    if (!settings.document.empty()) {
        start.arguments = {{}, settings.document};
    }
    start.arguments.front() = settings.script;
    start.outputFile = ScriptOutputFile(path);
    start.owner = settings.owner;
    ScriptRecord record;
    record.state = ScriptState::kNotStarted;
    platform::StartedProgram script = platform::StartProgram(start);
    record.reason = script.notStarted;
    if (!script.notStarted.empty()) {
        return record;
    }
    const platform::ProgramEnd end = WaitAndPassOn(script, start.outputFile);
    record.state = ScriptState::kEnded;
    record.exitCode = end.exitCode;
    record.signal = end.signal;
    return record;
}

int ExitStatus(const ScriptRecord& record) {
    if (record.state == ScriptState::kNotStarted) {
        return kExitNotStarted;
    }
    return record.signal == 0 ? record.exitCode : kSignalExitBase + record.signal;
}

int Record(const std::vector<std::string>& arguments) {
    const std::string path = arguments.empty() ? std::string() : arguments.front();
    const auto settings = TakeScriptSettings(path);
    if (!settings) {
        std::cerr << "ventrix-script is started by ventrix; run ventrix instead\n";
        return kExitNoSettings;
    }
    platform::UseOutput(settings->owner, settings->output);
    WritePackageState(path, ListPackage(settings->package));
    const MarkedFolders copies =
        MarkedFoldersIn(platform::Utf8FromPath(platform::PathFromUtf8(path).parent_path()));
    CopySources(settings->package, copies);
    const ScriptRecord record = Run(path, *settings, arguments);
    if (settings->last) {
        CopyResult(settings->package, copies);
    }
    WriteScriptRecord(path, record);
    return ExitStatus(record);
}

}  // namespace

int main(int argc, char** argv) {
    const std::vector<std::string> arguments = platform::ProgramArguments(argc, argv);
    platform::SurviveClosedPipes();  // A reader that has ended must not prevent the record.
    platform::EndWithStarter();
    try {
        return Record(arguments);
    } catch (const std::exception& error) {
        std::cerr << "error: " << error.what() << '\n';
        return kExitNotStarted;
    }
}
