// The script under which the kit opens a document unless a client changes rows of it.
#pragma once

#include "bridge/contract/properties.h"

namespace ventrix {

/// A new list of 54 rows, the caller's to free with Q_ApiFreePropList. Empty when memory runs out.
Q_PropList Q_ApiDefaultOpenScript();

}  // namespace ventrix
