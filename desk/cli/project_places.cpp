#include "desk/cli/project_places.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>

#include "desk/cli/exit_status.h"
#include "desk/documents/document_files.h"

namespace fs = std::filesystem;

namespace ventrix::desk {
namespace {

constexpr std::array<const char*, 7> kInputOptions = {"xslt",     "pre-script", "post-script", "ditaval",
                                                      "resource", "css",        "logo"};

/// What a deliverable reads or writes.
struct Place {
    std::string option;
    NativePath path;
    int line = 0;  ///< In the project file.
};

template <std::size_t Count>
std::vector<Place> PlacesOf(const Project& project, const Deliverable& deliverable,
                            const std::array<const char*, Count>& options) {
    std::vector<Place> places;
    for (const char* option : options) {
        if (const ProjectSetting* setting = Find(project, deliverable, option)) {
            for (const std::string& value : setting->values) {
                places.push_back({option, RealPath({value}), setting->line});
            }
        }
    }
    return places;
}

/// The log, which is beside the output folder unless the file names one.
std::vector<Place> LogOf(const Project& project, const Deliverable& deliverable) {
    const ProjectSetting* output = Find(project, deliverable, "output");
    if (output == nullptr || Find(project, deliverable, "log") != nullptr) {
        return PlacesOf(project, deliverable, std::array{"log"});
    }
    return {{"log", RealPath({NormalPath({output->values.front()}).utf8 + ".log"}), output->line}};
}

/// The results that are single files, of which no input may be replaced.
std::vector<Place> RecordsOf(const Project& project, const Deliverable& deliverable) {
    std::vector<Place> records = PlacesOf(project, deliverable, std::array{"report"});
    std::ranges::move(LogOf(project, deliverable), std::back_inserter(records));
    return records;
}

std::vector<Place> ResultsOf(const Project& project, const Deliverable& deliverable) {
    std::vector<Place> results = PlacesOf(project, deliverable, kResultOptions);
    std::ranges::move(LogOf(project, deliverable), std::back_inserter(results));
    return results;
}

/// Whether one result would replace the other, or a part of it. An output folder contains what is below it.
bool Collide(const Place& a, const Place& b) {
    return (a.path == b.path && (a.option != "log" || b.option != "log")) ||
           (a.option == "output" && IsBelowOrEqual(b.path, a.path)) ||
           (b.option == "output" && IsBelowOrEqual(a.path, b.path));
}

void RequireSeparateResults(const Project& project, const Deliverable& a, const Deliverable& b) {
    for (const Place& first : ResultsOf(project, a)) {
        for (const Place& second : ResultsOf(project, b)) {
            if (Collide(first, second)) {
                throw Stop{kExitUsage, project.file.utf8 + ':' + std::to_string(second.line) + ": " +
                                           second.option + ": the deliverables '" + a.name + "' and '" +
                                           b.name + "' would replace each other's results in " +
                                           second.path.utf8 + "; give each a place of its own"};
            }
        }
    }
}

/// Whether the file is the report or the log of an earlier run, by how they begin.
bool IsFromEarlierRun(const NativePath& file) {
    std::string head(512, '\0');
    std::ifstream stream(ToFilesystem(file), std::ios::binary);
    stream.read(head.data(), static_cast<std::streamsize>(head.size()));
    head.resize(static_cast<std::size_t>(stream.gcount()));
    const auto has = [&head](const char* text) { return head.find(text) != std::string::npos; };
    return head.empty() || has("<title>Loss report</title>") || has("\"arrived\": ") || has("\n*****");
}

/// Whether the document of a deliverable refers to the file. Reading a document takes long, so it is asked
/// only of a file that no run has written.
bool IsPartOf(const Deliverable& deliverable, const NativePath& file) {
    std::error_code error;
    if (!fs::is_regular_file(ToFilesystem(file), error) || IsFromEarlierRun(file)) {
        return false;
    }
    const std::vector<NativePath> files = LocalFiles(ListDocumentFiles(deliverable.document));
    return std::ranges::any_of(files, [&file](const NativePath& one) { return RealPath(one) == file; });
}

/// A report or a log of one deliverable must not be an input of another. The other results may be: what one
/// deliverable has transformed, the next can publish.
void RequireNoInputReplaced(const Project& project, const Deliverable& writer, const Deliverable& reader) {
    std::vector<Place> inputs = PlacesOf(project, reader, kInputOptions);
    inputs.push_back({"document", RealPath(reader.document), reader.line});
    for (const Place& record : RecordsOf(project, writer)) {
        const bool isInput = std::ranges::find(inputs, record.path, &Place::path) != inputs.end();
        if (isInput || IsPartOf(reader, record.path)) {
            throw Stop{kExitUsage, project.file.utf8 + ':' + std::to_string(record.line) + ": " +
                                       record.option + ": " + record.path.utf8 +
                                       " is an input of the deliverable '" + reader.name +
                                       "'; choose another file"};
        }
    }
}

}  // namespace

void RequireSeparateResults(const Project& project) {
    const std::vector<Deliverable>& all = project.deliverables;
    for (auto b = all.begin(); b != all.end(); ++b) {
        for (auto a = all.begin(); a != b; ++a) {
            RequireSeparateResults(project, *a, *b);
            RequireNoInputReplaced(project, *a, *b);
            RequireNoInputReplaced(project, *b, *a);
        }
    }
}

}  // namespace ventrix::desk
