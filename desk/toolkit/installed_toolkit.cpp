#include "desk/toolkit/installed_toolkit.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <vector>

#include "desk/toolkit/run_program.h"
#include "platform/temp_folder.h"

namespace ventrix::desk {
namespace {

namespace fs = std::filesystem;

/// A toolkit as it was found: how to start it, or why it cannot be.
struct Toolkit {
    std::string command;  ///< The `dita` command; empty for one that Ant runs.
    std::string ant;      ///< The `ant` command.
    std::string folder;   ///< Of the build file.
    std::string reason;
};

Toolkit AntToolkit(const std::string& folder) {
    Toolkit toolkit{.command = {}, .ant = FindProgram("ant"), .folder = folder, .reason = {}};
    if (toolkit.ant.empty()) {
        toolkit.reason = "the DITA Open Toolkit in " + folder + " needs ant; install the package ant";
    }
    return toolkit;
}

Toolkit ToolkitIn(const std::string& folder) {
    Toolkit toolkit{.command = FindProgram(folder + "/bin/dita"), .ant = {}, .folder = {}, .reason = {}};
    if (!toolkit.command.empty()) {
        return toolkit;
    }
    if (fs::exists(folder + "/build.xml")) {
        return AntToolkit(folder);
    }
    toolkit.reason = folder + " holds no DITA Open Toolkit: neither bin/dita nor build.xml is there";
    return toolkit;
}

Toolkit FindToolkit(const std::string& name) {
    constexpr const char* kDebianFolder = "/usr/share/dita-ot";
    if (name != "installed") {
        std::error_code error;
        return ToolkitIn(fs::absolute(name, error).lexically_normal().string());
    }
    Toolkit toolkit{.command = FindProgram("dita"), .ant = {}, .folder = {}, .reason = {}};
    if (!toolkit.command.empty()) {
        return toolkit;
    }
    if (fs::exists(std::string(kDebianFolder) + "/build.xml")) {
        return AntToolkit(kDebianFolder);
    }
    toolkit.reason =
        "no DITA Open Toolkit is installed; install the packages dita-ot, ant and libxalan2-java, or name "
        "its folder";
    return toolkit;
}

/// Xalan's serialiser tests whether an encoding has a character half by half, and writes each half of a
/// character beyond the basic plane as a reference that no parser takes. It reads its encodings from this
/// resource; with UTF-16 in UTF-8's place, the test holds for every half, and the text is still written in
/// UTF-8.
void WriteEncodings(const std::string& classes) {
    fs::create_directories(classes + "/org/apache/xml/serializer");
    std::ofstream(classes + "/org/apache/xml/serializer/Encodings.properties")
        << "ASCII ASCII,US-ASCII 0x007F\nISO8859_1 ISO-8859-1 0x00FF\nUTF-16 UTF-8 0x00FFFF\nUnicode UTF-16 "
           "0xFFFF\n";
}

void AppendLibraries(std::vector<std::string>& arguments, const std::string& folder) {
    std::vector<std::string> libraries{folder + "/lib"};
    for (const char* jar :
         {"xercesImpl", "xml-apis", "xml-resolver", "xalan2", "serializer", "commons-codec"}) {
        libraries.push_back("/usr/share/java/" + std::string(jar) + ".jar");
    }
    for (const std::string& library : libraries) {
        if (fs::exists(library)) {
            arguments.insert(arguments.end(), {"-lib", library});
        }
    }
}

std::vector<std::string> AntArguments(const Toolkit& toolkit, const DitaRun& run, const std::string& work) {
    WriteEncodings(work + "/classes");
    std::vector<std::string> arguments{toolkit.ant, "-lib", work + "/classes"};
    AppendLibraries(arguments, toolkit.folder);
    arguments.insert(arguments.end(), {"-f", toolkit.folder + "/build.xml", "-Dargs.input=" + run.document,
                                       "-Dtranstype=xhtml", "-Doutput.dir=" + work + "/out",
                                       "-Ddita.temp.dir=" + work + "/temp"});
    if (!run.ditaval.empty()) {
        arguments.push_back("-Ddita.input.valfile=" + run.ditaval);
    }
    return arguments;
}

std::vector<std::string> DitaArguments(const Toolkit& toolkit, const DitaRun& run, const std::string& work) {
    std::vector<std::string> arguments{toolkit.command, "--input=" + run.document, "--format=xhtml",
                                       "--output=" + work + "/out", "--temp=" + work + "/temp"};
    if (!run.ditaval.empty()) {
        arguments.push_back("--filter=" + run.ditaval);
    }
    return arguments;
}

/// Hands the pages over and counts them.
int MoveOutput(const std::string& from, const std::string& to, std::string& reason) {
    std::error_code error;
    int pages = 0;
    fs::create_directories(from, error);
    for (const auto& entry : fs::recursive_directory_iterator(from, error)) {
        const std::string extension = entry.path().extension().string();
        pages += extension == ".html" || extension == ".htm" ? 1 : 0;
    }
    fs::copy(from, to, fs::copy_options::recursive | fs::copy_options::overwrite_existing, error);
    if (error) {
        reason = to + " cannot be written: " + error.message();
    }
    return pages;
}

/// The line in which the toolkit tells what went wrong; empty if none does.
std::string FaultIn(const std::string& logFile) {
    std::ifstream log(logFile);
    std::string fault;
    bool failed = false;
    for (std::string line; std::getline(log, line);) {
        failed = failed || line.starts_with("BUILD FAILED");
        const bool tells = failed
                               ? !line.empty() && !line.starts_with("Total time")
                               : line.find("[FATAL]") != std::string::npos ||
                                     line.find("[ERROR]") != std::string::npos || line.starts_with("Error:");
        if (tells && (failed || fault.empty())) {
            fault = line;
        }
    }
    return fault.substr(std::min(fault.find_first_not_of(' '), fault.size()));
}

std::string Outcome(const platform::ProgramEnd& end, int pages, const std::string& logFile) {
    if (!end.notStarted.empty()) {
        return end.notStarted;
    }
    const std::string fault = FaultIn(logFile);
    if (end.signal != 0) {
        return "the DITA Open Toolkit was ended by signal " + std::to_string(end.signal);
    }
    if (end.exitCode != 0) {
        return "the DITA Open Toolkit failed with exit status " + std::to_string(end.exitCode) +
               (fault.empty() ? "" : ": " + fault);
    }
    return pages == 0 ? "the DITA Open Toolkit wrote no page" + (fault.empty() ? "" : ": " + fault)
                      : std::string();
}

}  // namespace

std::string RunInstalledToolkit(const DitaRun& run, const std::string& toolkitName,
                                const std::string& logFile) {
    const Toolkit toolkit = FindToolkit(toolkitName);
    if (!toolkit.reason.empty()) {
        return toolkit.reason;
    }
    const platform::TemporaryFolder folder("ventrix-dita");
    if (folder.Path().empty()) {
        return folder.Problem();
    }
    const std::string& work = folder.Path();
    const bool ant = toolkit.command.empty();
    std::vector<std::string> arguments =
        ant ? AntArguments(toolkit, run, work) : DitaArguments(toolkit, run, work);
    // Topics beside or above the map's folder then stay inside of the output, in the folders that they have.
    arguments.insert(arguments.end(), {"-Dgenerate.copy.outer=3", "-Douter.control=quiet"});
    run.log("toolkit " + (ant ? toolkit.folder : toolkit.command));
    const platform::ProgramEnd end = RunProgram(arguments, logFile);
    std::string unwritten;
    const int pages = MoveOutput(work + "/out", run.pages, unwritten);
    const std::string reason = Outcome(end, pages, logFile);
    return reason.empty() ? unwritten : reason;
}

}  // namespace ventrix::desk
