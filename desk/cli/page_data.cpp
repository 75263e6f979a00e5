#include "desk/cli/page_data.h"

#include <set>

#include "desk/cli/installation.h"
#include "desk/pages/page_map.h"
#include "desk/pages/viewer.h"
#include "desk/toolkit/dita_map.h"

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

/// Without a filter, so that a key that is defined several times may stand for another target.
KeyTargets KeysOf(const Session& session) {
    KeyTargets targets;
    if (!session.files.dita) {
        return targets;
    }
    DitaRun run;
    run.document = session.document;
    run.log = [](const std::string&) {};
    const DitaSources sources;
    DitaLibrary library(sources, run.unread);
    for (const auto& [name, key] : ReadNavigation(run.document, library, run).keys) {
        if (!key.href.empty()) {
            targets.emplace(name, key.href);
        }
    }
    return targets;
}

}  // namespace

std::string MissingPageData(const PublishOptions& options) {
    return std::string(options.map ? "; it is not in the map" : "") +
           (options.viewer ? "; it has no viewer" : "");
}

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
    SourcePlaces places(
        XmlSources(session.files), session.document, [&session] { return KeysOf(session); },
        session.files.names.attributes.contains("conaction"));
    MapText map(session.document, folder);
    const std::set<NativePath> failed = FailedFiles(outcome.log);
    for (const ReportedPage& page : pages) {
        if (failed.contains(page.page)) {
            continue;
        }
        const MappedPage mapped = MapPage(page.page, page.source, names, places);
        if (!mapped.problem.empty()) {
            findings.push_back({page.page, mapped.line, kPageNotXml,
                                "is not well-formed XML (" + mapped.problem + ")" + MissingPageData(options),
                                mapped.column});
        }
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
