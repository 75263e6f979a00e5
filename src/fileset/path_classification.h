// Operations on paths as strings: the kind of file that a path names, its drive or server, the folder that
// contains it. None of them accesses the file system. Paths are UTF-8 in system notation. The backslash is
// the only separator; comparisons are exact, case included, and nothing is normalised.
#pragma once

#include <list>
#include <string>
#include <string_view>

namespace ventrix {

using Path = std::string;          ///< A path. Folders that these operations return end in a backslash.
using FileList = std::list<Path>;  ///< Paths in the order in which they were added; may have duplicates.

/// True if the string ends in the suffix. Every string ends in the empty suffix.
bool EndsWith(std::string_view text, std::string_view suffix);

/// True for a name ending in ".xml", ".dita" or ".ditamap", in lower case.
bool IsXmlFile(std::string_view path);

/// True if the text begins with "http:" or "https:", in lower case.
bool IsHttpUrl(std::string_view text);

/// The drive ("C:\") or server ("\\server\") with its backslash, or the whole path if that backslash is
/// missing. Empty for a path with neither.
std::string PathRoot(std::string_view path);

/// True if the roots of the elements are not all the same. False for an empty list.
bool SpansSeveralRoots(const FileList& list);

/// True if any element has a root other than the given one. False for an empty list.
bool AnyOutsideRoot(const FileList& list, std::string_view root);

/// The path, ending in a backslash; empty gives empty.
Path WithTrailingBackslash(Path path);

/// The folder that contains the last component, with its backslash. A trailing backslash is ignored: "a\b\"
/// gives "a\". Empty if there is no such folder.
Path ParentFolder(std::string_view path);

/// The part after the last backslash. Empty for a path without a backslash, so also for a bare name.
std::string FileNameOf(std::string_view path);

/// Cuts the path at its last ".", even if that belongs to a folder's name, and appends the extension, which
/// includes its dot.
void ReplaceExtension(Path& path, std::string_view newExtension);

/// Replaces the first occurrence, if there is one. An empty `oldText` matches at the start.
void ReplaceFirst(std::string& text, std::string_view oldText, std::string_view newText);

/// The longest folder that is or contains both folders; may be empty.
Path CommonFolder(std::string_view folderA, std::string_view folderB);

/// The longest folder that contains all files of the list; may be empty. It is a prefix of every element's
/// text.
Path CommonBaseFolder(const FileList& list);

}  // namespace ventrix
