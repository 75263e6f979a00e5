// The numbers that a page shows: of figures, tables, footnotes and list items.
#pragma once

#include <libxml/tree.h>

#include <string>

namespace ventrix::desk {

/// Numbers footnotes, and figures and tables that have a title, in the attribute "page-number". A stylesheet
/// would have to count the preceding ones again for each.
void AddPageNumbers(xmlDoc* document);

/// The number of an item in an ordered list, with those of the items around it: "2.b.ii".
std::string ItemNumber(const xmlNode* item);

}  // namespace ventrix::desk
