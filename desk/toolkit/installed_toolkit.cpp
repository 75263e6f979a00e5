#include "desk/toolkit/installed_toolkit.h"

#include <algorithm>
#include <cctype>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string_view>
#include <vector>

#include "desk/documents/document_files.h"
#include "desk/toolkit/java_text.h"
#include "desk/toolkit/run_program.h"
#include "desk/toolkit/toolkit_filter.h"
#include "desk/toolkit/toolkit_log.h"
#include "desk/xml/lenient_load.h"
#include "platform/native_files.h"
#include "platform/native_roots.h"
#include "platform/temp_folder.h"

namespace ventrix::desk {
namespace {

namespace fs = std::filesystem;

/// How to start a toolkit, or why that is not possible.
struct Toolkit {
    NativePath command;    ///< The `dita` command; empty if Ant runs the toolkit.
    bool runnable = true;  ///< The command may be executed; if not, the shell runs it.
    NativePath ant;        ///< The `ant` command.
    NativePath folder;     ///< Contains the build file.
    std::string reason;
};

bool IsFile(const NativePath& path) {
    std::error_code error;
    return fs::is_regular_file(ToFilesystem(path), error);
}

Toolkit AntToolkit(const NativePath& folder) {
    Toolkit toolkit;
    toolkit.ant = FindProgram("ant");
    toolkit.folder = folder;
    if (toolkit.ant.Empty()) {
        toolkit.reason = "the DITA Open Toolkit in " + folder.utf8 + " needs ant; install the package ant";
    }
    return toolkit;
}

Toolkit CommandToolkit(const NativePath& command) {
    Toolkit toolkit;
    toolkit.command = command;
    toolkit.runnable = !FindProgram(command.utf8).Empty();
    return toolkit;
}

bool HasBuildFile(const NativePath& folder) {
    return IsFile({folder.utf8 + "/build.xml"});
}

/// `place` is the folder of a toolkit or its `dita` command.
Toolkit ToolkitAt(const NativePath& place) {
    const std::string command = "/bin/dita" + std::string(platform::StartScriptSuffix());
    for (const NativePath& candidate : {place, NativePath{place.utf8 + command}}) {
        if (IsFile(candidate)) {
            return CommandToolkit(candidate);
        }
    }
    if (HasBuildFile(place)) {
        return AntToolkit(place);
    }
    Toolkit toolkit;
    toolkit.reason = place.utf8 + " contains no DITA Open Toolkit (neither bin/dita nor build.xml)";
    return toolkit;
}

Toolkit FindToolkit(const std::string& name) {
    const NativePath debianFolder{"/usr/share/dita-ot"};
    if (name != "installed") {
        return ToolkitAt(AbsolutePath({name}));
    }
    if (const NativePath command = FindProgram("dita"); !command.Empty()) {
        return CommandToolkit(command);
    }
    if (HasBuildFile(debianFolder)) {
        return AntToolkit(debianFolder);
    }
    Toolkit toolkit;
    toolkit.reason =
        "no DITA Open Toolkit is installed; install the packages dita-ot, ant and libxalan2-java, or "
        "name a toolkit's folder";
    return toolkit;
}

/// Works around a failure in Xalan's serialiser. It asks for each half of a surrogate pair whether the
/// encoding contains it, and if not, writes each half as a character reference, which no parser accepts. The
/// list of encodings is a resource on the class path. In this one, the entry for UTF-8 has the Java name
/// UTF-16, which contains every half; the output is still written in UTF-8.
void WriteEncodings(const NativePath& classes) {
    const fs::path package = ToFilesystem(classes) / "org/apache/xml/serializer";
    std::error_code error;
    fs::create_directories(package, error);
    std::ofstream(package / "Encodings.properties")
        << "ASCII ASCII,US-ASCII 0x007F\nISO8859_1 ISO-8859-1 0x00FF\nUTF-16 UTF-8 0x00FFFF\nUnicode UTF-16 "
           "0xFFFF\n";
}

void AppendLibraries(std::vector<std::string>& arguments, const NativePath& folder) {
    std::vector<std::string> libraries{folder.utf8 + "/lib"};
    for (const char* jar :
         {"xercesImpl", "xml-apis", "xml-resolver", "xalan2", "serializer", "commons-codec"}) {
        libraries.push_back("/usr/share/java/" + std::string(jar) + ".jar");
    }
    for (const std::string& library : libraries) {
        if (std::error_code error; fs::exists(ToFilesystem({library}), error)) {
            arguments.insert(arguments.end(), {"-lib", library});
        }
    }
}

/// The start script of a toolkit, and Ant's, hand their arguments to the shell a second time. The path of the
/// property file is therefore the only one among the arguments, and must mean nothing to the shell past its
/// root.
bool IsSafeArgument(const std::string& path) {
    return std::ranges::all_of(path.substr(platform::NativeRootLength(path)), [](unsigned char c) {
        return std::isalnum(c) != 0 ||
               std::string_view("/._-+,@~").find(static_cast<char>(c)) != std::string_view::npos;
    });
}

std::string JoinedUris(const std::vector<NativePath>& files) {
    std::string joined;
    for (const NativePath& file : files) {
        joined += (joined.empty() ? "" : std::string(1, platform::PathListSeparator())) + JavaFileUri(file);
    }
    return joined;
}

constexpr char kMisreadByOldToolkit[] = "%#?\"&<>";

/// The folder down to the last one whose name an old toolkit would misread, without a closing slash; empty if
/// there is none.
std::string MisreadFolder(const NativePath& document) {
    const std::size_t sign = FolderOf(document).utf8.find_last_of(kMisreadByOldToolkit);
    return sign == std::string::npos ? std::string() : document.utf8.substr(0, document.utf8.find('/', sign));
}

/// The first map or topic that an old toolkit would misread, although it reads `folder` by another name.
NativePath MisreadFile(const NativePath& document, const std::string& folder) {
    const DocumentFiles listed = ListDocumentFiles(document);
    for (const DocumentFile& file : listed.files) {
        const std::string& path = file.path.utf8;
        const std::size_t start = path.starts_with(folder + '/') ? folder.size() : 0;
        const bool isDita = path.ends_with(".dita") || path.ends_with(".ditamap") || path.ends_with(".xml");
        if (isDita && !file.opaque && path.find_first_of(kMisreadByOldToolkit, start) != std::string::npos) {
            return file.path;
        }
    }
    return {};
}

/// Old toolkits read "%", "#" and "?" in a path as parts of a URI and write quotes and signs of XML into
/// attributes as they are. A link to the last folder whose name contains one avoids that. Returns the path to
/// use; empty, with the reason, if another name contains one.
NativePath ReadableByOldToolkit(const NativePath& document, const std::string& work, std::string& reason) {
    const std::string folder = MisreadFolder(document);
    const NativePath misread = MisreadFile(document, folder);
    if (!misread.Empty()) {
        reason = misread.utf8 +
                 ": this old DITA Open Toolkit cannot read a file with one of % # ? \" & < > in its name; "
                 "rename the file or use a newer toolkit";
        return {};
    }
    if (folder.empty()) {
        return document;
    }
    std::error_code error;
    fs::create_directory_symlink(ToFilesystem({folder}), work + "/in", error);
    return {work + "/in" + document.utf8.substr(folder.size())};
}

/// Everything that the run is about. Newer toolkits take the input as a URI; older ones only as a path. The
/// filter has two names, of which each toolkit knows at least one.
std::string Properties(const std::string& input, const DitaRun& run, const std::string& work,
                       const NativePath& filter) {
    std::string lines = PropertyLine("args.input", input) + PropertyLine("transtype", run.transtype) +
                        PropertyLine("output.dir", work + "/out") +
                        PropertyLine("dita.temp.dir", work + "/temp");
    // With these, topics outside the map's folder are published in the corresponding folders of the output.
    lines += PropertyLine("generate.copy.outer", "3") + PropertyLine("outer.control", "quiet");
    if (!filter.Empty()) {
        lines += PropertyLine("args.filter", filter.utf8) + PropertyLine("dita.input.valfile", filter.utf8);
    }
    if (!run.resources.empty()) {
        lines += PropertyLine("args.resources", JoinedUris(run.resources));
    }
    for (const auto& [name, value] : run.parameters) {
        lines += PropertyLine(name, value);
    }
    return lines;
}

/// Writes the property file and the filter. Returns why not, one line; empty on success.
std::string WriteProperties(const Toolkit& toolkit, const DitaRun& run, const std::string& work) {
    std::string problem;
    const NativePath filter =
        run.filters.empty() ? NativePath{} : WriteToolkitFilter(run.filters, {work}, problem);
    const std::string input = toolkit.command.Empty() ? ReadableByOldToolkit(run.document, work, problem).utf8
                                                      : JavaFileUri(run.document);
    if (problem.empty() && !WriteOutput({work + "/run.properties"}, Properties(input, run, work, filter))) {
        problem = work + " cannot be written; check the free space";
    }
    return problem;
}

/// A filter that is read is reported in the log only if the log is verbose.
std::vector<std::string> Arguments(const Toolkit& toolkit, const std::string& work, bool verbose) {
    const std::string properties = work + "/run.properties";
    if (!toolkit.command.Empty()) {
        std::vector<std::string> arguments{toolkit.command.utf8, "--propertyfile=" + properties};
        if (!toolkit.runnable) {
            arguments.insert(arguments.begin(), "/bin/sh");
        }
        if (verbose) {
            arguments.push_back("--verbose");
        }
        return arguments;
    }
    WriteEncodings({work + "/classes"});
    std::vector<std::string> arguments{toolkit.ant.utf8, "-lib", work + "/classes"};
    AppendLibraries(arguments, toolkit.folder);
    arguments.insert(arguments.end(),
                     {"-f", toolkit.folder.utf8 + "/build.xml", "-propertyfile", properties});
    return arguments;
}

/// Copies the output to its place and counts the pages.
int MoveOutput(const NativePath& from, const NativePath& to, std::string& reason) {
    std::error_code error;
    int pages = 0;
    const fs::path source = ToFilesystem(from);
    fs::create_directories(source, error);
    for (fs::recursive_directory_iterator entry(source, error), end; !error && entry != end;
         entry.increment(error)) {
        const fs::path target = ToFilesystem(to) / entry->path().lexically_relative(source);
        if (entry->is_directory()) {
            fs::create_directories(target, error);
            continue;
        }
        const fs::path extension = target.extension();
        pages += extension == ".html" || extension == ".htm" ? 1 : 0;
        error = platform::CopyReplacing(entry->path(), target);
    }
    if (error) {
        reason = to.utf8 + " cannot be written: " + error.message();
    }
    return pages;
}

/// What a program appended to the log since `offset`, without colours. Takes them out of the log too, which
/// is kept as a text file.
std::string PlainOutputSince(const NativePath& logFile, std::uint64_t offset) {
    const fs::path path = ToFilesystem(logFile);
    std::ifstream log(path, std::ios::binary);
    log.seekg(static_cast<std::streamoff>(offset));
    const std::string output{std::istreambuf_iterator<char>(log), std::istreambuf_iterator<char>()};
    std::string plain = WithoutColors(output);
    if (plain.size() == output.size()) {
        return plain;
    }
    std::fstream changed(path, std::ios::binary | std::ios::in | std::ios::out);
    changed.seekp(static_cast<std::streamoff>(offset));
    if (changed << plain << std::flush) {
        std::error_code error;
        fs::resize_file(path, offset + plain.size(), error);
    }
    return plain;
}

std::string Outcome(const platform::ProgramEnd& end, int pages, const std::vector<std::string>& lines) {
    if (!end.notStarted.empty()) {
        return end.notStarted;
    }
    if (end.signal != 0) {
        return "the DITA Open Toolkit was terminated by signal " + std::to_string(end.signal) + ": " +
               FailureIn(lines);
    }
    if (end.exitCode != 0) {
        return "the DITA Open Toolkit failed with exit status " + std::to_string(end.exitCode) + ": " +
               FailureIn(lines);
    }
    return pages == 0 ? "the DITA Open Toolkit wrote no page: " + FailureIn(lines) : std::string();
}

void ReportErrors(const DitaRun& run, const NativePath& logFile, const std::vector<std::string>& lines) {
    for (const std::string& line : ToolkitErrors(lines)) {
        run.finding({logFile, 0, line});
    }
    if (!run.filters.empty() && std::ranges::none_of(lines, ShowsFilterWasRead)) {
        run.finding({logFile, 0,
                     "the toolkit's log does not show that it read the filter; check that the pages contain "
                     "nothing that the filter excludes"});
    }
}

/// A project file in JSON or YAML, which begins its lists with one of these keys.
bool IsTextProject(const NativePath& file) {
    constexpr std::uint64_t kMaxBytes = 1 << 20;
    const std::string extension = FromFilesystem(ToFilesystem(file).extension()).utf8;
    const bool isJson = extension == ".json";
    std::string content;
    if ((!isJson && extension != ".yaml" && extension != ".yml") ||
        platform::ReadRegularFile(ToFilesystem(file), kMaxBytes, content)) {
        return false;
    }
    const auto isKeyIn = [isJson, text = '\n' + content](const std::string& key) {
        return text.find(isJson ? '"' + key + '"' : '\n' + key + ':') != std::string::npos;
    };
    constexpr const char* kKeys[] = {"deliverables", "publications", "contexts", "includes"};
    return std::ranges::any_of(kKeys, isKeyIn);
}

bool IsXmlProject(const NativePath& file) {
    const LenientDocument loaded = LoadLeniently(file);
    const xmlNode* root = loaded.document == nullptr ? nullptr : xmlDocGetRootElement(loaded.document.get());
    return root != nullptr && View(root->name) == "project" && root->ns != nullptr &&
           View(root->ns->href) == "https://www.dita-ot.org/project";
}

}  // namespace

std::string ToolkitProblem(const std::string& toolkit) {
    return FindToolkit(toolkit).reason;
}

std::string DescribeToolkit(const std::string& toolkit) {
    if (toolkit == "builtin") {
        return "built-in";
    }
    const Toolkit found = FindToolkit(toolkit);
    return "DITA Open Toolkit, " + (found.command.Empty() ? found.folder : found.command).utf8;
}

bool IsToolkitProject(const NativePath& file) {
    return IsTextProject(file) || IsXmlProject(file);
}

std::string RunInstalledToolkit(const DitaRun& run, const std::string& toolkitName,
                                const NativePath& logFile) {
    const Toolkit toolkit = FindToolkit(toolkitName);
    if (!toolkit.reason.empty()) {
        return toolkit.reason;
    }
    const platform::TemporaryFolder folder("ventrix-dita");
    if (folder.Path().empty()) {
        return folder.Problem();
    }
    const std::string& work = folder.Path();
    if (!IsSafeArgument(work)) {
        return "the folder for temporary files, " + work +
               ", has a name that the toolkit's start script would misread; set " +
               std::string(platform::TemporaryFolderVariable()) +
               " to one whose name has only letters, digits and \"_\"";
    }
    if (std::string problem = WriteProperties(toolkit, run, work); !problem.empty()) {
        return problem;
    }
    run.log("toolkit " + (toolkit.command.Empty() ? toolkit.folder : toolkit.command).utf8);
    std::error_code error;
    const std::uint64_t offset = fs::file_size(ToFilesystem(logFile), error);
    const platform::ProgramEnd end = RunProgram(Arguments(toolkit, work, !run.filters.empty()), logFile);
    const std::vector<std::string> lines = LogLines(PlainOutputSince(logFile, offset));
    std::string unwritten;
    const int pages = MoveOutput({work + "/out"}, run.pages, unwritten);
    ReportErrors(run, logFile, lines);
    const std::string reason = Outcome(end, pages, lines);
    return reason.empty() ? unwritten : reason;
}

}  // namespace ventrix::desk
