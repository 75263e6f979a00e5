#include "desk/cli/installation.h"

#include <filesystem>

namespace fs = std::filesystem;

namespace ventrix::desk {

Installation FindInstallation() {
    std::error_code error;
    const fs::path bin = fs::read_symlink("/proc/self/exe", error).parent_path();
    const fs::path share = bin.parent_path() / "share" / "ventrix";
    if (fs::is_directory(share, error)) {
        const fs::path library = bin.parent_path() / "lib" / "ventrix";
        return {FromFilesystem(library / "Ventrix.so"), FromFilesystem(library / "ventrix-script"),
                FromFilesystem(share)};
    }
    return {FromFilesystem(bin.parent_path() / "src" / "Ventrix.so"), FromFilesystem(bin / "ventrix-script"),
            FromFilesystem(bin / "installation")};
}

}  // namespace ventrix::desk
