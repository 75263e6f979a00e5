#include "desk/toolkit/page_layout.h"

#include <algorithm>
#include <filesystem>

#include "desk/documents/document_files.h"
#include "desk/xml/reference_path.h"
#include "desk/xml/xml_handles.h"
#include "platform/drives.h"

#include <libxml/uri.h>

namespace ventrix::desk {
namespace {

std::string CommonFolder(const std::string& a, const std::string& b) {
    const auto ends = std::mismatch(a.begin(), a.end(), b.begin(), b.end());
    const std::string common(a.begin(), ends.first);
    return common.substr(0, common.rfind('/') + 1);
}

}  // namespace

PageLayout LayoutOf(const std::string& document, const std::string& outputBase) {
    PageLayout layout{.sourceBase = FolderOf(document), .outputBase = outputBase};
    for (const DocumentFile& file : ListDocumentFiles(document).files) {
        const std::string path = platform::ToNative(file.path);
        if (path.starts_with('/') && std::filesystem::exists(path)) {
            layout.sourceBase = CommonFolder(layout.sourceBase, path);
        }
    }
    return layout;
}

std::string OutputOf(const PageLayout& layout, const std::string& source) {
    return source.starts_with(layout.sourceBase) ? layout.outputBase + source.substr(layout.sourceBase.size())
                                                 : std::string();
}

std::string PageOf(const PageLayout& layout, const std::string& topic) {
    const std::string place = OutputOf(layout, topic);
    return place.empty() ? place : std::filesystem::path(place).replace_extension(".html").string();
}

std::string RelativeReference(const std::string& fromPage, const std::string& toFile) {
    const std::string relative = std::filesystem::path(toFile)
                                     .lexically_relative(std::filesystem::path(fromPage).parent_path())
                                     .string();
    const XmlText escaped(xmlURIEscapeStr(Xml(relative.c_str()), Xml("/")));
    return std::string(View(escaped.get()));
}

}  // namespace ventrix::desk
