// Numbers for the figures, tables and footnotes of a page. A stylesheet would count all that stands before
// each one.
#pragma once

#include <libxml/tree.h>

namespace ventrix::desk {

/// Gives each figure and table that has a title, and each footnote, its number from 1 in the attribute
/// "page-number".
void AddPageNumbers(xmlDoc* document);

}  // namespace ventrix::desk
