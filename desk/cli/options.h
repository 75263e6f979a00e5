// The options of `ventrix`. Paths are native and as typed; an option that was not given is an empty string.
#pragma once

#include <string>
#include <vector>

namespace ventrix::desk {

inline constexpr char kVersion[] = "1.0.0.1";

enum class Command { kPublish, kValidate, kRequest };

/// Options that all commands share.
struct CommonOptions {
    std::string document;
    std::string log;
    std::vector<std::string> unsaved;
    std::vector<std::string> drives;  ///< Each as `X=FOLDER`.
    std::vector<std::string> allowRead;
    std::vector<std::string> resources;  ///< Of a publish: files that belong to the document too.
    std::string toolkit = "builtin";
    std::string catalog;
    std::string color = "auto";  ///< auto, always or never.
    bool quiet = false;
    bool verbose = false;
    bool json = false;
};

struct PublishOptions {
    std::string output;
    bool ditaOt = false;
    bool force = false;
    bool noTransform = false;
    bool xpath = false;
    bool keepMarkers = false;
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
};

/// Parses the command line. Returns false if there is nothing left to do because help or the version was
/// printed. Throws Stop for invalid usage; `options.common.json` is valid even then.
bool ReadOptions(int argc, char** argv, Options& options);

}  // namespace ventrix::desk
