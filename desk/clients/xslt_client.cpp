#include "desk/clients/xslt_client.h"

#include <algorithm>
#include <filesystem>
#include <iterator>

#include "desk/clients/client_command.h"
#include "desk/clients/saxon.h"
#include "desk/toolkit/package_markers.h"
#include "desk/xml/file_access.h"
#include "desk/xml/markup_in_text.h"
#include "desk/xml/reference_path.h"
#include "desk/xml/stylesheet.h"
#include "platform/files.h"

namespace ventrix::desk {
namespace {

struct XsltRun {
    NativePath source;
    NativePath stylesheet;
    NativePath output;
    std::string firstMessage;
    MessageSink messages;
};

XsltRun RunOf(const std::string& commandText) {
    const ClientCommand command = ParseClientCommand(commandText);
    XsltRun run;
    run.source = PathOptionOf(command, "-file");
    run.stylesheet = PathOptionOf(command, "-xslfilepath");
    run.output = PathOptionOf(command, "-outputfilepath");
    return run;
}

NativePath OutputFolderOf(const XsltRun& run, const FileAccess& access) {
    return access.outputFolder.Empty() ? FolderOf(run.output) : access.outputFolder;
}

/// A document that a stylesheet did not get, as a finding.
DitaFinding FindingFor(const UnreadDocument& unread, const XsltRun& run, const NativePath& package) {
    const NativePath file = TargetOf(unread.uri, {"/"}).path;
    const bool isPackaged = !file.Empty() && IsBelowOrEqual(file, package);
    const std::string name = isPackaged     ? file.utf8.substr(package.utf8.size() + 1)
                             : file.Empty() ? unread.uri
                                            : file.utf8;
    return {unread.stylesheet.Empty() ? run.stylesheet : unread.stylesheet,
            unread.line,
            "document() does not get " + name + ": " + unread.reason +
                (isPackaged ? "; beside the document, a stylesheet can read the files to which the document "
                              "refers, and others by a path from the stylesheet"
                            : ""),
            kDeadReference,
            {.target = file}};
}

/// Empty on success; else the reason, which names the file.
std::string RunStylesheet(XsltRun& run, const XsltSettings& settings, const FileAccess& access,
                          std::vector<DitaFinding>& findings) {
    if (run.source.Empty() || run.stylesheet.Empty() || run.output.Empty()) {
        return "the command of QlXSLT needs -file, -xslfilepath and -outputfilepath";
    }
    const auto because = [&run](const std::string& what) {
        return run.firstMessage.empty() ? what : what + ": " + run.firstMessage;
    };
    const Stylesheet stylesheet = LoadStylesheet(run.stylesheet, run.messages);
    if (stylesheet == nullptr) {
        return because("the stylesheet " + run.stylesheet.utf8 + " cannot be used");
    }
    const NativePath outputFolder = OutputFolderOf(run, access);
    ReadScope scope(access.readable);
    scope.Add({FolderOf(run.source), outputFolder});
    std::vector<NativePath> folders;
    std::ranges::transform(FilesOf(stylesheet.get()), std::back_inserter(folders), FolderOf);
    scope.Add(folders);
    const auto [document, failedInclusions] = LoadForStylesheet(run.source, run.messages);
    if (document == nullptr) {
        return because("the document " + run.source.utf8 + " cannot be read");
    }
    for (const FailedInclusion& failed : failedInclusions) {
        // A file that the package lacks is reported as missing.
        const NativePath& target = failed.subject.target;
        if (target.Empty() || platform::OpensForReading(target.utf8)) {
            findings.push_back(FindingFor(failed));
        }
    }
    const Transformed result =
        Transform({.stylesheet = stylesheet,
                   .document = document.get(),
                   .sourcePath = run.source,
                   .outputPath = run.output,
                   .outputFolder = outputFolder,
                   .parameters = {settings.strings.begin(), settings.strings.end()},
                   .expressions = {settings.expressions.begin(), settings.expressions.end()}},
                  run.messages);
    if (!scope.Refusal().empty()) {
        return run.source.utf8 + ": " + scope.Refusal();
    }
    for (const UnreadDocument& unread : scope.Unread()) {
        findings.push_back(FindingFor(unread, run, access.outputFolder));
    }
    if (!result.failure.empty()) {
        return "the stylesheet " + run.stylesheet.utf8 + " failed on " + run.source.utf8 + ": " +
               result.failure;
    }
    if (!result.done) {
        return because("the stylesheet " + run.stylesheet.utf8 + " failed on " + run.source.utf8);
    }
    if (result.output.empty() && result.furtherFiles > 0) {
        return {};
    }
    if (result.output.empty()) {
        return because("the stylesheet " + run.stylesheet.utf8 + " wrote nothing for " + run.source.utf8);
    }
    return WriteOutput(run.output, result.output)
               ? std::string()
               : run.output.utf8 + " cannot be written; check its permissions and the free space";
}

/// The module runs this host's own stylesheet, Ventrix.xsl, to repair a DOCTYPE. The user did not ask for
/// that transformation, so it is not recorded, and the user's options do not apply to it.
bool IsOwn(const XsltRun& run) {
    return ToFilesystem(run.stylesheet).filename() == "Ventrix.xsl";
}

std::string ContentOf(const NativePath& file) {
    std::string content;
    return platform::ReadWholeFile(file.utf8, content) == platform::kErrorNone ? content : std::string();
}

/// What is in front of the content of the root element: its DOCTYPE and namespaces. What looks like a start
/// tag in a comment or an internal subset ends it early.
std::string_view HeadOf(std::string_view document) {
    std::size_t at = document.find('<');
    while (at < document.size() &&
           (document.substr(at).starts_with("<?") || document.substr(at).starts_with("<!"))) {
        at = document.find('<', at + 1);
    }
    return document.substr(0, document.find('>', at));
}

bool NamesDocBook(std::string_view text) {
    return text.find("docbook") != std::string_view::npos || text.find("DocBook") != std::string_view::npos;
}

/// The distribution has its version next to the folders of its stylesheets. A folder of the user's may be
/// called like DocBook, a stylesheet of that name is for it.
bool IsDocBooksStylesheet(const NativePath& stylesheet) {
    const std::filesystem::path path = ToFilesystem(stylesheet);
    std::error_code error;
    return NamesDocBook(FromFilesystem(path.filename()).utf8) ||
           std::filesystem::exists(path.parent_path() / ".." / "VERSION.xsl", error);
}

/// A document with the DOCTYPE or a namespace of DocBook, or any for a stylesheet that is, or imports, one of
/// DocBook's.
bool IsDocBook(const XsltRun& run) {
    const std::string stylesheet = ContentOf(run.stylesheet);
    const auto namesDocBooks = [](const AttributeInText& attribute) {
        return attribute.name == "href" && NamesDocBook(attribute.value);
    };
    return NamesDocBook(HeadOf(ContentOf(run.source))) || IsDocBooksStylesheet(run.stylesheet) ||
           std::ranges::any_of(AttributesIn(stylesheet), namesDocBooks);
}

/// Whether the user's parameters or stylesheet set one of these. By itself DocBook's stylesheet does neither.
bool ComparesGlossaryTerms(const XsltRun& run, const XsltSettings& settings) {
    const std::string stylesheet = ContentOf(run.stylesheet);
    const auto isSet = [&](std::string_view name) {
        const auto hasName = [name](const auto& parameter) { return parameter.first == name; };
        return std::ranges::any_of(settings.strings, hasName) ||
               std::ranges::any_of(settings.expressions, hasName) ||
               stylesheet.find(name) != std::string::npos;
    };
    return isSet("glossary.sort") || isSet("glossary.collection");
}

Vocabulary VocabularyOf(const XsltRun& run, const XsltSettings& settings) {
    if (!IsDocBook(run)) {
        return Vocabulary::kOther;
    }
    return ComparesGlossaryTerms(run, settings) ? Vocabulary::kDocBookGlossary : Vocabulary::kDocBook;
}

std::string RunEngine(XsltRun& run, const XsltSettings& settings, const FileAccess& access,
                      TransformationRecord& record) {
    if (IsOwn(run)) {
        std::vector<DitaFinding> ignored;
        return RunStylesheet(run, {}, access, ignored);
    }
    if (settings.starts) {
        settings.starts();
    }
    // The package is the module's copy of the document, which the client may change.
    if (!access.outputFolder.Empty() && IsBelowOrEqual(run.source, access.outputFolder)) {
        const auto finding = [&record](const DitaFinding& found) { record.findings.push_back(found); };
        const Vocabulary vocabulary = VocabularyOf(run, settings);
        if (std::string problem = PreparePackage(access.outputFolder, vocabulary, finding);
            !problem.empty()) {
            return problem;
        }
    }
    if (settings.engine != "saxon") {
        return RunStylesheet(run, settings, access, record.findings);
    }
    return RunSaxon({.source = run.source,
                     .stylesheet = run.stylesheet,
                     .output = run.output,
                     .outputFolder = OutputFolderOf(run, access),
                     .strings = settings.strings,
                     .expressions = settings.expressions},
                    run.messages);
}

void Record(const XsltRun& run, const std::string& reason, TransformationRecord& record) {
    if (IsOwn(run)) {
        return;
    }
    ++record.started;
    if (reason.empty()) {
        return;
    }
    ++record.failed;
    if (record.reason.empty()) {
        record.reason = reason;
    }
}

ClientAnswer RunCommand(const XsltSettings& settings, const FileAccess& access, const std::string& command,
                        const HostServices& host, TransformationRecord& record) {
    XsltRun run = RunOf(command);
    run.messages = [&run, &host](const std::string& line) {
        if (run.firstMessage.empty()) {
            run.firstMessage = line;
        }
        if (host.console) {
            host.console(line + "\n");
        }
    };
    const std::string reason = ReasonOf([&] { return RunEngine(run, settings, access, record); });
    Record(run, reason, record);
    if (reason.empty()) {
        return {};
    }
    return {.status = 1, .number = 0, .values = {}};
}

}  // namespace

DitaFinding FindingFor(const FailedInclusion& failed) {
    return {failed.file, failed.line, failed.element + " is not in the result: " + failed.reason,
            kDeadReference, failed.subject};
}

Client MakeXsltClient(const XsltSettings& settings, const FileAccess& access, TransformationRecord& record) {
    return [&settings, &access, &record](const std::string& command, const HostServices& host) {
        return RunCommand(settings, access, command, host, record);
    };
}

}  // namespace ventrix::desk
