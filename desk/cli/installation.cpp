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
        return {(library / "Ventrix.so").string(), (library / "ventrix-script").string(), share.string()};
    }
    return {(bin.parent_path() / "src" / "Ventrix.so").string(), (bin / "ventrix-script").string(),
            (bin / "installation").string()};
}

}  // namespace ventrix::desk
