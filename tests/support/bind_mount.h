// A bind mount for as long as the object exists, in a mount namespace of the test's own.
#pragma once

#include <sched.h>
#include <sys/mount.h>

#include <string>

namespace ventrix::test {

class BindMount {
  public:
    BindMount(const std::string& source, const std::string& target) : target_(target) {
        isMounted_ = EnterOwnNamespace() &&
                     ::mount(source.c_str(), target.c_str(), nullptr, MS_BIND, nullptr) == 0;
    }
    ~BindMount() {
        if (isMounted_) {
            ::umount2(target_.c_str(), MNT_DETACH);
        }
    }
    BindMount(const BindMount&) = delete;
    BindMount& operator=(const BindMount&) = delete;

    /// False where the test may not mount.
    bool IsMounted() const { return isMounted_; }

  private:
    static bool EnterOwnNamespace() {
        static const bool entered = ::unshare(CLONE_NEWNS) == 0 &&
                                    ::mount(nullptr, "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0;
        return entered;
    }

    std::string target_;
    bool isMounted_ = false;
};

}  // namespace ventrix::test
