// An exclusive lock on a file or folder, which is released at the latest when the process ends, however it
// ends.
#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>

namespace ventrix::platform {

/// Held as long as this object exists. Programs that the process starts do not inherit it.
class FileLock {
  public:
    ~FileLock();
    FileLock(FileLock&& other) noexcept;
    FileLock& operator=(FileLock&& other) noexcept;
    FileLock(const FileLock&) = delete;
    FileLock& operator=(const FileLock&) = delete;

  private:
    friend struct LockAttempt LockFile(const std::filesystem::path& file);
    friend struct LockAttempt LockFolder(const std::filesystem::path& folder);
    explicit FileLock(std::intptr_t handle) : handle_(handle) {}

    std::intptr_t handle_;  ///< Of the system; -1 for none.
};

struct LockAttempt {
    std::optional<FileLock> lock;
    bool busy = false;      ///< It is held elsewhere.
    std::error_code error;  ///< Why it cannot be locked at all; none if it is locked or busy.
};

/// Locks a file without waiting and creates it if it is missing; its folder must exist. The lock applies to
/// the file that has this name now, not to one that its owner deleted in the meantime. A link is an error.
/// The file stays when the lock ends; its owner may delete it before.
LockAttempt LockFile(const std::filesystem::path& file);

/// The same for an existing folder. Some network file systems cannot lock folders, which is an error.
LockAttempt LockFolder(const std::filesystem::path& folder);

}  // namespace ventrix::platform
