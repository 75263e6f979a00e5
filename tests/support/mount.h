// A mount for as long as the object exists, in a mount namespace of the test's own.
#pragma once

#include <sched.h>
#include <sys/mount.h>

#include <string>

namespace ventrix::test {

class Mount {
  public:
    /// Shows a folder at another place.
    static Mount Bind(const std::string& source, const std::string& target) {
        return Mount(source, target, nullptr, MS_BIND, nullptr);
    }
    /// A separate file system of this size in bytes.
    static Mount Disk(const std::string& target, int bytes) {
        return Mount("none", target, "tmpfs", 0, ("size=" + std::to_string(bytes)).c_str());
    }
    ~Mount() {
        if (isMounted_) {
            ::umount2(target_.c_str(), MNT_DETACH);
        }
    }
    Mount(const Mount&) = delete;
    Mount& operator=(const Mount&) = delete;

    /// False where the test may not mount.
    bool IsMounted() const { return isMounted_; }

  private:
    Mount(const std::string& source, const std::string& target, const char* type, unsigned long flags,
          const char* options)
        : target_(target),
          isMounted_(EnterOwnNamespace() &&
                     ::mount(source.c_str(), target.c_str(), type, flags, options) == 0) {}

    static bool EnterOwnNamespace() {
        static const bool entered =
            ::unshare(CLONE_NEWNS) == 0 && ::mount(nullptr, "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0;
        return entered;
    }

    std::string target_;
    bool isMounted_;
};

}  // namespace ventrix::test
