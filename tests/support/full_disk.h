// Limits the size of files that this process writes, as a full disk would, while the object exists. Windows
// has no such limit; tests that need it are left out there (tests/windows_left_out.txt).
#pragma once

#ifndef _WIN32
#include <sys/resource.h>
#endif

#include <csignal>
#include <cstdint>

namespace ventrix::test {

class FullDisk {
#ifdef _WIN32
  public:
    explicit FullDisk(std::uint64_t) {}
#else
  public:
    explicit FullDisk(std::uint64_t bytes) : formerHandler_(std::signal(SIGXFSZ, SIG_IGN)) {
        ::getrlimit(RLIMIT_FSIZE, &before_);
        const rlimit small = {bytes, before_.rlim_max};
        ::setrlimit(RLIMIT_FSIZE, &small);
    }
    ~FullDisk() {
        ::setrlimit(RLIMIT_FSIZE, &before_);
        std::signal(SIGXFSZ, formerHandler_);
    }
    FullDisk(const FullDisk&) = delete;
    FullDisk& operator=(const FullDisk&) = delete;

  private:
    void (*formerHandler_)(int);
    rlimit before_ = {};
#endif
};

}  // namespace ventrix::test
