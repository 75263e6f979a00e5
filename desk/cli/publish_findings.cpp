#include "desk/cli/publish_findings.h"

#include <algorithm>
#include <iterator>

#include "desk/cli/file_findings.h"
#include "desk/clients/saxon.h"

namespace ventrix::desk {
namespace {

bool IsPage(const FailedFile& failed) {
    return failed.file.utf8.ends_with(".html") || failed.file.utf8.ends_with(".htm");
}

}  // namespace

std::vector<Finding> PublishFindings(const PublishPlan& plan, const Session& session,
                                     const PublishOutcome& outcome) {
    std::vector<Finding> findings;
    if (plan.xsltEngine == "libxslt" && IsNewerVersion(VersionOf(plan.xslt))) {
        findings.push_back({plan.xslt, 0, "stylesheet-version",
                            "asks for XSLT " + VersionOf(plan.xslt) +
                                ", but libxslt processes 1.0 and leaves out what it does not know; use "
                                "--xslt-engine saxon"});
    }
    AddMissingFiles(session.files, outcome.missing, findings);
    if (outcome.log.graphicsOnOtherDrive) {
        findings.push_back(
            {session.document, 0, "graphics-on-other-drive",
             "some graphics are on a different drive from the document and were not packaged"});
    }
    AddFailedFiles(outcome.log, findings);
    std::ranges::copy(outcome.unfinished, std::back_inserter(findings));
    for (const std::string& line : session.record.unread) {
        if (!NamesFileOf(line, findings)) {
            findings.push_back({session.document, 0, "not-transformed", line});
        }
    }
    for (const DitaFinding& finding : session.record.findings) {
        findings.push_back({finding.file, finding.line, "toolkit", finding.text});
    }
    std::ranges::copy(outcome.cleaned.findings, std::back_inserter(findings));
    if (!outcome.markedSource.Empty()) {
        findings.push_back({outcome.markedSource, 0, "marker-word",
                            "contains a marker word; marker text that the transformation copied to attribute "
                            "values and other places is left there"});
    }
    if (outcome.undecodedPages > 0) {
        findings.push_back({outcome.firstUndecoded, 0, "not-decoded",
                            "pages with text that was not decoded, so that what it preserved is lost: " +
                                std::to_string(outcome.undecodedPages) + "; this is the first"});
    }
    if (outcome.pages.markedTexts > 0) {
        findings.push_back({outcome.pages.firstMarkedText, 0, "marker-text",
                            "pages that still contain marker text: " +
                                std::to_string(outcome.pages.markedTexts) + "; this is the first"});
    }
    return findings;
}

std::vector<std::string> PublishNotes(const PublishPlan& plan, const PublishOutcome& outcome) {
    std::vector<std::string> notes;
    if (std::ranges::any_of(outcome.log.failed, IsPage)) {
        notes.push_back(
            "marker text is decoded only in pages that are well-formed XML; to write such pages, a "
            "stylesheet needs <xsl:output method=\"xml\"/>");
    }
    if (outcome.pages.markedTexts + outcome.undecodedPages > 0 && !plan.undecoded.Empty()) {
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
