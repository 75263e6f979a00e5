// The pipeline's operations on files and folders: tests for existence, creating folders, copying, moving,
// collecting and clearing. Paths are UTF-8 in system notation. No operation keeps a file open, throws, or
// stops a walk because a single file or folder fails.
#pragma once

#include "fileset/path_classification.h"

namespace ventrix {

/// The files and folders of the list that exist and lie in the existing folder, whatever they are called:
/// only the file system can decide whether two names mean the same folder.
FileList FilesIn(FileList files, const Path& folder);

/// True if the file can be opened for reading. A folder is not readable.
bool FileReadable(const Path& path);

/// True if the path exists and is a folder.
bool IsFolder(const Path& path);

/// Creates the folder and all missing parents; a trailing backslash makes no difference. True if the folder
/// exists afterwards. False, without creating anything, on a missing drive and for a relative path whose
/// first component is missing.
bool EnsureFolder(const Path& folder);

/// Deletes the file. A failure is ignored.
void DeleteFileAt(const Path& path);

/// Copies a file, replacing an existing target and creating missing folders above it. The copy is writable
/// even if the source is not. True if the file was copied.
bool CopyFileInto(const Path& source, const Path& target);

/// Deletes the target, copies the source to it as CopyFileInto does, and deletes the source. If the copy
/// fails, the source stays.
void MoveFileInto(const Path& source, const Path& target);

/// All files in and below the folder whose names end in one of the suffixes, depth first, in the order of
/// platform::ListFolder. Every path begins with the folder as given and one more backslash. An empty suffix
/// matches every file; an empty list of suffixes matches none. Links to folders are followed, except to a
/// folder that encloses the link.
FileList CollectFiles(const Path& folder, const FileList& suffixes);

/// Empties the folder but does not remove it; links in it are removed without what they lead to. With
/// `keepFiles`, only subfolders without any file below them are removed. A path that does not end in a
/// backslash is ignored.
void ClearFolder(const Path& folder, bool keepFiles);

/// Appends a copy of every element of the source, in order.
void AppendList(FileList& target, const FileList& source);

}  // namespace ventrix
