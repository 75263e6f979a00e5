// Parses what one run appended to the report log. The module writes the log in German, and the wording is
// fixed; the command line reports its contents in English.
#pragma once

#include <cstdint>
#include <set>
#include <string>
#include <vector>

#include "desk/paths/paths.h"

namespace ventrix::desk {

struct FailedFile {
    NativePath file;
    std::string reason;  ///< The parser's message, one line.
};

struct RunLog {
    std::vector<NativePath> valid, broken, unsaved;  ///< From a Validate.
    bool documentsOnSeveralDrives = false;           ///< An error: the document cannot be packaged.
    bool graphicsOnOtherDrive = false;               ///< A warning: these graphics are not packaged.
    std::vector<FailedFile> failed;                  ///< Files that a pass could not load.
    std::vector<NativePath> encodedFiles;            ///< Files that the encoding pass has started.
    std::size_t encoded = 0, decoded = 0;            ///< Files that a pass has started.
};

/// Parses the text that a run appended.
RunLog ReadRunLog(const std::string& text);

/// The files that a pass could not load.
std::set<NativePath> FailedFiles(const RunLog& log);

/// Returns the file's size in bytes; 0 if it is missing.
std::uint64_t LogSize(const NativePath& log);

/// Returns the bytes from an offset to the end, or those before the first that cannot be read; empty if the
/// file is missing.
std::string LogFrom(const NativePath& log, std::uint64_t offset);

}  // namespace ventrix::desk
