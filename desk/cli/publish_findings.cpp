#include "desk/cli/publish_findings.h"

#include <algorithm>
#include <iterator>
#include <set>

#include "desk/cli/file_findings.h"
#include "desk/cli/finding_columns.h"
#include "desk/cli/page_data.h"
#include "desk/clients/saxon.h"
#include "desk/xml/lenient_load.h"

namespace ventrix::desk {
namespace {

bool IsPage(const FailedFile& failed) {
    return failed.file.utf8.ends_with(".html") || failed.file.utf8.ends_with(".htm");
}

/// A page that the module could not load, with everything that it lacks. The module names a place in the page
/// with marker text.
Finding FailedPage(const FailedFile& failed, const PublishOptions& options, const PublishOutcome& outcome) {
    const std::vector<NativePath>& marked = outcome.pages.markedTexts;
    const bool isLost = std::ranges::find(marked, failed.file) != marked.end();
    const LenientDocument page = LoadLeniently(failed.file);
    return {failed.file, page.line, kPageNotXml,
            "is not well-formed XML (" + SplitReason(failed.reason).text +
                "), so that its text was not decoded" +
                (!isLost               ? ""
                 : options.keepMarkers ? " and shows marker text"
                                       : " and what it preserved is lost") +
                MissingPageData(options) +
                "; let the transformation write XHTML, such as <br/> for <br> and &amp; for &",
            page.column};
}

void AddLoadFailures(const PublishOptions& options, const PublishOutcome& outcome,
                     std::vector<Finding>& findings) {
    std::vector<FailedFile> sources;
    for (const FailedFile& failed : outcome.log.failed) {
        if (IsPage(failed)) {
            findings.push_back(FailedPage(failed, options, outcome));
        } else {
            sources.push_back(failed);
        }
    }
    AddFailedFiles(sources, findings);
}

/// The pages that were not decoded although the module could have loaded them.
std::vector<NativePath> UndecodedPages(const PublishOutcome& outcome) {
    std::vector<NativePath> pages = outcome.undecoded;
    for (const FailedFile& failed : outcome.log.failed) {
        std::erase(pages, failed.file);
    }
    return pages;
}

/// A page that shows marker text still contains it, which is one finding.
void AddLeftMarkers(const PublishOptions& options, const PublishOutcome& outcome,
                    std::vector<Finding>& findings) {
    const std::vector<VisibleMarker>& visible = outcome.visible;
    std::set<NativePath> shown;
    for (const VisibleMarker& marker : visible) {
        shown.insert(marker.page);
    }
    std::ranges::copy_if(outcome.cleaned.findings, std::back_inserter(findings),
                         [&shown](const Finding& finding) { return !shown.contains(finding.file); });
    if (!visible.empty()) {
        const VisibleMarker& first = visible.front();
        findings.push_back({first.page, first.line, "marker-text",
                            "shows marker text: \"" + first.excerpt + '"' +
                                (options.keepMarkers ? ""
                                                     : "; the transformation cut a text there or changed its "
                                                       "letters") +
                                " (pages with such text: " + std::to_string(visible.size()) + ')',
                            first.column});
    }
}

void AddDroppedElements(const std::vector<VisibleMarker>& dropped, std::vector<Finding>& findings) {
    if (!dropped.empty()) {
        const VisibleMarker& first = dropped.front();
        findings.push_back({first.page, first.line, "element-dropped",
                            "lacks a preserved element with its text, because the transformation changed the "
                            "letters of its marker text: \"" +
                                first.excerpt +
                                "\" (pages that lack such text: " + std::to_string(dropped.size()) + ')',
                            first.column});
    }
}

}  // namespace

std::vector<Finding> PublishFindings(const PublishPlan& plan, const PublishOptions& options,
                                     const Session& session, const PublishOutcome& outcome) {
    std::vector<Finding> findings;
    if (plan.xsltEngine == "libxslt") {
        AddStylesheetVersion(plan.xslt, findings);
    }
    std::ranges::move(MissingReferences(session.files, outcome.missing), std::back_inserter(findings));
    if (outcome.log.graphicsOnOtherDrive) {
        findings.push_back(
            {session.document, 0, "graphics-on-other-drive",
             "some graphics are on a different drive from the document and were not packaged"});
    }
    AddLoadFailures(options, outcome, findings);
    std::ranges::copy(outcome.unfinished, std::back_inserter(findings));
    for (const std::string& line : session.record.unread) {
        if (!NamesFileOf(line, findings)) {
            findings.push_back(NotTransformed(line, session.document));
        }
    }
    AddTransformationFindings(session.record.findings, UnusableIn(findings), findings);
    AddColumns(findings);
    AddLeftMarkers(options, outcome, findings);
    AddDroppedElements(outcome.dropped, findings);
    if (!outcome.markedSource.Empty()) {
        findings.push_back({outcome.markedSource, 0, "marker-word",
                            "contains a marker word; marker text that the transformation copied to attribute "
                            "values and other places is left there"});
    }
    if (const std::vector<NativePath> undecoded = UndecodedPages(outcome); !undecoded.empty()) {
        findings.push_back({undecoded.front(), 0, "not-decoded",
                            "pages with text that was not decoded, so that what it preserved is lost: " +
                                std::to_string(undecoded.size()) + "; this is the first"});
    }
    return findings;
}

void AddStylesheetVersion(const NativePath& stylesheet, std::vector<Finding>& findings) {
    const std::string version = VersionOf(stylesheet);
    if (IsNewerVersion(version)) {
        findings.push_back({stylesheet, 0, "stylesheet-version",
                            "asks for XSLT " + version +
                                ", but libxslt processes 1.0 and leaves out what it does not know; use "
                                "--xslt-engine saxon"});
    }
}

std::vector<std::string> PublishNotes(const PublishPlan& plan, const PublishOutcome& outcome) {
    std::vector<std::string> notes;
    if (!UndecodedPages(outcome).empty() && !plan.undecoded.Empty()) {
        notes.push_back("marker text is decoded only in .html and .htm files in the output folder, not in " +
                        plan.undecoded.utf8);
    }
    if (outcome.cleaned.groups > 0) {
        notes.push_back("marker text taken out of attribute values and other places that are not decoded: " +
                        std::to_string(outcome.cleaned.groups) +
                        "; changed files: " + std::to_string(outcome.cleaned.files.size()));
    }
    if (outcome.pages.markedValues > 0) {
        notes.push_back("attribute values into which the transformation copied marker text: " +
                        std::to_string(outcome.pages.markedValues) + "; the first is in " +
                        outcome.pages.firstMarkedValue);
    }
    return notes;
}

}  // namespace ventrix::desk
