// Checks the values of the options that name attributes, elements and queries, before anything runs. The
// module takes these values as they are and ignores what it cannot use.
#pragma once

#include <string>
#include <vector>

#include "desk/cli/options.h"

namespace ventrix::desk {

/// True if the options leave the transformation of a DITA document to the DITA Open Toolkit.
bool AsksForDitaTransformation(const PublishOptions& options);

/// Splits a list as the module does: every comma separates, so a leading or trailing comma gives an empty
/// item.
std::vector<std::string> SplitList(const std::string& list);

/// Throws Stop, with a message that names the option and its value and says what to do, for a name that is
/// not an XML name, a list with spaces, an incomplete scoped group, a query that is not XPath or that the
/// module would split, and an option without the one that it belongs to.
void CheckPublishOptions(const PublishOptions& options);

}  // namespace ventrix::desk
