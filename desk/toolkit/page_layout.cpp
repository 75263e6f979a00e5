#include "desk/toolkit/page_layout.h"

#include <filesystem>

#include "desk/documents/document_files.h"

namespace ventrix::desk {

PageLayout LayoutOf(const NativePath& document, const NativePath& outputBase) {
    PageLayout layout{.sourceBase = FolderOf(document), .outputBase = outputBase};
    std::error_code error;
    for (const DocumentFile& file : ListDocumentFiles(document).files) {
        if (!file.path.Empty() && std::filesystem::exists(ToFilesystem(file.path), error)) {
            layout.sourceBase = CommonFolder(layout.sourceBase, file.path);
        }
    }
    return layout;
}

NativePath OutputOf(const PageLayout& layout, const NativePath& source) {
    const std::string& base = layout.sourceBase.utf8;
    return source.utf8.starts_with(base)
               ? NativePath{layout.outputBase.utf8 + source.utf8.substr(base.size())}
               : NativePath{};
}

NativePath PageOf(const PageLayout& layout, const NativePath& topic) {
    const NativePath copy = OutputOf(layout, topic);
    return copy.Empty() ? copy : FromFilesystem(ToFilesystem(copy).replace_extension(".html"));
}

std::string RelativeReference(const NativePath& fromPage, const NativePath& toFile) {
    const std::filesystem::path folder = ToFilesystem(fromPage).parent_path();
    return PercentEncoded(FromFilesystem(ToFilesystem(toFile).lexically_relative(folder)).utf8);
}

}  // namespace ventrix::desk
