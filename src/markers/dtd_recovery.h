// Repairs a document with entities that only its DTD declares, where the DOCTYPE does not lead to that DTD:
// the host names the DTD, a stylesheet of the host's installation rewrites the document, and the path of the
// DTD is written into the result. The document on disk changes. Paths are UTF-8 in system notation.
#pragma once

#include <string>
#include <string_view>

#include "fileset/path_classification.h"

namespace ventrix {

/// False if the host knows no DTD for the file; the file is then untouched. True otherwise, and the file has
/// been rewritten if the stylesheet gave any output.
bool RepairDoctype(const Path& path);

/// The DTD that the host's dispatcher names for the file; empty if it names none.
std::string LookupDtdPath(const Path& path);

/// Replaces the first occurrence in the file and writes the whole file, even if there was none. A file that
/// cannot be read stays unchanged.
void ReplaceInFile(const Path& path, std::string_view oldText, std::string_view newText);

}  // namespace ventrix
