#include "desk/cli/dry_run.h"

#include <algorithm>
#include <filesystem>
#include <set>

#include "desk/checks/package_checks.h"
#include "desk/cli/exit_status.h"
#include "desk/cli/file_findings.h"
#include "desk/cli/protected_output.h"
#include "desk/output/manifest.h"
#include "desk/output/output_checks.h"
#include "desk/pages/page_map.h"
#include "desk/pages/viewer.h"

namespace fs = std::filesystem;

namespace ventrix::desk {
namespace {

/// What an output folder contains, as paths below it.
struct FolderContent {
    std::vector<std::string> replaced;  ///< Made by the earlier result.
    std::vector<std::string> kept;      ///< The user's own files, and pages that were edited.
};

void ShowList(const Screen& screen, const char* title, const std::vector<std::string>& lines) {
    screen.Result(title + (" (" + std::to_string(lines.size()) + ")"));
    for (const std::string& line : lines) {
        screen.Result("  " + line);
    }
}

/// Throws Stop for the reasons for which a publish refuses the folder.
void RequireOutput(const fs::path& output, const Manifest& manifest, const PublishPlan& plan, bool force) {
    std::string refusal = WhyNeverAllowed(output, InputPaths(plan.inputs));
    if (refusal.empty()) {
        refusal = WhyNotOurs(output, manifest, force);
    }
    const std::string notMovable = refusal.empty() ? WhyNotMovable(output) : std::string();
    if (!notMovable.empty()) {
        refusal = WhyNotUsableInPlace(output, manifest, notMovable);
    }
    if (!refusal.empty()) {
        throw Stop{kExitOutputRefused, plan.output.utf8 + ' ' + refusal};
    }
}

/// Whether the run may write a file of this name, in a folder that is known only when there are pages.
bool MayBeWritten(const std::string& name, const PublishOptions& options) {
    const std::string file = name.substr(name.find_last_of('/') + 1);
    return (options.map && file == kMapName) ||
           (options.viewer && std::ranges::count(kViewerFiles, file) > 0) || file.ends_with(".html") ||
           file.ends_with(".htm");
}

/// What becomes of a file of the user's.
std::string KeptName(const std::string& name, bool isEdited, const PublishOptions& options) {
    if (isEdited) {
        return name + " (edited; becomes " + name + ".edited)";
    }
    return name +
           (MayBeWritten(name, options) ? " (becomes " + name + ".kept if the result has this name)" : "");
}

FolderContent ContentOf(const fs::path& output, const Manifest& manifest, const PublishOptions& options,
                        std::vector<std::string>& findings) {
    FolderContent content;
    std::error_code error;
    if (!fs::exists(output, error)) {
        return content;
    }
    Manifest present;
    present.mark = manifest.mark;
    ListFiles(output, present, findings);
    for (const auto& [name, stamp] : present.files) {
        if (IsUnmodified(manifest, output, ToFilesystem({name}))) {
            content.replaced.push_back(name);
        } else {
            content.kept.push_back(KeptName(name, ListsFile(manifest, ToFilesystem({name})), options));
        }
    }
    return content;
}

std::vector<std::string> PackagedFiles(const Session& session, const std::vector<NativePath>& missing) {
    const std::set<NativePath> absent(missing.begin(), missing.end());
    std::vector<std::string> packaged;
    for (const NativePath& source : PackageLayoutOf(session.files, session.document).sources) {
        if (!absent.contains(source)) {
            packaged.push_back(source.utf8);
        }
    }
    return packaged;
}

std::vector<std::string> Steps(const PublishPlan& plan) {
    std::vector<std::string> steps;
    if (!plan.preScript.Empty()) {
        steps.push_back("script " + plan.preScript.utf8);
    }
    if (plan.ditaOt) {
        steps.push_back("toolkit: " + plan.toolkit);
    }
    if (!plan.xslt.Empty()) {
        steps.push_back("stylesheet " + plan.xslt.utf8 + " (" + plan.xsltEngine + ')');
    }
    for (const NativePath& filter : plan.ditaval) {
        steps.push_back("filter " + filter.utf8);
    }
    if (!plan.postScript.Empty()) {
        steps.push_back("script " + plan.postScript.utf8);
    }
    return steps;
}

/// What is written besides the pages. The folder of the start page is known only when there are pages.
std::vector<std::string> FurtherFiles(const PublishPlan& plan, const PublishOptions& options) {
    std::vector<std::string> files{"log " + plan.log.utf8};
    const auto addBesideStartPage = [&files](const std::string& what, bool wanted) {
        if (wanted) {
            files.push_back(what + " beside the start page");
        }
    };
    if (!plan.report.Empty()) {
        files.push_back("report " + plan.report.utf8);
    }
    addBesideStartPage(std::string("map ") + kMapName, options.map);
    addBesideStartPage(std::string("viewer ") + kViewerFiles[0] + " and " + kViewerFiles[1], options.viewer);
    return files;
}

}  // namespace

void ShowDryRun(const PublishPlan& plan, const Options& options, const Session& session, RunReport& report,
                const Screen& screen) {
    const fs::path output = RealOutput(ToFilesystem(plan.output));
    const Manifest manifest = ReadManifest(output, kResultMark);
    RequireOutput(output, manifest, plan, options.publish.force);
    const std::vector<NativePath> missing = MissingFiles(session.files);
    std::vector<Finding> findings = MissingReferences(session.files, missing);
    std::vector<std::string> unlisted;
    const FolderContent content = ContentOf(output, manifest, options.publish, unlisted);
    for (const std::string& line : unlisted) {
        findings.push_back({{}, 0, "output", line});
    }
    for (const Finding& finding : findings) {
        Warn(report, screen, finding);
    }
    ShowList(screen, "package", PackagedFiles(session, missing));
    ShowList(screen, "transform", Steps(plan));
    screen.Result("output:    " + FromFilesystem(output).utf8);
    if (!plan.outFile.Empty()) {
        screen.Result("out file:  " + plan.outFile.utf8);
    }
    ShowList(screen, "replace", content.replaced);
    ShowList(screen, "keep", content.kept);
    ShowList(screen, "write", FurtherFiles(plan, options.publish));
    screen.Note("dry run: nothing was changed");
}

}  // namespace ventrix::desk
