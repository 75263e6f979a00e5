// Questions that the text of a path answers: what kind of file it names, on which drive or server it lies,
// which folder holds it. Nothing here touches the file system. All texts are UTF-8 in the platform's
// notation; the backslash is the only separator, every comparison is by exact bytes, and nothing is
// normalised.
#pragma once

#include <list>
#include <string>
#include <string_view>

namespace ventrix {

using Path = std::string;          ///< One path. A folder that an operation here returns ends in a backslash.
using FileList = std::list<Path>;  ///< Paths in the order in which they were added; duplicates are allowed.

/// True if the text's tail is the suffix. An empty suffix matches every text.
bool EndsWith(std::string_view text, std::string_view suffix);

/// True for a name ending in ".xml", ".dita" or ".ditamap", in lower case.
bool IsXmlFile(std::string_view path);

/// True if the text begins with "http:" or "https:", in lower case.
bool IsHttpUrl(std::string_view text);

/// The drive ("C:\") or server ("\\server\") with its backslash; the whole path where that backslash is
/// missing, and the empty text for every path that has neither.
std::string PathRoot(std::string_view path);

/// True if any element lies on another root than the first one. False for lists of no or one element.
bool SpansSeveralRoots(const FileList& list);

/// True if the root of any element differs from the given one. False for an empty list.
bool AnyOutsideRoot(const FileList& list, std::string_view root);

/// The path with a backslash at its end; the empty text stays empty.
Path WithTrailingBackslash(Path path);

/// The folder that holds the last component, with its backslash. A trailing backslash names a folder and is
/// looked behind: "a\b\" gives "a\". Empty where no folder is left.
Path ParentFolder(std::string_view path);

/// What stands behind the last backslash. Empty for a path that has none, so also for a bare name.
std::string FileNameOf(std::string_view path);

/// Cuts the path at its last "." - also one in a folder's name - and appends the extension, which brings its
/// own dot.
void ReplaceExtension(Path& path, std::string_view newExtension);

/// Replaces the first occurrence, if there is one. An empty `oldText` matches at the front.
void ReplaceFirst(std::string& text, std::string_view oldText, std::string_view newText);

/// The longest folder that both folders lie in or are; may be empty.
Path CommonFolder(std::string_view folderA, std::string_view folderB);

/// The longest folder common to all files of the list; may be empty. It is a plain prefix of every element.
Path CommonBaseFolder(const FileList& list);

}  // namespace ventrix
