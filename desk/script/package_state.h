// The files in the folder of a packaged document at one moment, for comparison with a later one. Paths are
// native.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace ventrix::desk {

struct PackageFile {
    std::string name;  ///< Relative to the folder, with "/".
    std::uintmax_t size = 0;
    std::int64_t modified = 0;  ///< Nanoseconds since 1970.
    std::uint64_t file = 0;     ///< The file's number on its device: a replaced file has a different one.

    bool operator==(const PackageFile&) const = default;
};

/// The regular files below the folder, ordered by name. Links are neither followed nor listed; what cannot be
/// read is left out. Empty if there is no such folder.
std::vector<PackageFile> ListPackage(const std::string& folder);

/// Sets the modification time of a file in the folder back by some seconds, and notes it. Whatever the file
/// system's clock counts in, the time then changes when the file is written again. A file that cannot be
/// dated back stays as it is.
void DateBack(const std::string& folder, PackageFile& file);

}  // namespace ventrix::desk
