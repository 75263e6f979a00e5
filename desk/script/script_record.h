// Records how the user's scripts end. The module starts a script and ignores its outcome. Therefore the desk
// host gives it the recorder in the script's place: a small program (ventrix-script) that starts the script
// and records the outcome. The two share a private folder of the run. For a script called NAME it contains
//
//     NAME            the recorder, under the name that the module starts
//     NAME.settings   which script to start, and for whom; the recorder removes it when it has read it
//     NAME.package    the files in the package before the script started
//     NAME.output     all that the script wrote to standard output and error
//     NAME.record     the outcome
//     sources, result copies of files with marker text (marked_copies.h)
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
    std::string script;         ///< The user's, absolute.
    std::string package;        ///< The folder whose state is noted before the script starts.
    std::int64_t owner = 0;     ///< The desk host's process number.
    bool last = false;          ///< No transformation and no other script follows.
    std::int64_t output = 0;    ///< Of the desk host, for the script (platform/standard_streams.h).
    std::string document = {};  ///< The packaged document, if its path contains a double quote, which the
                                ///< module's command line cannot express; otherwise empty.
};

enum class ScriptState {
    kNotCalled,   ///< The module did not start the recorder.
    kNotStarted,  ///< The script could not be started.
    kUnknown,     ///< The recorder was started, but could not record the outcome.
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

/// True if the script ended with exit status 0.
bool Succeeded(const ScriptRecord& record);

/// One line that says how the script failed, without its output; empty if it succeeded. `script` is the name
/// to show. A script that was not called counts as failed, so this is meaningful only for a run that reached
/// its scripts.
std::string DescribeFailure(const ScriptRecord& record, const std::string& script);

/// Puts the recorder into the folder for a script and gives the path that the module is to start. Throws
/// std::runtime_error with a message if the folder cannot be written.
std::string PrepareScript(const std::string& folder, const std::string& name, const std::string& recorder,
                          const ScriptSettings& settings);

/// Everything that was recorded about a script.
ScriptRecord ReadScriptRecord(const std::string& folder, const std::string& name);

/// The recorder's side. `path` is that of the recorder in the private folder. Writing throws
/// std::runtime_error.

/// Reads the settings and removes them, which shows that the recorder was started, even if nothing can be
/// written. Nothing if there are none.
std::optional<ScriptSettings> TakeScriptSettings(const std::string& path);
std::string ScriptOutputFile(const std::string& path);
void WritePackageState(const std::string& path, const std::vector<PackageFile>& files);
void WriteScriptRecord(const std::string& path, const ScriptRecord& record);

}  // namespace ventrix::desk
