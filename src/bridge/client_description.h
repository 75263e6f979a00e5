// Who the client is, read from its module's version block.
#pragma once

#include "bridge/contract/properties.h"

namespace ventrix {

/// Adds a string property for each of the ten client keys that the version block has. False, and nothing
/// added, if the module has no version block.
bool ReadClientDescription(void* module, Q_PropList* description);

}  // namespace ventrix
