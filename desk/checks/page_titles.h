// The titles of published pages. A browser shows the title in the head of a page as plain text, so that the
// tags of elements in it would be read as words. Strings are UTF-8.
#pragma once

#include <string>
#include <vector>

#include "desk/checks/finding.h"
#include "desk/paths/paths.h"

namespace ventrix::desk {

/// Takes the tags of these elements, and of all that is in them, out of the title in the head of a page.
/// Their text stays, and so do other elements, which the transformation has put there. Returns whether there
/// were any.
bool MakeTitlePlain(std::string& page, const std::vector<std::string>& elements);

/// Does so in published pages, which are decoded, whatever wrote them. This does not depend on
/// --keep-markers, which leaves marker text as it is: a decoded title has none. Links are not followed. A
/// page that cannot be written is a finding.
std::vector<Finding> MakeTitlesPlain(const std::vector<NativePath>& pages,
                                     const std::vector<std::string>& elements);

}  // namespace ventrix::desk
