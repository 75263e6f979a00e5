#include "desk/clients/saxon.h"

#include <libxml/catalog.h>

#include <algorithm>
#include <filesystem>
#include <fstream>

#include "desk/script/package_state.h"
#include "desk/toolkit/run_program.h"
#include "desk/xml/html_text.h"
#include "desk/xml/lenient_load.h"
#include "desk/xml/reference_path.h"
#include "platform/files.h"
#include "platform/temp_folder.h"

namespace ventrix::desk {
namespace {

namespace fs = std::filesystem;

constexpr std::string_view kXslt = "http://www.w3.org/1999/XSL/Transform";
constexpr const char* kFolder = "/usr/share/java/";

/// The program with what it needs to resolve DTDs through the catalogs; empty if it is not installed.
std::string ClassPath() {
    std::string classPath;
    std::error_code error;
    for (const char* jar : {"Saxon-HE.jar", "xml-resolver.jar", "xml-commons-resolver.jar"}) {
        const std::string path = std::string(kFolder) + jar;
        if (fs::exists(path, error)) {
            classPath += (classPath.empty() ? "" : ":") + path;
        } else if (classPath.empty()) {
            return {};
        }
    }
    return classPath;
}

bool IsXslt(const xmlNode* node, std::string_view name) {
    return node != nullptr && node->type == XML_ELEMENT_NODE && node->ns != nullptr &&
           View(node->ns->href) == kXslt && View(node->name) == name;
}

/// Where the DTD of a document is: through the catalogs, which include the user's, else beside the document.
/// Empty if it is missing.
NativePath DtdOf(const xmlDtd& declared, const NativePath& document) {
    const XmlString found(xmlCatalogResolve(declared.ExternalID, declared.SystemID));
    const std::string reference(View(found == nullptr ? declared.SystemID : found.get()));
    const NativePath folder{FromFilesystem(ToFilesystem(document).parent_path()).utf8 + '/'};
    const NativePath file = TargetOf(reference, folder).path;
    std::error_code error;
    return fs::is_regular_file(ToFilesystem(file), error) ? file : NativePath{};
}

/// The entry for the DTD of the document. One that is missing is replaced by an empty one, as libxslt does
/// without it: a parser in Java would refuse the document.
std::string DtdEntry(const NativePath& document) {
    const LenientDocument loaded = LoadLeniently(document);
    const xmlDtd* declared = loaded.document == nullptr ? nullptr : loaded.document->intSubset;
    if (declared == nullptr || View(declared->SystemID).empty()) {
        return {};
    }
    const NativePath file = DtdOf(*declared, document);
    if (file.Empty()) {
        const std::string_view id = View(declared->SystemID);
        return "<systemSuffix systemIdSuffix=\"" + EscapedXml(id.substr(id.rfind('/') + 1)) +
               "\" uri=\"empty.dtd\"/>";
    }
    if (View(declared->ExternalID).empty()) {
        return {};
    }
    return "<public publicId=\"" + EscapedXml(View(declared->ExternalID)) + "\" uri=\"" +
           EscapedXml(FileUri(file)) + "\"/>";
}

/// Writes the catalog for a run.
NativePath WriteCatalog(const NativePath& document, const std::string& folder) {
    const std::ofstream empty(ToFilesystem({folder + "/empty.dtd"}));
    NativePath catalog{folder + "/catalog.xml"};
    std::ofstream(ToFilesystem(catalog))
        << "<catalog xmlns=\"urn:oasis:names:tc:entity:xmlns:xml:catalog\">" << DtdEntry(document)
        << "<nextCatalog catalog=\"file:///etc/xml/catalog\"/></catalog>";
    return catalog;
}

std::vector<std::string> Arguments(const SaxonJob& job, const NativePath& catalog) {
    std::vector<std::string> arguments{FindProgram("java").utf8,
                                       "-cp",
                                       ClassPath(),
                                       "net.sf.saxon.Transform",
                                       "-xi:on",
                                       "-s:" + FileUri(job.source),
                                       "-xsl:" + FileUri(job.stylesheet),
                                       "-o:" + job.output.utf8};
    if (ClassPath().find("resolver") != std::string::npos) {
        arguments.push_back("-catalog:" + FileUri(catalog));
    }
    for (const auto& [name, value] : job.strings) {
        arguments.push_back(name + '=' + value);
    }
    for (const auto& [name, expression] : job.expressions) {
        arguments.push_back('?' + name + '=' + expression);
    }
    return arguments;
}

/// The first parameter whose expression cannot be evaluated, which Saxon's messages do not name; empty if all
/// can. The expression is evaluated by itself, as Saxon does for a stylesheet.
std::string FaultyParameter(const SaxonJob& job, const std::string& folder) {
    const auto isFaulty = [&folder](const auto& parameter) {
        const platform::ProgramEnd end =
            RunProgram({FindProgram("java").utf8, "-cp", ClassPath(), "net.sf.saxon.Query",
                        "-qs:" + parameter.second, "-o:" + folder + "/value"},
                       {folder + "/value-messages"});
        return end.exitCode != 0;
    };
    const auto faulty = std::ranges::find_if(job.expressions, isFaulty);
    return faulty == job.expressions.end() ? std::string() : faulty->first;
}

/// Passes the lines on. Returns those that describe a failure: the last one that names an error, with the
/// lines before and after it, as a stylesheet that ends itself has given its reason before; else the last
/// line.
std::string PassOn(const NativePath& file, const MessageSink& messages) {
    std::ifstream lines(ToFilesystem(file));
    std::string error, last;
    bool explains = false;
    for (std::string line; std::getline(lines, line);) {
        const std::size_t begin = line.find_first_not_of(' ');
        if (begin == std::string::npos) {
            continue;
        }
        line.erase(0, begin);
        messages(line);
        const bool isError = line.starts_with("Error");
        error = isError ? last + (last.empty() ? "" : ": ") + line : explains ? error + " " + line : error;
        explains = isError;
        last = line;
    }
    return error.empty() ? last : error;
}

/// Saxon's HTML is not XML, and its scripts in XHTML are not what a browser runs. The first file that cannot
/// be written, or empty.
std::string RewritePage(const NativePath& file) {
    std::string content;
    if (platform::ReadWholeFile(file.utf8, content) != platform::kErrorNone) {
        return {};  // The module reports a page that it cannot read.
    }
    const std::string page = XhtmlOfPage(content);
    return page.empty() || WriteOutput(file, page)
               ? std::string()
               : file.utf8 + " cannot be written; check its permissions and the free space";
}

bool IsPage(const NativePath& file) {
    return file.utf8.ends_with(".html") || file.utf8.ends_with(".htm");
}

/// Those of the run's pages that are in the folder, and its main output wherever it is.
std::string RewritePages(const SaxonJob& job, const std::vector<PackageFile>& before) {
    std::string problem = RewritePage(job.output);
    for (const PackageFile& file : ListPackage(job.outputFolder.utf8)) {
        const NativePath path{job.outputFolder.utf8 + '/' + file.name};
        const bool isNew = std::ranges::find(before, file) == before.end();
        if (problem.empty() && isNew && IsPage(path) && path != job.output) {
            problem = RewritePage(path);
        }
    }
    return problem;
}

}  // namespace

std::string VersionOf(const NativePath& stylesheet) {
    const LenientDocument loaded = LoadLeniently(stylesheet);
    const xmlNode* root = loaded.document == nullptr ? nullptr : xmlDocGetRootElement(loaded.document.get());
    if (!IsXslt(root, "stylesheet") && !IsXslt(root, "transform")) {
        return {};
    }
    return Attribute(root, "version");
}

bool IsNewerVersion(const std::string& version) {
    return !version.empty() && version != "1.0" && version != "1.1";
}

std::string SaxonProblem() {
    if (ClassPath().empty()) {
        return "it needs Saxon; install the package libsaxonhe-java";
    }
    return FindProgram("java").Empty() ? "it needs Java; install the package default-jre-headless"
                                       : std::string();
}

std::string RunSaxon(const SaxonJob& job, const MessageSink& messages) {
    if (std::string problem = SaxonProblem(); !problem.empty()) {
        return problem;
    }
    const platform::TemporaryFolder folder("ventrix-saxon");
    if (folder.Path().empty()) {
        return folder.Problem();
    }
    std::error_code error;
    fs::create_directories(ToFilesystem(job.output).parent_path(), error);
    const std::vector<PackageFile> before = ListPackage(job.outputFolder.utf8);
    const NativePath messageFile{folder.Path() + "/messages"};
    const platform::ProgramEnd end =
        RunProgram(Arguments(job, WriteCatalog(job.source, folder.Path())), messageFile);
    const std::string first = PassOn(messageFile, messages);
    if (!end.notStarted.empty()) {
        return end.notStarted;
    }
    if (end.signal != 0 || end.exitCode != 0) {
        if (const std::string name = FaultyParameter(job, folder.Path()); !name.empty()) {
            return "the parameter " + name + " cannot be evaluated: " + first;
        }
        return "the stylesheet " + job.stylesheet.utf8 + " failed on " + job.source.utf8 +
               (first.empty() ? "" : ": " + first);
    }
    return RewritePages(job, before);
}

}  // namespace ventrix::desk
