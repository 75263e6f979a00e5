// A pipe with a name in a folder, which only POSIX has.
#pragma once

#ifndef _WIN32
#include <sys/stat.h>
#endif

#include <string>

namespace ventrix::test {

/// False where the system has none.
inline bool MakePipe(const std::string& path) {
#ifdef _WIN32
    return false;
#else
    return ::mkfifo(path.c_str(), 0600) == 0;
#endif
}

}  // namespace ventrix::test
