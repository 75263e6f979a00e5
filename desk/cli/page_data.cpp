#include "desk/cli/page_data.h"

#include "desk/cli/installation.h"
#include "desk/pages/page_map.h"
#include "desk/pages/viewer.h"

namespace ventrix::desk {
namespace {

CarryingAttributes AttributesOf(const PublishOptions& options) {
    CarryingAttributes names;
    names.tags = options.targetAttr.empty() ? names.tags : options.targetAttr;
    names.tagsHaveXPath = options.xpath && options.xpathAttr.empty();
    names.xpath = options.xpathAttr;
    names.sourcePath = options.sourcePathAttr;
    return names;
}

std::vector<NativePath> XmlSources(const DocumentFiles& files) {
    std::vector<NativePath> sources;
    for (const DocumentFile& file : files.files) {
        if (!file.path.Empty() && file.key == kDocumentKey && !file.opaque) {
            sources.push_back(file.path);
        }
    }
    return sources;
}

}  // namespace

std::vector<Finding> AddPageData(const PublishOptions& options, const Session& session,
                                 const PublishOutcome& outcome, const std::vector<ReportedPage>& pages) {
    std::vector<Finding> findings;
    if ((!options.map && !options.viewer) || outcome.startPage.Empty()) {
        return findings;
    }
    const CarryingAttributes names = AttributesOf(options);
    const NativePath folder = FolderOf(outcome.startPage);
    const ViewerSettings viewer{.data = FindInstallation().folder,
                                .document = session.document,
                                .tags = names.tags,
                                .xpath = names.xpath,
                                .editorRoot = AbsolutePath({options.editorRoot})};
    const bool hasViewer = options.viewer && CopyViewer(folder, viewer, findings);
    SourcePlaces places(XmlSources(session.files), session.document);
    MapText map(session.document, folder);
    for (const ReportedPage& page : pages) {
        const MappedPage mapped = MapPage(page.page, page.source, names, places, findings);
        if (options.map) {
            map.Add(mapped);
        }
        if (hasViewer) {
            AddViewer(mapped, folder, viewer, findings);
        }
    }
    if (options.map && !map.Write()) {
        findings.push_back({NormalPath({folder.utf8 + kMapName}), 0, "map", "cannot be written"});
    }
    return findings;
}

}  // namespace ventrix::desk
