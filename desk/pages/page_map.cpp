#include "desk/pages/page_map.h"

#include <nlohmann/json.hpp>

#include "platform/files.h"

namespace ventrix::desk {
namespace {

using nlohmann::ordered_json;

constexpr int kSchema = 1;

std::string RelativeName(const NativePath& file, const NativePath& folder) {
    const auto path = ToFilesystem(file).lexically_relative(ToFilesystem(folder));
    return FromFilesystem(path).utf8;
}

void AddPlace(ordered_json& object, const ElementSource& place, const NativePath& folder) {
    if (!place.file.Empty()) {
        object["source"] = RelativeName(place.file, folder);
    }
    if (!place.xpath.empty()) {
        object["xpath"] = place.xpath;
    }
    if (place.line > 0) {
        object["line"] = place.line;
    }
}

ordered_json ElementAsJson(const MappedElement& mapped, const NativePath& folder) {
    ordered_json object = {{"id", mapped.element.id}, {"element", mapped.element.name}};
    AddPlace(object, mapped.place, folder);
    if (!mapped.element.queries.empty()) {
        object["queries"] = mapped.element.queries;
    }
    object["attributes"] = ordered_json::object();
    for (const auto& [name, value] : mapped.element.attributes) {
        object["attributes"][name] = value;
    }
    if (!mapped.reusedBy.file.Empty()) {
        AddPlace(object["reusedBy"], mapped.reusedBy, folder);
    }
    return object;
}

std::string Text(const ordered_json& value) {
    // A page may hold a byte that is not UTF-8, which must not lose the whole map.
    return value.dump(-1, ' ', false, ordered_json::error_handler_t::replace);
}

}  // namespace

MappedPage MapPage(const NativePath& page, const NativePath& source, const CarryingAttributes& names,
                   SourcePlaces& places, std::vector<Finding>& findings) {
    places.LimitMemory();
    MappedPage mapped{page, source, {}, false};
    TaggedPage tagged = ReadTaggedElements(page, names);
    if (!tagged.problem.empty()) {
        findings.push_back(
            {page, 0, "page-not-xml",
             "is not well-formed XML, so that what it carries cannot be listed: " + tagged.problem});
        return mapped;
    }
    mapped.isReadable = true;
    NativePath latest;
    for (TaggedElement& element : tagged.elements) {
        ElementSource place = places.PlaceOf(element, {latest, source});
        latest = places.FileOf(element.sourcePath).Empty() ? latest : place.file;
        const bool isReused = !place.file.Empty() && !source.Empty() && !(place.file == source);
        ElementSource reusedBy = isReused ? places.ReferenceTo(place, source) : ElementSource{};
        mapped.elements.push_back({std::move(element), std::move(place), std::move(reusedBy)});
    }
    return mapped;
}

std::string PlacesAsJson(const MappedPage& page, const NativePath& document) {
    ordered_json list = ordered_json::array();
    for (const MappedElement& element : page.elements) {
        list.push_back(ElementAsJson(element, FolderOf(document)));
    }
    std::string text;
    for (const char c : Text(list)) {
        text += c == '<' ? "\\u003c" : c == '&' ? "\\u0026" : std::string(1, c);
    }
    return text;
}

bool WriteMap(const std::vector<MappedPage>& pages, const NativePath& document, const NativePath& folder) {
    const NativePath sources = FolderOf(document);
    ordered_json map = {{"schema", kSchema},
                        {"document", RelativeName(document, sources)},
                        {"elements", ordered_json::array()}};
    for (const MappedPage& page : pages) {
        const std::string name = RelativeName(page.page, folder);
        for (const MappedElement& element : page.elements) {
            ordered_json object = {{"page", name}};
            object.update(ElementAsJson(element, sources));
            map["elements"].push_back(std::move(object));
        }
    }
    return platform::WriteWholeFile(NormalPath({folder.utf8 + '/' + kMapName}).utf8, Text(map) + '\n') ==
           platform::kErrorNone;
}

}  // namespace ventrix::desk
