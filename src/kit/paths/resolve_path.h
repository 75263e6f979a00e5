// Joining a path to a base and normalising the result, in place. Strings are in the kit's current encoding;
// both "\" and "/" separate components. A null buffer is fatal.
#pragma once

namespace ventrix {

/// Expands the variables of the path, joins it to the base if it is relative, and removes ".", ".." and
/// repeated separators. The buffer has kPathBufferSize bytes; a longer result is cut between two characters.
/// A network file does not change. A relative path with a network file as base becomes a URL, or empty if the
/// library cannot form one. A null base is an empty one.
void Q_ResolvePath(char* path, const char* base);

/// Replaces "$NAME", which extends to the next separator, with the environment variable of that name if there
/// is one, and a leading "~" with the kit's home folder. The buffer has kPathBufferSize bytes; a longer
/// result is cut between two characters.
void Q_ExpandPathVariables(char* path);

/// Sets the folder that replaces a leading "~"; it is copied. With null, or initially, "~" is just removed.
void Q_SetHomeFolder(const char* folder);

}  // namespace ventrix
