// The filter that an installed toolkit gets: all DITAVAL files of a run as one file, with a name that no
// toolkit misreads. Toolkits split the name at ":", expand a "$" in it, or drop a filter that they do not
// find, silently.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "desk/paths/paths.h"

namespace ventrix::desk {

/// Writes the rules of the DITAVAL files, in their order, to a file in the folder, and copies the images of
/// flags beside it. Returns the file; empty, with the reason in one line, on failure.
NativePath WriteToolkitFilter(const std::vector<NativePath>& filters, const NativePath& folder,
                              std::string& reason);

/// Whether the line of a toolkit's log shows that it has read the file. For that, the file contains a rule
/// twice, which every toolkit reports; no document has the attribute of this rule.
bool ShowsFilterWasRead(std::string_view line);

}  // namespace ventrix::desk
