#include "desk/cli/installation.h"

#include <filesystem>
#include <string>

#include "platform/native_roots.h"
#include "platform/program.h"

namespace fs = std::filesystem;

namespace ventrix::desk {

Installation FindInstallation() {
    std::error_code error;
    const fs::path bin = ToFilesystem({platform::ProgramFile()}).parent_path();
    const std::string module = "Ventrix" + std::string(platform::LibrarySuffix());
    const std::string recorder = "ventrix-script" + std::string(platform::ProgramSuffix());
    const fs::path share = bin.parent_path() / "share" / "ventrix";
    if (fs::is_directory(share, error)) {
        const fs::path library = bin.parent_path() / "lib" / "ventrix";
        return {FromFilesystem(library / module), FromFilesystem(library / recorder), FromFilesystem(share)};
    }
    if (fs::exists(bin / "data" / "Ventrix.xsl", error)) {
        return {FromFilesystem(bin / module), FromFilesystem(bin / recorder), FromFilesystem(bin / "data")};
    }
    return {FromFilesystem(bin.parent_path() / "src" / module), FromFilesystem(bin / recorder),
            FromFilesystem(bin / "installation")};
}

}  // namespace ventrix::desk
