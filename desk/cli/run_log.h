// What one run added to the report log, read back for the person: the log's wording is the module's, and
// fixed.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace ventrix::desk {

struct FailedFile {
    std::string file;    ///< Native path.
    std::string reason;  ///< The parser's, one line.
};

struct RunLog {
    std::vector<std::string> valid, broken, unsaved;  ///< Native paths, from the sections of a Validate.
    bool documentsOnSeveralDrives = false;            ///< An error: such a document cannot be packaged.
    bool graphicsOnOtherDrive = false;                ///< A warning: those graphics are left behind.
    std::vector<FailedFile> failed;                   ///< Files that a pass could not load.
    std::size_t encoded = 0, decoded = 0;             ///< Files that a pass took up.
};

/// Reads the text that a run added.
RunLog ReadRunLog(const std::string& text);

/// The file's size in bytes; 0 for a missing file.
std::uint64_t LogSize(const std::string& nativePath);

/// The bytes from an offset to the end; empty for a missing file.
std::string LogFrom(const std::string& nativePath, std::uint64_t offset);

}  // namespace ventrix::desk
