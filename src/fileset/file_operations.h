// What the pipeline does to files: existence, folder chains, copy and move, recursive collection and
// clearing. Paths are UTF-8 in the platform's notation. Nothing is kept beyond a call, nothing throws, and a
// single failure inside a walk does not stop the walk.
#pragma once

#include "fileset/path_classification.h"

namespace ventrix {

/// True if the file can be opened for reading. A folder is not readable.
bool FileReadable(const Path& path);

/// True if the path exists and is a folder.
bool IsFolder(const Path& path);

/// Creates the folder and all missing parents; a trailing backslash makes no difference. True if the folder
/// exists afterwards. False, without creating anything, where the climb ends at a parent that can't be: a
/// missing drive, or a relative path whose first component is missing.
bool EnsureFolder(const Path& folder);

/// Deletes the file. A failure is ignored.
void DeleteFileAt(const Path& path);

/// Copies over an existing target, creating the folders above it; the copy is writable also if the source is
/// not. True if the file was copied; false leaves the source as it was.
bool CopyFileInto(const Path& source, const Path& target);

/// Copies over an existing target and deletes the source. A source whose copy failed stays where it is.
void MoveFileInto(const Path& source, const Path& target);

/// All files below the folder whose name ends in one of the suffixes, depth first in the order of the
/// enumeration. The paths begin with the folder as it was given plus one backslash. An empty suffix matches
/// every file.
FileList CollectFiles(const Path& folder, const FileList& suffixes);

/// Empties the folder, which must end in a backslash, but does not remove it. With `keepFiles` only folder
/// trees without any file go. An empty text does nothing.
void ClearFolder(const Path& folder, bool keepFiles);

/// Appends a copy of every source element, in order.
void AppendList(FileList& target, const FileList& source);

}  // namespace ventrix
