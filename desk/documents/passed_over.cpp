#include "desk/documents/passed_over.h"

#include <algorithm>
#include <array>
#include <filesystem>
#include <string>
#include <string_view>

#include "desk/xml/lenient_load.h"
#include "desk/xml/xml_handles.h"

namespace ventrix::desk {
namespace {

constexpr std::array<std::string_view, 3> kEncoded = {".xml", ".dita", ".ditamap"};
constexpr std::array<std::string_view, 4> kDtd = {".dtd", ".mod", ".ent", ".entities"};

template <std::size_t Count>
bool EndsInOneOf(const NativePath& path, const std::array<std::string_view, Count>& endings) {
    return std::ranges::any_of(endings, [&](std::string_view ending) { return path.utf8.ends_with(ending); });
}

/// The local name of the root element; empty if the file has none.
std::string RootName(const NativePath& path) {
    const LenientDocument loaded = LoadLeniently(path);
    return loaded.document == nullptr ? std::string()
                                      : std::string(View(xmlDocGetRootElement(loaded.document.get())->name));
}

}  // namespace

std::vector<PassedOverFile> PassedOverFiles(const DocumentFiles& files) {
    std::vector<PassedOverFile> passedOver;
    for (const DocumentFile& file : files.files) {
        std::error_code error;
        if (file.key == kGraphicKey || EndsInOneOf(file.path, kEncoded) || EndsInOneOf(file.path, kDtd) ||
            !std::filesystem::is_regular_file(ToFilesystem(file.path), error)) {
            continue;
        }
        const std::string root = file.opaque ? std::string() : RootName(file.path);
        passedOver.push_back({file.path, !root.empty() && root != "html"});
    }
    return passedOver;
}

}  // namespace ventrix::desk
