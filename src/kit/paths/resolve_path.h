// Joining a path to a base and normalising the outcome, in place. Both "\" and "/" separate components. A
// null buffer is fatal.
#pragma once

namespace ventrix {

/// Joins the path to the base if it is relative, expands its variables and takes out ".", ".." and doubled
/// separators. The buffer has kPathBufferSize bytes. A network file stays as it is. An outcome that could
/// not be formed is empty.
void Q_ResolvePath(char* path, const char* base);

/// Replaces "$NAME" components by the environment's value and a leading "~" by the kit's home folder. The
/// buffer has kPathBufferSize bytes, and longer outcomes are cut between two characters.
void Q_ExpandPathVariables(char* path);

/// The folder for a leading "~", copied. Null or empty, as at load: "~" stands for nothing.
void Q_SetHomeFolder(const char* folder);

}  // namespace ventrix
