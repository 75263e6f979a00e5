#include "desk/cli/publish_run.h"

#include <algorithm>
#include <filesystem>
#include <iterator>
#include <set>
#include <stdexcept>

#include "bridge/contract/request.h"
#include "desk/checks/package_checks.h"
#include "desk/checks/page_titles.h"
#include "desk/cli/added_doctypes.h"
#include "desk/cli/exit_status.h"
#include "desk/cli/file_findings.h"
#include "desk/cli/installation.h"
#include "desk/cli/path_options.h"
#include "desk/cli/request_text.h"
#include "desk/script/script_record.h"
#include "platform/child_process.h"
#include "platform/files.h"
#include "platform/standard_streams.h"
#include "platform/temp_folder.h"

namespace ventrix::desk {
namespace {

/// The scripts of one run, started through the recorder.
class RecordedScripts {
  public:
    RecordedScripts(const PublishPlan& plan, const NativePath& packagedDocument)
        : plan_(plan), folder_("ventrix-run") {
        if (packagedDocument.utf8.find('"') != std::string::npos) {
            document_ = packagedDocument.utf8;
        }
        if (folder_.Path().empty()) {
            throw Stop{kExitNoModule, folder_.Problem()};
        }
    }

    /// The path that the module is to start for a script; empty for an empty one.
    SystemPath Prepare(const char* name, const NativePath& script, bool isLast) const {
        if (script.Empty()) {
            return {};
        }
        try {
            return RequireSystemPath({PrepareScript(folder_.Path(), name, FindInstallation().recorder.utf8,
                                                    {script.utf8, plan_.output.utf8, platform::ProcessId(),
                                                     isLast, platform::OutputToPass(), document_})});
        } catch (const std::runtime_error& error) {
            throw Stop{kExitNoModule, error.what()};
        }
    }

    ScriptRecord Read(const char* name) const { return ReadScriptRecord(folder_.Path(), name); }

    /// Where the run copies the files with marker text.
    MarkedFolders Copies() const { return MarkedFoldersIn(folder_.Path()); }

  private:
    const PublishPlan& plan_;
    platform::TemporaryFolder folder_;
    std::string document_;  ///< ScriptSettings::document.
};

/// The package at two moments: after the last copy, and when the transformation begins.
struct PackageStates {
    std::vector<PackageFile> copied;
    std::vector<PackageFile> transformed;
    bool isTransformed = false;  ///< The second moment has passed.
};

SystemPath Optional(const NativePath& path) {
    return path.Empty() ? SystemPath{} : RequireSystemPath(path);
}

PublishValues Values(const PublishPlan& plan, const Session& session, const PrivateLog& log,
                     const RecordedScripts& scripts) {
    PublishValues values;
    values.documentId = session.documentId;
    values.outputFolder = {RequireSystemPath(plan.output).utf8 + '\\'};
    values.xslt = Optional(plan.xslt);
    values.preScript =
        scripts.Prepare(kPreScript, plan.preScript, !plan.transforms && plan.postScript.Empty());
    values.postScript = scripts.Prepare(kPostScript, plan.postScript, true);
    values.ditaval = plan.ditaval.empty() ? SystemPath{} : RequireSystemPath(plan.ditaval.front());
    values.outFile = Optional(plan.outFile);
    values.log = RequireSystemPath(log.Path());
    values.ditaOt = plan.ditaOt;
    return values;
}

std::vector<std::pair<std::string, std::string>> NamedValues(const std::vector<std::string>& options) {
    std::vector<std::pair<std::string, std::string>> values;
    for (const std::string& option : options) {
        const std::size_t equals = option.find('=');
        values.emplace_back(option.substr(0, equals), option.substr(equals + 1));
    }
    return values;
}

/// A script may change the package, of which the toolkit then has to find the files.
DocumentCopies CopiesOf(const PublishPlan& plan, const PackageLayout& layout) {
    DocumentCopies copies{.files = {}, .originals = layout.commonFolder, .folder = {plan.output.utf8 + '/'}};
    if (plan.preScript.Empty()) {
        for (const NativePath& source : layout.sources) {
            copies.files.push_back(CopyOf(copies, source));
        }
    }
    return copies;
}

/// What the request cannot express. The toolkit reads the packaged copies of the resources.
void SetTransformationOptions(const PublishPlan& plan, const PublishOptions& options, Session& session) {
    DitaOtSettings& settings = session.ditaOt;
    settings.transtype = options.transtype;
    settings.copies = CopiesOf(plan, PackageLayoutOf(session.files, session.document));
    for (const NativePath& resource : plan.resources) {
        settings.resources.push_back(CopyOf(settings.copies, resource));
    }
    settings.filters = plan.ditaval;
    settings.parameters = NamedValues(options.toolkitParams);
    settings.design = plan.design;
    session.xslt.expressions = NamedValues(options.params);
    session.xslt.strings = NamedValues(options.stringParams);
    session.xslt.engine = plan.xsltEngine;
}

std::size_t DocumentCount(const DocumentFiles& files) {
    return static_cast<std::size_t>(
        std::ranges::count_if(files.files, [](const DocumentFile& file) { return file.key != kGraphicKey; }));
}

/// The package as it is, with its XML files dated back, so that the passes over them show.
std::vector<PackageFile> ListDatedBack(const NativePath& folder) {
    std::vector<PackageFile> files = ListPackage(folder.utf8);
    for (PackageFile& file : files) {
        if (IsXmlCopy(file.name)) {
            DateBack(folder.utf8, file);
        }
    }
    return files;
}

/// Sends the request and records the state of the package on the way. The module asks for the document's path
/// after the last copy.
Reply SendAndWatch(const std::string& request, const PublishPlan& plan, Session& session,
                   const PrivateLog& log, const Screen& screen, MarkerCounter& counter,
                   PackageStates& states) {
    Progress progress(screen, log.Path(), DocumentCount(session.files));
    session.documentPathAsked = [&] {
        if (!states.isTransformed) {
            states.copied = ListDatedBack(plan.output);
        }
    };
    const auto transformationStarts = [&] {
        if (!states.isTransformed) {
            states.transformed = ListPackage(plan.output.utf8);
            states.isTransformed = true;
        }
        counter.TransformationStarts();
        RemoveAddedDoctypes(session.files, session.ditaOt.copies);
    };
    session.transformationEnded = [&] { counter.TransformationEnds(); };
    // The module also calls the client of stylesheets to repair a DOCTYPE, in the middle of the encoding.
    session.xslt.starts = transformationStarts;
    session.clientCalled = [&](const std::string& client) {
        progress.SetTransforming(client != kDispatcherClient);
        if (client == kDitaOtClient) {
            transformationStarts();
        }
    };
    Reply reply = Send(session, request);
    session.documentPathAsked = nullptr;
    session.clientCalled = nullptr;
    session.xslt.starts = nullptr;
    session.transformationEnded = nullptr;
    return reply;
}

void ReadScripts(const PublishPlan& plan, const RecordedScripts& scripts, PublishOutcome& outcome,
                 PackageStates& states) {
    // The post-script comes last, so that the pre-script's view of the package is the one that counts.
    for (const auto& [name, script] :
         {std::pair{kPostScript, plan.postScript}, std::pair{kPreScript, plan.preScript}}) {
        if (script.Empty()) {
            continue;
        }
        const ScriptRecord record = scripts.Read(name);
        if (!Succeeded(record)) {
            outcome.failedScripts.insert(outcome.failedScripts.begin(),
                                         {DescribeFailure(record, script.utf8), record.lastLines});
        }
        if (name == kPreScript || !states.isTransformed) {
            states.transformed = record.package;
            states.isTransformed = record.state != ScriptState::kNotCalled;
        }
    }
}

void Add(std::vector<Finding>& findings, const std::vector<NativePath>& files, const char* code,
         const char* text) {
    for (const NativePath& file : files) {
        findings.push_back({file, 0, code, text});
    }
}

/// The sources of packaged files.
std::vector<NativePath> SourcesOf(const std::vector<NativePath>& copies, const PublishPlan& plan,
                                  const PackageLayout& layout) {
    const std::string folder = plan.output.utf8 + '/';
    std::vector<NativePath> sources;
    sources.reserve(copies.size());
    for (const NativePath& copy : copies) {
        sources.push_back(copy.utf8.starts_with(folder)
                              ? NativePath{layout.commonFolder.utf8 + copy.utf8.substr(folder.size())}
                              : copy);
    }
    return sources;
}

/// Files whose encoding the log does not mention, because it could not be written: findings may be missing
/// too.
std::vector<NativePath> Unlogged(std::vector<NativePath> files, const RunLog& log) {
    std::set<NativePath> logged = FailedFiles(log);
    logged.insert(log.encodedFiles.begin(), log.encodedFiles.end());
    std::erase_if(files, [&logged](const NativePath& file) { return logged.contains(file); });
    return files;
}

std::vector<Finding> CheckPackage(const PublishPlan& plan, const PackageLayout& layout,
                                  const PublishOutcome& outcome, const PackageStates& states) {
    std::vector<Finding> findings;
    std::vector<NativePath> uncopied = UncopiedSources(layout, states.copied);
    const std::set<NativePath> missing(outcome.missing.begin(), outcome.missing.end());
    std::erase_if(uncopied, [&missing](const NativePath& file) { return missing.contains(file); });
    Add(findings, uncopied, "not-packaged", "could not be copied into the package and is not in the result");
    Add(findings, SourcesOf(Unlogged(XmlFiles(plan.output, states.copied), outcome.log), plan, layout),
        "not-logged", "the module's log does not report how it was encoded; check the free space in TMPDIR");
    if (states.isTransformed) {
        std::vector<NativePath> encoded = outcome.log.encodedFiles;
        const std::set<NativePath> failed = FailedFiles(outcome.log);
        std::erase_if(encoded, [&failed](const NativePath& file) { return failed.contains(file); });
        const std::vector<NativePath> unsaved =
            UnsavedCopies(encoded, plan.output, states.copied, states.transformed);
        Add(findings, SourcesOf(unsaved, plan, layout), "not-encoded",
            "its copy could not be saved with marker text; nothing of it is preserved");
    }
    return findings;
}

std::vector<Finding> CheckResult(const PublishPlan& plan, const Session& session,
                                 const PublishOutcome& outcome, const PackageStates& states) {
    std::vector<Finding> findings;
    Add(findings, UnplacedGraphics(session.files, session.document, outcome.resultFolder), "graphic-missing",
        "the graphic could not be copied to its place in the result");
    Add(findings, Existing(XmlFiles(plan.output, states.copied)), "copy-left",
        "the packaged copy could not be deleted from the result");
    // The module moves the pages only if the toolkit did not make the folder itself.
    const bool isMoved = !session.record.folders.contains(NormalPath(outcome.resultFolder));
    if (plan.ditaOt && plan.undecoded.Empty() && isMoved) {
        Add(findings, MisplacedPages(plan.output, outcome.resultFolder, states.copied), "page-misplaced",
            "the page could not be moved to the result folder");
    }
    return findings;
}

/// The index page, else the page of the document, else the first page.
NativePath StartPage(const PublishPlan& plan, const Session& session, const PublishOutcome& outcome) {
    const std::filesystem::path folder = ToFilesystem(outcome.resultFolder);
    const std::string stem = FromFilesystem(ToFilesystem(session.document).stem()).utf8;
    for (const std::string& name : {std::string("index.html"), stem + ".html"}) {
        NativePath page = NormalPath(FromFilesystem(folder / name));
        if (platform::OpensForReading(page.utf8)) {
            return page;
        }
    }
    return outcome.pages.files.empty() ? plan.outFile : outcome.pages.files.front();
}

/// A failure names the packaged copy, which no longer exists after the run; the user needs the source.
void NameSource(const PublishPlan& plan, const PackageLayout& layout, NativePath& file) {
    const NativePath source = SourcesOf({file}, plan, layout).front();
    if (std::ranges::find(layout.sources, source) != layout.sources.end()) {
        file = source;
    }
}

/// The same in a message, which may name any of the copies.
void NameSourcesIn(std::string& text, const PublishPlan& plan, const PackageLayout& layout) {
    const std::string folder = plan.output.utf8 + '/';
    for (std::size_t at = text.find(folder); at != std::string::npos; at = text.find(folder, at)) {
        const std::string rest = text.substr(at + folder.size());
        std::string named;
        for (const NativePath& source : layout.sources) {
            const std::string name = source.utf8.substr(layout.commonFolder.utf8.size());
            named = rest.starts_with(name) && name.size() > named.size() ? name : named;
        }
        if (named.empty()) {
            at += folder.size();
        } else {
            text.replace(at, folder.size(), layout.commonFolder.utf8);
            at += layout.commonFolder.utf8.size();
        }
    }
}

void NameSources(const PublishPlan& plan, const PackageLayout& layout, RunLog& log,
                 TransformationRecord& record) {
    NameSourcesIn(record.reason, plan, layout);
    for (FailedFile& failed : log.failed) {
        NameSource(plan, layout, failed.file);
    }
    for (DitaFinding& finding : record.findings) {
        NameSource(plan, layout, finding.file);
        NameSource(plan, layout, finding.subject.target);
    }
}

/// The module takes a part of a DTD for a document if its name ends in .xml; nothing in it could be
/// preserved.
void ForgetDtds(const DocumentFiles& files, RunLog& log) {
    const auto isDtd = [&files](const FailedFile& failed) {
        const auto file = std::ranges::find(files.files, failed.file, &DocumentFile::path);
        return file != files.files.end() && file->dtd;
    };
    std::erase_if(log.failed, isDtd);
}

/// The module needs the DTD beside the packaged document and leaves it there.
void RemoveDtdCopies(const PublishPlan& plan, const PackageLayout& layout, const DocumentFiles& files) {
    std::error_code error;
    const std::filesystem::path output = ToFilesystem(plan.output);
    for (const DocumentFile& file : files.files) {
        if (!file.dtd || !file.path.utf8.starts_with(layout.commonFolder.utf8)) {
            continue;
        }
        std::filesystem::path copy =
            output / ToFilesystem({file.path.utf8.substr(layout.commonFolder.utf8.size())});
        std::filesystem::remove(copy, error);
        for (copy = copy.parent_path(); copy != output && std::filesystem::is_empty(copy, error) && !error;
             copy = copy.parent_path()) {
            std::filesystem::remove(copy, error);
        }
    }
}

void InspectResult(const PublishPlan& plan, PublishOutcome& outcome) {
    InspectPages(plan.output, outcome.pages);
    if (!plan.undecoded.Empty()) {
        InspectPages(plan.ditaOt ? outcome.resultFolder : plan.undecoded, outcome.pages);
    }
}

/// Pages that were not decoded are counted before, and the places that keep marker text after.
void CleanResult(const PublishPlan& plan, const Session& session, PublishOutcome& outcome) {
    std::vector<NativePath> sources;
    for (const DocumentFile& file : session.files.files) {
        if (file.key != kGraphicKey && !file.path.Empty()) {
            sources.push_back(file.path);
        }
    }
    outcome.markedSource = FirstWithMarkerWord(sources);
    if (!outcome.markedSource.Empty()) {
        return;
    }
    CleanFiles(plan.output, outcome.cleaned);
    if (!plan.outFile.Empty() && !IsBelowOrEqual(RealPath(plan.outFile), RealPath(plan.output))) {
        CleanFiles(plan.ditaOt ? outcome.resultFolder : plan.outFile, outcome.cleaned);
    }
    PublishOutcome after;
    after.resultFolder = outcome.resultFolder;
    InspectResult(plan, after);
    outcome.pages.markedValues = after.pages.markedValues;
    outcome.pages.firstMarkedValue = after.pages.firstMarkedValue;
    const std::set<NativePath> left(after.pages.markedTexts.begin(), after.pages.markedTexts.end());
    std::ranges::copy_if(outcome.pages.markedTexts, std::back_inserter(outcome.undecoded),
                         [&left](const NativePath& page) { return !left.contains(page); });
}

/// With --keep-markers, a page that was not decoded shows its marker text, which is part of that finding.
std::vector<NativePath> PagesToRead(const PublishOptions& options, const PublishOutcome& outcome) {
    std::vector<NativePath> pages = outcome.pages.files;
    const std::set<NativePath> failed = FailedFiles(outcome.log);
    std::erase_if(pages,
                  [&](const NativePath& page) { return options.keepMarkers && failed.contains(page); });
    return pages;
}

/// What a page may show that looks like a piece of marker text.
OwnText OwnTextOf(const PublishPlan& plan, const PublishOptions& options) {
    OwnText own{.files = plan.inputs, .texts = {plan.output.utf8, options.title}};
    for (const NativePath& input : plan.inputs) {
        own.texts.push_back(input.utf8);
    }
    for (const auto* values : {&options.params, &options.stringParams, &options.toolkitParams}) {
        std::ranges::copy(*values, std::back_inserter(own.texts));
    }
    return own;
}

/// Decoding takes marker words out of the text of pages, also where they were cut from their group, so that
/// only what was between them is left. Words of a source cannot be told apart from them.
void AddCutTexts(const std::vector<VisibleMarker>& cuts, PublishOutcome& outcome) {
    std::set<NativePath> known;
    for (const VisibleMarker& marker : outcome.visible) {
        known.insert(marker.page);
    }
    std::ranges::copy_if(cuts, std::back_inserter(outcome.visible), [&](const VisibleMarker& cut) {
        return outcome.markedSource.Empty() && !known.contains(cut.page);
    });
    std::ranges::stable_sort(outcome.visible, {}, [](const VisibleMarker& one) { return one.page.utf8; });
}

}  // namespace

PublishOutcome RunPublish(const PublishPlan& plan, const Options& options, Session& session,
                          const PrivateLog& log, const Screen& screen) {
    PublishOutcome outcome;
    PackageStates states;
    session.access.outputFolder = plan.output;
    SetTransformationOptions(plan, options.publish, session);
    const RecordedScripts scripts(plan, CopyOf(session.ditaOt.copies, session.document));
    MarkerCounter counter(plan, options.publish, session, scripts.Copies());
    const std::string request = PublishRequest(Values(plan, session, log, scripts), options.publish);
    outcome.missing = MissingFiles(session.files);
    const std::vector<NativePath> absent = AbsentFolders(session.files);
    outcome.reply = SendAndWatch(request, plan, session, log, screen, counter, states);
    RemoveIfEmpty(absent);
    outcome.log = ReadRunLog(log.Text());
    outcome.resultFolder = ToNative(SystemPath{outcome.reply.first});
    outcome.buildLog = ToNative(SystemPath{outcome.reply.second});
    if (outcome.resultFolder.Empty()) {
        return outcome;
    }
    ReadScripts(plan, scripts, outcome, states);
    const PackageLayout layout = PackageLayoutOf(session.files, session.document);
    outcome.unfinished = CheckPackage(plan, layout, outcome, states);
    std::ranges::move(CheckResult(plan, session, outcome, states), std::back_inserter(outcome.unfinished));
    NameSources(plan, layout, outcome.log, session.record);
    ForgetDtds(session.files, outcome.log);
    RemoveDtdCopies(plan, layout, session.files);
    InspectResult(plan, outcome);
    std::ranges::move(MakeTitlesPlain(outcome.pages.files, PreservationOf(options.publish).elements),
                      std::back_inserter(outcome.unfinished));
    outcome.markers = counter.Finish(outcome.log);
    const auto placed = [&](const std::vector<BrokenText>& texts) {
        return PlacedTexts(texts, outcome.markers, plan, session, outcome.resultFolder);
    };
    if (!options.publish.keepMarkers && (plan.transforms || !outcome.pages.files.empty())) {
        CleanResult(plan, session, outcome);
        outcome.dropped = placed(outcome.markers.result.dropped);
    }
    outcome.visible =
        FindVisibleMarkers(PagesToRead(options.publish, outcome), OwnTextOf(plan, options.publish));
    AddCutTexts(placed(outcome.markers.result.cuts), outcome);
    outcome.startPage = StartPage(plan, session, outcome);
    return outcome;
}

}  // namespace ventrix::desk
