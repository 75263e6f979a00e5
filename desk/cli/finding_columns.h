// The columns of findings in source files. The parser keeps only the line of an element, and that of the end
// of its start tag; the subject of a finding says what to look for there.
#pragma once

#include <vector>

#include "desk/checks/finding.h"

namespace ventrix::desk {

/// Adds the columns that the files show, of findings with a line and without a column. A finding moves to the
/// line of its attribute, if the start tag began above. What is not found, or could be one of several places,
/// stays without a column.
void AddColumns(std::vector<Finding>& findings);

}  // namespace ventrix::desk
