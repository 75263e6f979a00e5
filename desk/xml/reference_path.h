// What file a URI reference names, told from the text alone. Folders and files are native paths, all UTF-8.
#pragma once

#include <string>
#include <string_view>

namespace ventrix::desk {

struct ReferenceTarget {
    std::string url = {};     ///< A web address, as written; else empty.
    std::string path = {};    ///< The native path, absolute and without "." or ".."; else empty.
    std::string remark = {};  ///< Why the reference names no file that can be listed; else empty.
};

/// `folder` is absolute and ends in a slash. The fragment is dropped, `%20` and its like are decoded, `file:`
/// URLs and paths with a drive letter are taken as files. A reference of another scheme (`mailto:`) gives
/// nothing at all.
ReferenceTarget TargetOf(std::string_view reference, std::string_view folder);

/// Why a path cannot be told to the module: a control character, a backslash, bytes that are no UTF-8. Empty
/// if it can.
std::string WhyUnnameable(std::string_view nativePath);

/// The path with "." and ".." and doubled slashes resolved in the text, never above the root.
std::string NormalPath(std::string_view absolutePath);

/// The folder of an absolute path, with its closing slash.
std::string FolderOf(std::string_view absolutePath);

/// The `file:` URI of an absolute native path, for parsers that take nothing else.
std::string FileUri(const std::string& absolutePath);

}  // namespace ventrix::desk
