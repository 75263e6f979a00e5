// What one run added to the report log, read back for the person: the log's wording is the module's, and
// fixed.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "desk/paths/paths.h"

namespace ventrix::desk {

struct FailedFile {
    NativePath file;
    std::string reason;  ///< The parser's, one line.
};

struct RunLog {
    std::vector<NativePath> valid, broken, unsaved;  ///< From the sections of a Validate.
    bool documentsOnSeveralDrives = false;           ///< An error: such a document cannot be packaged.
    bool graphicsOnOtherDrive = false;               ///< A warning: those graphics are left behind.
    std::vector<FailedFile> failed;                  ///< Files that a pass could not load.
    std::size_t encoded = 0, decoded = 0;            ///< Files that a pass took up.
};

/// Reads the text that a run added.
RunLog ReadRunLog(const std::string& text);

/// The file's size in bytes; 0 for a missing file.
std::uint64_t LogSize(const NativePath& log);

/// The bytes from an offset to the end; empty for a missing file.
std::string LogFrom(const NativePath& log, std::uint64_t offset);

}  // namespace ventrix::desk
