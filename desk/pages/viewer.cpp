#include "desk/pages/viewer.h"

#include "desk/xml/xml_handles.h"
#include "platform/files.h"

namespace ventrix::desk {
namespace {

std::string DataAttribute(const char* name, const std::string& value) {
    return value.empty() ? std::string() : std::string(" data-") + name + "=\"" + EscapedXml(value) + '"';
}

/// A relative reference from a page to a file in the folder.
std::string ReferenceTo(const char* name, const NativePath& folder, const NativePath& page) {
    const auto up = ToFilesystem(folder).lexically_relative(ToFilesystem(page).parent_path());
    return PercentEncoded(FromFilesystem((up / name).lexically_normal()).utf8);
}

std::string HeadElements(const NativePath& page, const NativePath& folder, const ViewerSettings& settings) {
    return "<link rel=\"stylesheet\" href=\"" + ReferenceTo(kViewerFiles[1], folder, page) +
           "\" /><script src=\"" + ReferenceTo(kViewerFiles[0], folder, page) + "\" defer=\"defer\"" +
           DataAttribute("tags-attribute", settings.tags) + DataAttribute("xpath-attribute", settings.xpath) +
           DataAttribute("editor-root", settings.editorRoot.utf8) + "></script>";
}

bool InsertBefore(std::string& page, const char* endTag, const std::string& text) {
    const std::size_t at = page.rfind(endTag);
    if (at == std::string::npos) {
        return false;
    }
    page.insert(at, text);
    return true;
}

Finding NotAdded(const NativePath& page, const std::string& reason) {
    return {page, 0, "viewer", reason + "; the viewer was not added"};
}

}  // namespace

bool CopyViewer(const NativePath& folder, const ViewerSettings& settings, std::vector<Finding>& findings) {
    for (const char* name : kViewerFiles) {
        std::string content;
        const NativePath target = NormalPath({folder.utf8 + '/' + name});
        if (platform::ReadWholeFile(settings.data.utf8 + '/' + name, content) != platform::kErrorNone ||
            platform::WriteWholeFile(target.utf8, content) != platform::kErrorNone) {
            findings.push_back(NotAdded(target, "cannot be written"));
            return false;
        }
    }
    return true;
}

void AddViewer(const MappedPage& mapped, const NativePath& folder, const ViewerSettings& settings,
               std::vector<Finding>& findings) {
    if (!mapped.problem.empty()) {
        return;
    }
    std::string page;
    if (platform::ReadWholeFile(mapped.page.utf8, page) != platform::kErrorNone) {
        findings.push_back(NotAdded(mapped.page, "cannot be read"));
        return;
    }
    const std::string places = "<script type=\"application/json\" id=\"ventrix-places\">" +
                               PlacesAsJson(mapped, settings.document) + "</script>";
    if (!InsertBefore(page, "</body>", places) ||
        !InsertBefore(page, "</head>", HeadElements(mapped.page, folder, settings))) {
        findings.push_back(NotAdded(mapped.page, "has no head or no body"));
    } else if (platform::WriteWholeFile(mapped.page.utf8, page) != platform::kErrorNone) {
        findings.push_back(NotAdded(mapped.page, "cannot be written"));
    }
}

}  // namespace ventrix::desk
