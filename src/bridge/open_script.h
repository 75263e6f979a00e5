// The script under which the kit opens a document. A client may change rows of it.
#pragma once

#include "bridge/contract/properties.h"

namespace ventrix {

/// A new list of 54 rows, to be freed with Q_ApiFreePropList. Empty if memory runs out.
Q_PropList Q_ApiDefaultOpenScript();

}  // namespace ventrix
