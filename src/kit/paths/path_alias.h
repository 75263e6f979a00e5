// The table of path aliases, which sends an opening of one file to another. Process-wide; texts compared
// exactly.
#pragma once

namespace ventrix {

/// The alias of the path, or the path itself. The alias lasts until the table changes.
const char* Q_PathAlias(const char* path);

/// Enters an alias for the path; a null alias takes it out. A null path is passed over.
void Q_SetPathAlias(const char* path, const char* alias);

}  // namespace ventrix
