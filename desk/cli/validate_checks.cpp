#include "desk/cli/validate_checks.h"

#include <algorithm>
#include <cstdlib>
#include <iterator>
#include <set>

#include "desk/cli/file_findings.h"
#include "desk/cli/finding_columns.h"
#include "desk/cli/path_options.h"
#include "desk/cli/publish_findings.h"
#include "desk/clients/xslt_client.h"
#include "desk/toolkit/builtin_toolkit.h"
#include "desk/xml/file_access.h"
#include "desk/xml/lenient_load.h"
#include "platform/files.h"

namespace ventrix::desk {
namespace {

/// Whether the module encodes the file, and so must be able to load it.
bool IsEncoded(const DocumentFile& file) {
    const std::string& name = file.path.utf8;
    return file.key == kDocumentKey && !file.opaque && !file.dtd &&
           (name.ends_with(".xml") || name.ends_with(".dita") || name.ends_with(".ditamap"));
}

/// The reason in the words of a publish, in which the place is not repeated.
std::string WithoutPlace(const LenientDocument& loaded) {
    const std::string place = "line " + std::to_string(loaded.line) + ": ";
    return loaded.reason.substr(loaded.reason.starts_with(place) ? place.size() : 0);
}

void AddUnreadable(const DocumentFiles& files, std::vector<Finding>& findings) {
    constexpr char kProblem[] = "could not be read: ";
    for (const DocumentFile& file : files.files) {
        if (!IsEncoded(file) || !platform::OpensForReading(file.path.utf8)) {
            continue;
        }
        const LenientDocument loaded = LoadLeniently(file.path);
        if (!loaded.wellFormed) {
            findings.push_back(
                {file.path, loaded.line, kNotReadable, kProblem + WithoutPlace(loaded), loaded.column});
        } else if (!loaded.undeclaredEntities.empty() && !NamesExternalDtd(loaded.document.get())) {
            const std::string& reason = loaded.undeclaredEntities.front();
            const int line = std::atoi(reason.c_str() + std::string("line ").size());
            findings.push_back({file.path, line, kNotReadable, kProblem + reason});
        }
    }
}

/// The folders that the built-in toolkit may read in: those that a publish would package files from.
std::vector<NativePath> SourceFolders(const Session& session) {
    std::set<NativePath> folders;
    for (const NativePath& file : LocalFiles(session.files)) {
        folders.insert(FolderOf(file));
    }
    return {folders.begin(), folders.end()};
}

/// `named` are the findings so far, whose files are not reported again as not transformed.
void AddToolkitFindings(const Session& session, const Options& options, const std::vector<Finding>& named,
                        std::vector<Finding>& findings) {
    std::set<std::string> unread;
    std::vector<DitaFinding> found;
    DitaRun run;
    run.document = session.document;
    run.pages = {FolderOf(session.document).utf8 + "xhtml/"};
    run.log = [](const std::string&) {};
    run.unread = [&unread](const std::string& line) { unread.insert(line); };
    run.finding = [&found](const DitaFinding& one) { found.push_back(one); };
    run.writes = false;
    for (const std::string& filter : options.publish.ditaval) {
        run.filters.push_back(AbsolutePath({filter}));
    }
    ReadScope scope(session.access.readable);
    scope.Add(SourceFolders(session));
    scope.Add({session.ditaOt.dataFolder});
    std::string failure = RunBuiltinToolkit(run, {session.ditaOt.dataFolder.utf8 + "/dita-to-xhtml.xsl"});
    if (!scope.Refusal().empty()) {
        failure = scope.Refusal();
    }
    if (!failure.empty()) {
        unread.insert(failure);
    }
    for (const std::string& line : unread) {
        if (!NamesFileOf(line, named)) {
            findings.push_back(NotTransformed(line, session.document));
        }
    }
    std::erase_if(found, [&options](const DitaFinding& one) {
        return one.rule == kNotHandled && options.common.toolkit != "builtin";
    });
    AddTransformationFindings(found, UnusableIn(named), findings);
}

/// What the stylesheet would not see of the document.
void AddFailedInclusions(const Session& session, const std::set<NativePath>& unusable,
                         std::vector<Finding>& findings) {
    ReadScope scope(session.access.readable);
    scope.Add(SourceFolders(session));
    const LoadedDocument loaded = LoadForStylesheet(session.document, [](const std::string&) {});
    std::vector<DitaFinding> failed;
    std::ranges::transform(loaded.failedInclusions, std::back_inserter(failed), FindingFor);
    AddTransformationFindings(failed, unusable, findings);
}

}  // namespace

std::vector<Finding> PublishProblems(const Session& session, const Options& options, const PublishPlan* plan,
                                     const std::vector<NativePath>& missing) {
    std::vector<Finding> findings;
    AddUnreadable(session.files, findings);
    std::vector<Finding> named = findings;
    std::ranges::move(MissingReferences(session.files, missing), std::back_inserter(named));
    if (session.files.dita && (plan == nullptr || plan->ditaOt)) {
        AddToolkitFindings(session, options, named, findings);
    }
    if (plan != nullptr && plan->xsltEngine == "libxslt") {
        AddStylesheetVersion(plan->xslt, findings);
        AddFailedInclusions(session, UnusableIn(named), findings);
    }
    AddColumns(findings);
    return findings;
}

}  // namespace ventrix::desk
