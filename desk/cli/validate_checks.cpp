#include "desk/cli/validate_checks.h"

#include <algorithm>
#include <cstdlib>
#include <iterator>
#include <set>

#include "desk/cli/file_findings.h"
#include "desk/cli/path_options.h"
#include "desk/toolkit/builtin_toolkit.h"
#include "desk/xml/file_access.h"
#include "desk/xml/lenient_load.h"
#include "platform/files.h"

namespace ventrix::desk {
namespace {

constexpr char kRefersTo[] = "refers to ";

/// One line of a file, without its line break; empty if the file has fewer.
std::string LineOf(const std::string& content, int number) {
    std::size_t start = 0;
    for (int line = 1; line < number; ++line) {
        start = content.find('\n', start);
        if (start == std::string::npos) {
            return {};
        }
        ++start;
    }
    return content.substr(start, content.find_first_of("\r\n", start) - start);
}

/// Where the only occurrence of a word starts; npos if there is none, or more than one.
std::size_t OnlyPlaceOf(const std::string& line, const std::string& word) {
    const std::size_t first = line.find(word);
    return first == std::string::npos || line.find(word, first + 1) != std::string::npos ? std::string::npos
                                                                                         : first;
}

bool IsContinuation(char c) {
    return (static_cast<unsigned char>(c) & 0xC0U) == 0x80U;
}

/// The column of a byte, in characters from 1.
int ColumnAt(const std::string& line, std::size_t byte) {
    const auto continued =
        std::count_if(line.begin(), line.begin() + static_cast<std::ptrdiff_t>(byte), IsContinuation);
    return static_cast<int>(byte - static_cast<std::size_t>(continued)) + 1;
}

/// What the line of the source contains at the place of the finding; empty if that is not known. The parser
/// keeps the lines of elements only, so the column is found by this text.
std::string SourceTextOf(const Finding& finding) {
    if (finding.text.starts_with(kRefersTo)) {
        const std::string path = finding.text.substr(0, finding.text.find(", which"));
        return path.substr(path.find_last_of('/') + 1);
    }
    if (finding.code == kBrokenLink) {
        return " href=";
    }
    const std::size_t equals = finding.text.find("=\"");
    const bool isAttribute = equals != std::string::npos && finding.text.find_first_of(" :") > equals;
    return isAttribute ? ' ' + finding.text.substr(0, equals + 1) : std::string();
}

/// Adds the columns that the lines of the sources show.
void AddColumns(std::vector<Finding>& findings) {
    NativePath file;
    std::string content;
    for (Finding& finding : findings) {
        const std::string text = SourceTextOf(finding);
        if (finding.line == 0 || finding.column > 0 || text.empty()) {
            continue;
        }
        if (file != finding.file) {
            file = finding.file;
            content.clear();
            platform::ReadWholeFile(file.utf8, content);
        }
        const std::string line = LineOf(content, finding.line);
        if (const std::size_t at = OnlyPlaceOf(line, text); at != std::string::npos) {
            finding.column = ColumnAt(line, text.starts_with(' ') ? at + 1 : at);
        }
    }
}

/// Whether the module encodes the file, and so must be able to load it.
bool IsEncoded(const DocumentFile& file) {
    const std::string& name = file.path.utf8;
    return file.key == kDocumentKey && !file.opaque && !file.dtd &&
           (name.ends_with(".xml") || name.ends_with(".dita") || name.ends_with(".ditamap"));
}

bool HasNoDtd(const xmlDoc* document) {
    const xmlDtd* dtd = document == nullptr ? nullptr : document->intSubset;
    return dtd == nullptr || (dtd->ExternalID == nullptr && dtd->SystemID == nullptr);
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
                {file.path, loaded.line, kNotReadable, kProblem + loaded.reason, loaded.column});
        } else if (!loaded.undeclaredEntities.empty() && HasNoDtd(loaded.document.get())) {
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
    std::vector<Finding> found;
    DitaRun run;
    run.document = session.document;
    run.pages = {FolderOf(session.document).utf8 + "xhtml/"};
    run.log = [](const std::string&) {};
    run.unread = [&unread](const std::string& line) { unread.insert(line); };
    run.finding = [&found](const DitaFinding& one) {
        found.push_back({one.file, one.line, one.rule, one.text});
    };
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
            findings.push_back({session.document, 0, "not-transformed", line});
        }
    }
    std::ranges::copy_if(found, std::back_inserter(findings), [&options](const Finding& finding) {
        return finding.code != kNotHandled || options.common.toolkit == "builtin";
    });
}

}  // namespace

std::vector<Finding> MissingReferences(const DocumentFiles& files, const std::vector<NativePath>& missing) {
    const std::set<NativePath> unread(missing.begin(), missing.end());
    std::vector<Finding> findings;
    for (const DocumentFile& file : files.files) {
        if (unread.contains(file.path) && !file.referrer.Empty()) {
            findings.push_back({file.referrer, file.line, "missing",
                                kRefersTo + file.path.utf8 + ", which is missing or unreadable"});
        } else if (unread.contains(file.path)) {
            findings.push_back({file.path, 0, "missing", "is missing or unreadable"});
        }
    }
    AddColumns(findings);
    return findings;
}

std::vector<Finding> PublishProblems(const Session& session, const Options& options,
                                     const std::vector<NativePath>& missing) {
    std::vector<Finding> findings;
    AddUnreadable(session.files, findings);
    if (session.files.dita) {
        std::vector<Finding> named = findings;
        AddMissingFiles(session.files, missing, named);
        AddToolkitFindings(session, options, named, findings);
    }
    AddColumns(findings);
    return findings;
}

}  // namespace ventrix::desk
