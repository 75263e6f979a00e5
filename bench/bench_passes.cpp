// Times the document passes next to a bare load and save by two other parsers, on the same files in the same
// run, and prints the ratios. The exit status is 1 if one exceeds its mark.
#include <benchmark/benchmark.h>
#include <libxml/parser.h>
#include <libxml/tree.h>
#include <malloc.h>
#include <sys/mman.h>

#include <cstring>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <list>
#include <pugixml.hpp>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "bench/documents.h"
#include "bench/ratio_reporter.h"
#include "markers/document_pass.h"
#include "markers/xml/dom.h"
#include "platform/drives.h"

namespace ventrix::bench {
namespace {

namespace fs = std::filesystem;

constexpr char kEncodedSuffix[] = ".encoded";

/// The folder of the run's files, removed at the end.
class WorkFolder {
  public:
    WorkFolder() : path_(fs::temp_directory_path() / ("ventrix-bench-" + std::to_string(std::clock()))) {
        fs::create_directories(path_);
    }
    ~WorkFolder() {
        std::error_code ignored;
        fs::remove_all(path_, ignored);
    }
    WorkFolder(const WorkFolder&) = delete;
    WorkFolder& operator=(const WorkFolder&) = delete;

    std::string Put(const std::string& name, const std::string& content) const {
        const std::string file = (path_ / name).string();
        std::ofstream(file, std::ios::binary) << content;
        return file;
    }

    std::string Output() const { return (path_ / "output.xml").string(); }

  private:
    fs::path path_;
};

std::string SystemPath(const std::string& native) {
    return platform::ToSystem(native).value();
}

void Require(bool done, const std::string& what) {
    if (!done) {
        throw std::runtime_error(what);
    }
}

void LibxmlLoadAndSave(const std::string& from, const std::string& to) {
    xmlDoc* document = xmlReadFile(from.c_str(), nullptr, XML_PARSE_HUGE);
    Require(document != nullptr && xmlSaveFile(to.c_str(), document) > 0, "libxml2 on " + from);
    xmlFreeDoc(document);
}

void PugixmlLoadAndSave(const std::string& from, const std::string& to) {
    pugi::xml_document document;
    const bool loaded = document.load_file(from.c_str(), pugi::parse_full | pugi::parse_ws_pcdata);
    Require(loaded && document.save_file(to.c_str(), "", pugi::format_raw | pugi::format_no_declaration),
            "pugixml on " + from);
}

void LoadAndSave(const std::string& from, const std::string& to) {
    const auto document = xml::CreateDocument();
    Require(document->load(SystemPath(from)) && document->save(SystemPath(to)), "load and save of " + from);
}

PublishParams Attributes() {
    PublishParams params;
    params.attributes = {"audience", "product", "platform", "props"};
    params.elements = {"uicontrol"};
    params.skipElements = {"mathml"};
    return params;
}

PublishParams AttributesAndXPaths() {
    PublishParams params = Attributes();
    params.addXpath = true;
    return params;
}

PublishParams Queries(std::list<std::string> queries) {
    PublishParams params = Attributes();
    params.preserveXPathList = std::move(queries);
    return params;
}

void Pass(const std::string& file, bool decode, PublishParams params) {
    std::string errorText;
    params.packageBase = SystemPath(file);
    Require(ProcessXmlFile(SystemPath(file), decode, params, errorText), errorText);
}

/// Makes the encoded file of a document when it is first needed.
void Provide(const std::string& file) {
    const std::string source = file.substr(0, file.size() - std::string(kEncodedSuffix).size());
    if (!fs::exists(file)) {
        fs::copy_file(source, file);
        Pass(file, false, Attributes());
    }
}

/// Touches more memory than an operation on the file needs, and gives it back to the system. A virtual
/// machine hands its free memory to its host, and whether an operation had to fetch it back doubled some
/// times.
void FetchMemory(const std::string& file) {
    const std::size_t size = 20 * fs::file_size(file);
    void* memory = ::mmap(nullptr, size, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    Require(memory != MAP_FAILED, "no memory for " + file);
    ::madvise(memory, size, MADV_HUGEPAGE);
    std::memset(memory, 1, size);
    ::munmap(memory, size);
}

/// Measures the processor time of `operation` on a fresh copy of the file. Elapsed time would include other
/// programs.
template <typename Operation>
void Measure(benchmark::State& state, const WorkFolder& folder, const std::string& file,
             Operation operation) {
    Provide(file);
    for (auto unused : state) {
        fs::copy_file(file, folder.Output(), fs::copy_options::overwrite_existing);
        ::malloc_trim(0);  // Else the next operation pays for the memory that this one freed.
        FetchMemory(file);
        const std::clock_t start = std::clock();
        operation(folder.Output());
        state.SetIterationTime(static_cast<double>(std::clock() - start) / CLOCKS_PER_SEC);
    }
    state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(fs::file_size(file)));
}

template <typename Operation>
void Add(const std::string& name, const WorkFolder& folder, const std::string& file, Operation operation) {
    benchmark::RegisterBenchmark(
        name.c_str(), [=, &folder](benchmark::State& state) { Measure(state, folder, file, operation); })
        ->UseManualTime()
        ->Unit(benchmark::kMillisecond);
}

/// Adds all operations on one document, named OPERATION/SHAPE.
void AddShape(const std::string& shape, const WorkFolder& folder, const std::string& content) {
    const std::string file = folder.Put(shape + ".xml", content);
    Add("libxml2/" + shape, folder, file, [](const std::string& copy) { LibxmlLoadAndSave(copy, copy); });
    Add("pugixml/" + shape, folder, file, [](const std::string& copy) { PugixmlLoadAndSave(copy, copy); });
    Add("load_save/" + shape, folder, file, [](const std::string& copy) { LoadAndSave(copy, copy); });
    Add("encode/" + shape, folder, file, [](const std::string& copy) { Pass(copy, false, Attributes()); });
    const std::string encoded = file + kEncodedSuffix;
    Add("libxml2_encoded/" + shape, folder, encoded,
        [](const std::string& copy) { LibxmlLoadAndSave(copy, copy); });
    Add("pugixml_encoded/" + shape, folder, encoded,
        [](const std::string& copy) { PugixmlLoadAndSave(copy, copy); });
    Add("decode/" + shape, folder, encoded, [](const std::string& copy) { Pass(copy, true, Attributes()); });
}

void AddXPaths(const std::string& shape, const WorkFolder& folder, const std::string& content) {
    const std::string file = folder.Put(shape + "-xpath.xml", content);
    Add("encode_xpath/" + shape, folder, file,
        [](const std::string& copy) { Pass(copy, false, AttributesAndXPaths()); });
    Add("encode_queries/" + shape, folder, file, [](const std::string& copy) {
        Pass(copy, false, Queries({"//section[@id]", "//p[@audience='expert']"}));
    });
    // Not a simple path, so that it needs a copy of the tree.
    Add("encode_function/" + shape, folder, file,
        [](const std::string& copy) { Pass(copy, false, Queries({"//section[starts-with(@id, 's')]"})); });
}

constexpr std::size_t kTopicElements = 240000;
constexpr std::size_t kWideSiblings = 100000;
constexpr std::size_t kDeepLevels = 20000;

void AddAll(const WorkFolder& folder) {
    AddShape("small", folder, MakeTopic(150));
    for (const std::size_t part : {10, 1}) {
        const std::string suffix = part == 1 ? "" : "_tenth";
        AddShape("topic" + suffix, folder, MakeTopic(kTopicElements / part));
        AddXPaths("topic" + suffix, folder, MakeTopic(kTopicElements / part));
        AddShape("wide" + suffix, folder, MakeWide(kWideSiblings / part));
        AddXPaths("wide" + suffix, folder, MakeWide(kWideSiblings / part));
        AddShape("deep" + suffix, folder, MakeDeep(kDeepLevels / part));
    }
}

std::vector<Ratio> Ratios() {
    std::vector<Ratio> ratios = {
        {"encode: attributes and elements, over libxml2 load and save", "encode/topic", "libxml2/topic", 0.3},
        {"encode: attributes and elements, over pugixml load and save", "encode/topic", "pugixml/topic", 0.9},
        {"encode: an XPath on every text node, over libxml2 load and save", "encode_xpath/topic",
         "libxml2/topic", 0.5},
        {"encode: two queries, over libxml2 load and save", "encode_queries/topic", "libxml2/topic", 1.2},
        {"encode: a query with a function, over libxml2 load and save",
         "encode_function/topic",
         "libxml2/topic",
         {}},
        {"decode, over libxml2 load and save of the encoded file", "decode/topic", "libxml2_encoded/topic",
         0.5},
        {"decode, over pugixml load and save of the encoded file", "decode/topic", "pugixml_encoded/topic",
         1.2},
        {"load and save, over libxml2", "load_save/topic", "libxml2/topic", {}},
        {"load and save, over pugixml", "load_save/topic", "pugixml/topic", {}},
        {"small document: encode, over libxml2 load and save", "encode/small", "libxml2/small", 0.8},
        {"small document: encode, over pugixml load and save", "encode/small", "pugixml/small", {}},
    };
    constexpr double kGrowth = 11;
    for (const std::string shape : {"topic", "wide", "deep"}) {
        for (const std::string operation :
             {"load_save", "encode", "decode", "encode_xpath", "encode_queries"}) {
            const std::string name = operation + '/' + shape;
            ratios.push_back({name + ": ten times the document", name, name + "_tenth", kGrowth});
        }
    }
    return ratios;
}

int Run(int argc, char** argv) {
    // In random order, disturbances affect all benchmarks alike. The caller's arguments come last and take
    // precedence.
    std::string interleave = "--benchmark_enable_random_interleaving=true";
    std::string repetitions = "--benchmark_repetitions=20";
    std::string minimum = "--benchmark_min_time=0.1";
    std::vector<char*> arguments = {argv[0], interleave.data(), repetitions.data(), minimum.data()};
    arguments.insert(arguments.end(), argv + 1, argv + argc);
    int count = static_cast<int>(arguments.size());
    benchmark::Initialize(&count, arguments.data());
    if (benchmark::ReportUnrecognizedArguments(count, arguments.data())) {
        return 2;
    }
    const WorkFolder folder;
    AddAll(folder);
    RatioReporter reporter;
    benchmark::RunSpecifiedBenchmarks(&reporter);
    std::printf("\nRatios of the lower quartiles:\n");
    return reporter.PrintRatios(Ratios()) ? 0 : 1;
}

}  // namespace
}  // namespace ventrix::bench

int main(int argc, char** argv) {
    try {
        return ventrix::bench::Run(argc, argv);
    } catch (const std::exception& problem) {
        std::fprintf(stderr, "bench_passes: %s\n", problem.what());
        return 2;
    }
}
