// The options of `ventrix`. Paths are native and as typed; an option that was not given is an empty string.
#pragma once

#include <map>
#include <set>
#include <string>
#include <vector>

namespace ventrix::desk {

inline constexpr char kVersion[] = VENTRIX_VERSION;

enum class Command { kPublish, kValidate, kRequest, kInit };

/// Options that all commands share.
struct CommonOptions {
    std::string document;
    std::string config;  ///< The project file: as typed, or the one that was found.
    std::string log;
    std::vector<std::string> unsaved;
    std::vector<std::string> drives;  ///< Each as `X=FOLDER`.
    std::vector<std::string> allowRead;
    std::vector<std::string> resources;  ///< Of a publish: files that belong to the document too.
    std::string toolkit = "builtin";
    std::string catalog;
    std::string color = "auto";   ///< auto, always or never.
    std::string format = "text";  ///< Of a validate: text, json, sarif, junit or codequality.
    bool quiet = false;
    bool verbose = false;
    bool json = false;
};

/// Of a publish. A validation has the filters, and all that its project file sets.
struct PublishOptions {
    std::string output;
    bool ditaOt = false;
    bool force = false;
    bool noTransform = false;
    bool xpath = false;
    bool keepMarkers = false;
    bool dryRun = false;
    bool map = false;
    bool viewer = false;
    std::string editorRoot;
    std::string title, css, logo;  ///< Of the built-in toolkit's pages.
    std::string xslt, preScript, postScript, outFile, transtype;
    std::string report;  ///< The file of the loss report.
    std::vector<std::string> ditaval;
    std::vector<std::string> toolkitParams, params, stringParams;  ///< Each as `NAME=VALUE`.
    std::string xsltEngine;                                        ///< libxslt or saxon.
    std::string targetAttr, xpathAttr, sourcePathAttr, preserveXpathAttr;
    std::vector<std::string> attributes, elements, scopedAttributes, sourcePath, preserveXpath;
};

struct Options {
    Command command = Command::kPublish;
    CommonOptions common;
    PublishOptions publish;
    std::string requestText;
    std::set<std::string> given;  ///< The long names of the options on the command line, without dashes.

    std::set<std::string> emptied;  ///< Those of `given` that take a list and were set to none.

    // For a run of a project file (project_runs.h).
    std::string deliverable;  ///< Its name; empty if it has none.
    std::map<std::string, std::string>
        origins;  ///< By long name: "FILE:LINE" where the file sets the option.
};

/// One option of a command, for what is derived from all of them. The positional arguments and --help are not
/// among them.
struct OptionDescription {
    std::string name;    ///< The long name without dashes.
    std::string letter;  ///< The short name without a dash; empty if it has none.
    std::string type;    ///< Of its value, as the help shows it, such as "FILE"; empty for a flag.
    std::string text;    ///< What it does, one line.
    std::string group;
    bool repeats = false;
    std::set<std::string> excludes;  ///< Options that cannot be combined with it.
};

/// The name of a command on the command line.
const char* NameOf(Command command);

/// What a command does, one line.
std::string DescriptionOf(Command command);

/// The options of a command, in the order of the help.
std::vector<OptionDescription> OptionsOf(Command command);

/// Parses the words of a command line, without the name of the program. Returns false if there is nothing
/// left to do because help or the version was printed. Throws Stop for invalid usage; `options.common.json`
/// is valid even then. Required values may still be missing, because a project file may have them.
bool ReadOptions(const std::vector<std::string>& words, Options& options);

/// Throws Stop if a required value is missing, or if options do not fit together.
void RequireComplete(const Options& options);

}  // namespace ventrix::desk
