// Which files a file of a DTD pulls in. Strings are UTF-8.
#pragma once

#include <string_view>
#include <vector>

#include "desk/documents/references.h"

namespace ventrix::desk {

/// The external entities that the file declares, without those that have a public id, which catalogs locate,
/// and those that are no text. A parameter entity may pull in further files.
std::vector<Reference> ReferencesOfDtd(std::string_view dtd);

}  // namespace ventrix::desk
