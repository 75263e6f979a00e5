#include "desk/toolkit/installed_toolkit.h"

#include <algorithm>
#include <cctype>
#include <filesystem>
#include <fstream>
#include <vector>

#include "desk/toolkit/run_program.h"
#include "platform/temp_folder.h"

namespace ventrix::desk {
namespace {

namespace fs = std::filesystem;

/// How to start a toolkit, or why that is not possible.
struct Toolkit {
    NativePath command;  ///< The `dita` command; empty if Ant runs the toolkit.
    NativePath ant;      ///< The `ant` command.
    NativePath folder;   ///< Contains the build file.
    std::string reason;
};

Toolkit AntToolkit(const NativePath& folder) {
    Toolkit toolkit{.command = {}, .ant = FindProgram("ant"), .folder = folder, .reason = {}};
    if (toolkit.ant.Empty()) {
        toolkit.reason = "the DITA Open Toolkit in " + folder.utf8 + " needs ant; install the package ant";
    }
    return toolkit;
}

bool HasBuildFile(const NativePath& folder) {
    std::error_code error;
    return fs::exists(ToFilesystem(folder) / "build.xml", error);
}

Toolkit ToolkitIn(const NativePath& folder) {
    Toolkit toolkit{.command = FindProgram(folder.utf8 + "/bin/dita"), .ant = {}, .folder = {}, .reason = {}};
    if (!toolkit.command.Empty()) {
        return toolkit;
    }
    if (HasBuildFile(folder)) {
        return AntToolkit(folder);
    }
    toolkit.reason = folder.utf8 + " contains no DITA Open Toolkit (neither bin/dita nor build.xml)";
    return toolkit;
}

Toolkit FindToolkit(const std::string& name) {
    const NativePath debianFolder{"/usr/share/dita-ot"};
    if (name != "installed") {
        std::error_code error;
        return ToolkitIn(FromFilesystem(fs::absolute(ToFilesystem({name}), error).lexically_normal()));
    }
    Toolkit toolkit{.command = FindProgram("dita"), .ant = {}, .folder = {}, .reason = {}};
    if (!toolkit.command.Empty()) {
        return toolkit;
    }
    if (HasBuildFile(debianFolder)) {
        return AntToolkit(debianFolder);
    }
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

std::vector<std::string> AntArguments(const Toolkit& toolkit, const DitaRun& run, const std::string& work) {
    WriteEncodings({work + "/classes"});
    std::vector<std::string> arguments{toolkit.ant.utf8, "-lib", work + "/classes"};
    AppendLibraries(arguments, toolkit.folder);
    arguments.insert(arguments.end(), {"-f", toolkit.folder.utf8 + "/build.xml",
                                       "-Dargs.input=" + run.document.utf8, "-Dtranstype=xhtml",
                                       "-Doutput.dir=" + work + "/out", "-Ddita.temp.dir=" + work + "/temp"});
    if (!run.ditaval.Empty()) {
        arguments.push_back("-Ddita.input.valfile=" + run.ditaval.utf8);
    }
    return arguments;
}

std::vector<std::string> DitaArguments(const Toolkit& toolkit, const DitaRun& run, const std::string& work) {
    std::vector<std::string> arguments{toolkit.command.utf8, "--input=" + run.document.utf8, "--format=xhtml",
                                       "--output=" + work + "/out", "--temp=" + work + "/temp"};
    if (!run.ditaval.Empty()) {
        arguments.push_back("--filter=" + run.ditaval.utf8);
    }
    return arguments;
}

/// Copies the output to its place and counts the pages.
int MoveOutput(const NativePath& from, const NativePath& to, std::string& reason) {
    std::error_code error;
    int pages = 0;
    fs::create_directories(ToFilesystem(from), error);
    for (fs::recursive_directory_iterator entry(ToFilesystem(from), error), end; entry != end;
         entry.increment(error)) {
        const std::string extension = entry->path().extension().string();
        pages += extension == ".html" || extension == ".htm" ? 1 : 0;
    }
    fs::copy(ToFilesystem(from), ToFilesystem(to),
             fs::copy_options::recursive | fs::copy_options::overwrite_existing, error);
    if (error) {
        reason = to.utf8 + " cannot be written: " + error.message();
    }
    return pages;
}

/// The line of the log that describes the failure: the last one after "BUILD FAILED", or else the first error
/// message. Empty if there is none.
/// The line without the escape sequences that colour it on a terminal.
std::string WithoutColors(const std::string& line) {
    std::string plain;
    for (std::size_t i = 0; i < line.size(); ++i) {
        if (line[i] == '\x1b' && i + 1 < line.size() && line[i + 1] == '[') {
            i = std::min(line.find('m', i), line.size());
        } else if (line[i] != '\r') {
            plain += line[i];
        }
    }
    return plain;
}

/// True if the line holds the number of an error or fatal message of the toolkit, such as DOTJ013E.
bool HoldsErrorNumber(const std::string& line) {
    for (std::size_t at = line.find("DOT"); at != std::string::npos; at = line.find("DOT", at + 1)) {
        const std::string_view number = std::string_view(line).substr(at, 8);
        if (number.size() == 8 && std::isdigit(static_cast<unsigned char>(number[4])) != 0 &&
            (number[7] == 'E' || number[7] == 'F')) {
            return true;
        }
    }
    return false;
}

bool ReportsError(const std::string& line) {
    return line.find("[ERROR]") != std::string::npos || line.find("[FATAL]") != std::string::npos ||
           HoldsErrorNumber(line);
}

std::string FailureIn(const NativePath& logFile) {
    std::ifstream log(ToFilesystem(logFile));
    std::string failure;
    bool failed = false;
    for (std::string line; std::getline(log, line);) {
        failed = failed || line.starts_with("BUILD FAILED");
        const bool describes = failed ? !line.empty() && !line.starts_with("Total time")
                                      : line.find("[FATAL]") != std::string::npos ||
                                            line.find("[ERROR]") != std::string::npos ||
                                            line.starts_with("Error:");
        if (describes && (failed || failure.empty())) {
            failure = line;
        }
    }
    return failure.substr(std::min(failure.find_first_not_of(' '), failure.size()));
}

std::string Outcome(const platform::ProgramEnd& end, int pages, const NativePath& logFile) {
    if (!end.notStarted.empty()) {
        return end.notStarted;
    }
    const std::string failure = FailureIn(logFile);
    if (end.signal != 0) {
        return "the DITA Open Toolkit was terminated by signal " + std::to_string(end.signal);
    }
    if (end.exitCode != 0) {
        return "the DITA Open Toolkit failed with exit status " + std::to_string(end.exitCode) +
               (failure.empty() ? "" : ": " + failure);
    }
    return pages == 0 ? "the DITA Open Toolkit wrote no page" + (failure.empty() ? "" : ": " + failure)
                      : std::string();
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

std::vector<std::string> ToolkitErrors(const NativePath& logFile) {
    std::vector<std::string> errors;
    std::ifstream log(ToFilesystem(logFile));
    for (std::string line; std::getline(log, line);) {
        line = WithoutColors(line);
        if (ReportsError(line)) {
            errors.push_back(line.substr(line.find_first_not_of(' ')));
        }
    }
    return errors;
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
    const bool ant = toolkit.command.Empty();
    std::vector<std::string> arguments =
        ant ? AntArguments(toolkit, run, work) : DitaArguments(toolkit, run, work);
    // With these, topics outside the map's folder are published in the corresponding folders of the output.
    arguments.insert(arguments.end(), {"-Dgenerate.copy.outer=3", "-Douter.control=quiet"});
    run.log("toolkit " + (ant ? toolkit.folder : toolkit.command).utf8);
    const platform::ProgramEnd end = RunProgram(arguments, logFile);
    std::string unwritten;
    const int pages = MoveOutput({work + "/out"}, run.pages, unwritten);
    const std::string reason = Outcome(end, pages, logFile);
    return reason.empty() ? unwritten : reason;
}

}  // namespace ventrix::desk
