// Files that change as a whole: the new content is written to a new file in the same folder, which is then
// renamed to the target. Paths are in native notation.
#pragma once

#include <sys/types.h>

#include <functional>
#include <string>
#include <string_view>

#include "platform/error_codes.h"
#include "platform/posix/descriptor.h"

namespace ventrix::platform {

/// The file that a write to a path replaces.
struct WriteTarget {
    std::string path;  ///< The path with links resolved, if the file exists.
    bool exists = false;
    dev_t device = 0;  ///< With `inode`, the identity of what exists there.
    ino_t inode = 0;
    off_t size = 0;
    mode_t mode = 0;  ///< Permissions of the existing file.
};

/// Finds the target of a write. kErrorAccessDenied for a folder, a device and a read-only file, whose
/// identity is known all the same.
ErrorCode FindWriteTarget(const std::string& nativePath, WriteTarget& target);

/// Creates a new file in the folder of `path` (native) for writing, and reports its path. Its name does not
/// contain the target's, which may already have the maximum length. On failure the descriptor is not open and
/// errno is set.
Descriptor CreateBeside(const std::string& path, mode_t mode, std::string& created);

/// Writes a new file in the target's folder with `fill`, which gets its descriptor and returns 0 or an errno,
/// and renames it to the target. `mode` is its permissions, reduced by the process's mask if the target did
/// not exist. On failure the target does not change and the new file is removed.
ErrorCode ReplaceWhole(const WriteTarget& target, mode_t mode, const std::function<int(int)>& fill);

/// Writes all bytes. 0 or an errno.
int WriteAll(int descriptor, const char* bytes, std::size_t count);

/// Writes a file from its start, piece by piece. For a large file, disk space is preallocated ahead of the
/// written part, so that the file system allocates it in large extents and not page by page.
class GrowingFile {
  public:
    /// `size` is that of the file so far, 0 for a new one.
    GrowingFile(int descriptor, off_t size) : descriptor_(descriptor), sizeBefore_(size) {}

    /// 0 or an errno.
    int Append(std::string_view piece);

    /// Ends the file after the last piece and releases the preallocated space that was not used. 0 or an
    /// errno.
    int Finish();

  private:
    int descriptor_;
    off_t sizeBefore_;
    off_t written_ = 0;
    off_t preallocated_ = 0;  ///< The end of the space that was requested.
    bool canPreallocate_ = true;
};

}  // namespace ventrix::platform
