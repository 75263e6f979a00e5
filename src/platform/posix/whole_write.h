// Files that change as a whole: the new content goes to a file beside the target, which then takes the
// target's name.
#pragma once

#include <sys/types.h>

#include <functional>
#include <string>
#include <string_view>

#include "platform/error_codes.h"
#include "platform/posix/descriptor.h"

namespace ventrix::platform {

/// Where writing to a native path ends up.
struct WriteTarget {
    std::string path;     ///< The path, with a link at its end followed.
    bool exists = false;  ///< A file has the name already.
    mode_t mode = 0;      ///< Permissions of that file.
};

/// errorAccessDenied for a folder, a device or a read-only file; the errors of a missing folder.
ErrorCode FindWriteTarget(const std::string& nativePath, WriteTarget& target);

/// Creates a new file for writing beside `path` (native) and reports its path. Its name holds nothing of the
/// target's, which may be as long as a name gets. On failure the descriptor is not open and errno is set.
Descriptor CreateBeside(const std::string& path, mode_t mode, std::string& created);

/// Fills a new file beside the target by `fill` (an open descriptor; 0 or an errno) and gives it the target's
/// name. `mode` are its permissions; for a file that did not exist the process's mask takes from them. On
/// failure the target is as it was and nothing is left beside it.
ErrorCode ReplaceWhole(const WriteTarget& target, mode_t mode, const std::function<int(int)>& fill);

/// Writes all bytes. 0 or an errno.
int WriteAll(int descriptor, const char* bytes, std::size_t count);

/// Writes a new file from its beginning, piece by piece. A large one has room set aside ahead of what is
/// written: the file system then finds it in one step and not page by page.
class GrowingFile {
  public:
    explicit GrowingFile(int descriptor) : descriptor_(descriptor) {}

    /// 0 or an errno.
    int Append(std::string_view piece);

    /// Gives back the room that was not needed. 0 or an errno.
    int Finish();

  private:
    int descriptor_;
    off_t written_ = 0;
    off_t setAside_ = 0;  ///< Up to where it was tried.
    bool canSetAside_ = true;
};

}  // namespace ventrix::platform
