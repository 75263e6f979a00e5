// What became of the user's scripts. The module starts a script and does not look at how it ends. So it is
// given the recorder in the script's place, a small program of the desk host's own (ventrix-script), which
// starts the script and writes down how that went. Both sides meet in a private folder of the run. For a
// script called NAME it holds
//
//     NAME            the recorder, under the name that the module starts
//     NAME.settings   which script to start, and for whom; the recorder removes it when it has read it
//     NAME.package    what lay in the package before the script started
//     NAME.output     all that the script wrote to standard output and error
//     NAME.record     how it went
//
// Paths are native, and may be any bytes; so the fields of a file end with a zero byte each.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "desk/script/package_state.h"

namespace ventrix::desk {

inline constexpr char kPreScript[] = "pre-script";
inline constexpr char kPostScript[] = "post-script";

struct ScriptSettings {
    std::string script;      ///< The user's, absolute.
    std::string package;     ///< The folder whose state is noted before the script starts.
    std::int64_t owner = 0;  ///< The desk host's process number.
};

enum class ScriptState {
    kNotCalled,   ///< The module did not start the recorder.
    kNotStarted,  ///< The script could not be started.
    kUnknown,     ///< The recorder was started and could not write down the end of the script.
    kEnded,
};

struct ScriptRecord {
    ScriptState state = ScriptState::kNotCalled;
    std::string reason;  ///< Of kNotStarted, naming the script.
    int exitCode = 0;    ///< Of kEnded.
    int signal = 0;      ///< Of kEnded: the signal that ended the script, or 0.
    std::vector<std::string>
        lastLines;  ///< Of its output, at most ten: valid UTF-8 without control characters.
    std::vector<PackageFile> package;  ///< Before the script started.
};

/// True if the script did what it was there for.
bool Succeeded(const ScriptRecord& record);

/// One line that says how the script failed, without its output; empty if it succeeded. `script` is the name
/// to show. A script that was not called has failed too: ask only about a run that got as far as its scripts.
std::string DescribeFailure(const ScriptRecord& record, const std::string& script);

/// Puts the recorder into the folder for a script and gives the path that the module is to start. Throws
/// std::runtime_error with a message if the folder cannot be written.
std::string PrepareScript(const std::string& folder, const std::string& name, const std::string& recorder,
                          const ScriptSettings& settings);

/// Everything that was written down about a script.
ScriptRecord ReadScriptRecord(const std::string& folder, const std::string& name);

/// The recorder's side. `path` is that of the recorder in the private folder. Writing throws
/// std::runtime_error.

/// Reads the settings and removes them, which says that the recorder was started even where nothing can be
/// written. Nothing if there are none.
std::optional<ScriptSettings> TakeScriptSettings(const std::string& path);
std::string ScriptOutputFile(const std::string& path);
void WritePackageState(const std::string& path, const std::vector<PackageFile>& files);
void WriteScriptRecord(const std::string& path, const ScriptRecord& record);

}  // namespace ventrix::desk
