// Repair of a document whose entities only its DTD declares, where the DOCTYPE does not lead to that DTD: the
// host names the DTD, a stylesheet of the host's installation rewrites the document, and the DTD's path is
// entered. The document on disk changes. Paths are UTF-8 in the platform's notation.
#pragma once

#include <string>
#include <string_view>

#include "fileset/path_classification.h"

namespace ventrix {

/// False if the host knows no DTD for the file, which is then untouched. True otherwise; the file has been
/// rewritten if the stylesheet run gave something to replace it with.
bool RepairDoctype(const Path& path);

/// The DTD that the host's dispatcher names for the file; empty if it names none.
std::string LookupDtdPath(const Path& path);

/// Replaces the first occurrence in the file and writes it whole, also where nothing occurred. A file that
/// cannot be read stays as it is.
void ReplaceInFile(const Path& path, std::string_view oldText, std::string_view newText);

}  // namespace ventrix
