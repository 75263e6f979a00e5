// Times a publish of 3,000 topics beside `cp -r` of the same files, and its steps beside a transformation by
// the built-in toolkit. Elapsed time, the lower quartile of several rounds.
#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <map>
#include <stdexcept>
#include <string>
#include <vector>

#include "bench/documents.h"
#include "bench/quartile.h"
#include "desk/toolkit/builtin_toolkit.h"
#include "pipeline/coding_steps.h"
#include "pipeline/packaging.h"
#include "platform/drives.h"
#include "support/test_folder.h"
#include "support/test_host.h"

namespace ventrix::bench {
namespace {

namespace fs = std::filesystem;
using test::TestFolder;

constexpr int kTopics = 3000;
constexpr std::size_t kElements = 150;
constexpr int kRounds = 5;
constexpr std::uint32_t kDocument = 7;

/// Seconds of each round, by what was timed.
using Times = std::map<std::string, std::vector<double>>;

void Require(bool done, const std::string& what) {
    if (!done) {
        throw std::runtime_error(what);
    }
}

/// Writes a map and its topics to "source/". Their paths in system notation, the map first.
std::vector<std::string> WriteDocument(const TestFolder& folder) {
    std::string map = "<map><title>Topics</title>";
    std::vector<std::string> paths = {folder.System("source/topics.ditamap")};
    for (int number = 0; number < kTopics; ++number) {
        const std::string name = "t" + std::to_string(number) + ".dita";
        map += "<topicref href=\"" + name + "\"/>";
        folder.Write("source/" + name, MakeTopic(kElements));
        paths.push_back(folder.System("source/" + name));
    }
    folder.Write("source/topics.ditamap", map + "</map>");
    return paths;
}

/// What was written before is on the disk first, since the system would write it during the operation.
template <typename Operation>
void Time(Times& times, const std::string& name, const Operation& operation) {
    ::sync();
    const auto start = std::chrono::steady_clock::now();
    operation();
    times[name].push_back(std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count());
}

std::string EmptyOutput(const TestFolder& folder) {
    fs::remove_all(folder.Native("out"));
    fs::create_directory(folder.Native("out"));
    return folder.System("out") + '\\';
}

void CopyFolder(const TestFolder& folder) {
    const std::string command = "cp -r '" + folder.Native("source") + "' '" + folder.Native("copy") + "'";
    Require(std::system(command.c_str()) == 0, command);
}

/// The shortest publish: packages, passes over each copy and calls a script that does nothing.
void PublishWithScript(test::TestHost& host, const TestFolder& folder, const std::string& output) {
    const std::string reply =
        host.Request("Publish -docId 7 -outputFolder " + output + " -logFile " + folder.System("log.txt") +
                     " -usePostScript " + folder.System("nothing"));
    Require(reply.starts_with("0 \"" + output), "the reply to Publish: " + reply);
}

void Transform(const TestFolder& folder, const Path& document) {
    desk::DitaRun run;
    run.document = {platform::ToNative(document)};
    run.pages = {folder.Native("out") + "/pages/"};
    run.log = [](const std::string&) {};
    fs::create_directories(run.pages.utf8);
    const std::string problem = desk::RunBuiltinToolkit(run, {VENTRIX_STYLESHEET});
    Require(problem.empty(), "the transformation: " + problem);
}

/// The steps of a publish in their order, as the module takes them.
void PublishInSteps(Times& times, const TestFolder& folder, const std::string& output) {
    const std::string log = folder.System("log.txt");
    FileList packaged;
    Path document;
    Time(times, "package", [&] {
        Require(PackageFiles(kDocument, output, log, packaged, document) == kPackageBuilt, "the package");
    });
    PublishParams params;
    params.attributes = {"audience", "product", "platform", "props"};
    params.elements = {"uicontrol"};
    params.packageBase = document;
    Time(times, "encode", [&] { EncodeFileSet(packaged, params, log); });
    Time(times, "transform", [&] { Transform(folder, document); });
    Time(times, "decode", [&] { DecodeOutput(output, params, log); });
}

void Report(const Times& times) {
    const auto seconds = [&](const std::string& name) { return LowerQuartile(times.at(name)); };
    const double module = seconds("package") + seconds("encode") + seconds("decode");
    const double whole = module + seconds("transform");
    std::printf("%d topics of %zu elements\n", kTopics, kElements);
    for (const auto& [name, rounds] : times) {
        std::printf("%-10s %6.2f s, %5.2f of cp -r\n", name.c_str(), seconds(name),
                    seconds(name) / seconds("cp -r"));
    }
    std::printf("share of the module in a publish with the built-in toolkit: %.0f %%\n",
                100 * module / whole);
}

void Run() {
    const TestFolder folder;
    test::LinkedHost host;
    const std::vector<std::string> paths = WriteDocument(folder);
    host.documents[kDocument].path = paths[0];
    for (const std::string& path : paths) {
        host.documents[kDocument].files.push_back(test::Document(path));
    }
    folder.WriteProgram("nothing", "#!/bin/sh\n");
    Times times;
    for (int round = 0; round < kRounds; ++round) {
        fs::remove_all(folder.Native("copy"));
        Time(times, "cp -r", [&] { CopyFolder(folder); });
        std::string output = EmptyOutput(folder);
        Time(times, "script", [&] { PublishWithScript(host, folder, output); });
        output = EmptyOutput(folder);
        PublishInSteps(times, folder, output);
    }
    Report(times);
}

}  // namespace
}  // namespace ventrix::bench

int main() {
    try {
        ventrix::bench::Run();
        return 0;
    } catch (const std::exception& problem) {
        std::fprintf(stderr, "time_publish: %s\n", problem.what());
        return 2;
    }
}
