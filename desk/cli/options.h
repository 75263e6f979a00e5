// What a command line of `ventrix` asks for. Paths are native and as typed; an empty text stands for an
// option that was not given.
#pragma once

#include <string>
#include <vector>

namespace ventrix::desk {

enum class Verb { kPublish, kValidate, kRequest };

/// Options that all verbs share.
struct CommonOptions {
    std::string document;
    std::string log;
    std::vector<std::string> unsaved;
    std::vector<std::string> drives;  ///< As `X=FOLDER`.
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
    bool xpath = false;
    std::string xslt, preScript, postScript, ditaval, outFile;
    std::string targetAttr, xpathAttr, sourcePathAttr, preserveXpathAttr;
    std::vector<std::string> attributes, elements, scopedAttributes, sourcePath, preserveXpath;
};

struct Options {
    Verb verb = Verb::kPublish;
    CommonOptions common;
    PublishOptions publish;
    std::string requestText;
};

/// Reads the command line. Returns true if there is something to do; false if it is answered already (help,
/// version). Throws Stop for a mistake; `options.common.json` is set then too.
bool ReadOptions(int argc, char** argv, Options& options);

}  // namespace ventrix::desk
