#include "platform/posix/held_files.h"

#include <sys/stat.h>

#include <algorithm>
#include <mutex>
#include <vector>

namespace ventrix::platform {
namespace {

std::mutex mutex;
std::vector<int> descriptors;  // Guarded by the mutex.

}  // namespace

void HoldFile(int descriptor) {
    const std::lock_guard lock(mutex);
    descriptors.push_back(descriptor);
}

void ReleaseFile(int descriptor) {
    const std::lock_guard lock(mutex);
    std::erase(descriptors, descriptor);
}

bool IsHeld(const struct stat& file) {
    const std::lock_guard lock(mutex);
    return std::ranges::any_of(descriptors, [&file](int descriptor) {
        struct stat held = {};
        return ::fstat(descriptor, &held) == 0 && held.st_dev == file.st_dev && held.st_ino == file.st_ino;
    });
}

}  // namespace ventrix::platform
