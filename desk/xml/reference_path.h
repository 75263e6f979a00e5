// Which file a URI reference names, decided from the reference alone, without accessing the file system.
// Strings are UTF-8.
#pragma once

#include <string>
#include <string_view>

#include "desk/paths/paths.h"

namespace ventrix::desk {

/// At most one of the three is not empty.
struct ReferenceTarget {
    std::string url = {};     ///< A web address, as written.
    NativePath path = {};     ///< A file, absolute and without "." or "..".
    std::string remark = {};  ///< Why the reference names a file that cannot be listed; one line.
};

/// `folder` is what a relative reference starts from, absolute and with a closing slash. The fragment is
/// dropped, escapes such as `%20` are decoded, and `file:` URLs and paths with a drive letter count as files.
/// A reference with another scheme (`mailto:`) gives an empty target.
ReferenceTarget TargetOf(std::string_view reference, const NativePath& folder);

}  // namespace ventrix::desk
