#include "desk/pages/page_map.h"

#include <nlohmann/json.hpp>

#include "platform/files.h"

namespace ventrix::desk {
namespace {

using nlohmann::ordered_json;

constexpr int kSchema = 1;

void AddPlace(ordered_json& object, const ElementSource& place, RelativeNames& names) {
    if (!place.file.Empty()) {
        object["source"] = names.Of(place.file);
    }
    if (!place.xpath.empty()) {
        object["xpath"] = place.xpath;
    }
    if (place.line > 0) {
        object["line"] = place.line;
    }
}

/// Adds the members of the element to the object.
void AddElement(ordered_json& object, const MappedElement& mapped, RelativeNames& names) {
    object["id"] = mapped.element.id;
    object["element"] = mapped.element.name;
    AddPlace(object, mapped.origin.place, names);
    if (!mapped.element.queries.empty()) {
        object["queries"] = mapped.element.queries;
    }
    ordered_json& attributes = object["attributes"] = ordered_json::object();
    for (const auto& [name, value] : mapped.element.attributes) {
        attributes[name] = value;
    }
    if (!mapped.origin.reusedBy.file.Empty()) {
        AddPlace(object["reusedBy"], mapped.origin.reusedBy, names);
    }
}

std::string Text(const ordered_json& value) {
    // A page may hold a byte that is not UTF-8, which must not lose the whole map.
    return value.dump(-1, ' ', false, ordered_json::error_handler_t::replace);
}

}  // namespace

MappedPage MapPage(const NativePath& page, const NativePath& source, const CarryingAttributes& names,
                   SourcePlaces& places) {
    places.LimitMemory();
    TaggedPage tagged = ReadTaggedElements(page, names);
    MappedPage mapped{page, source, {}, tagged.problem, tagged.loaded.line, tagged.loaded.column};
    if (!mapped.problem.empty()) {
        return mapped;
    }
    std::vector<ElementOrigin> origins = OriginsOf(tagged.elements, source, places);
    for (std::size_t i = 0; i < origins.size(); ++i) {
        mapped.elements.push_back({std::move(tagged.elements[i]), std::move(origins[i])});
        mapped.elements.back().element.node = nullptr;
    }
    return mapped;
}

std::string PlacesAsJson(const MappedPage& page, const NativePath& document) {
    ordered_json list = ordered_json::array();
    RelativeNames names(FolderOf(document));
    for (const MappedElement& element : page.elements) {
        AddElement(list.emplace_back(ordered_json::object()), element, names);
    }
    std::string text;
    for (const char c : Text(list)) {
        text += c == '<' ? "\\u003c" : c == '&' ? "\\u0026" : std::string(1, c);
    }
    return text;
}

const std::string& RelativeNames::Of(const NativePath& file) {
    if (latest_ == nullptr || !(latest_->first == file)) {
        const auto [entry, isNew] = names_.try_emplace(file);
        if (isNew) {
            entry->second = FromFilesystem(ToFilesystem(file).lexically_relative(folder_)).utf8;
        }
        latest_ = &*entry;
    }
    return latest_->second;
}

MapText::MapText(const NativePath& document, const NativePath& folder)
    : folder_(folder), sources_(FolderOf(document)), results_(folder) {
    text_ = Text({{"schema", kSchema}, {"document", sources_.Of(document)}});
    text_.back() = ',';
    text_ += "\"elements\":[";
}

/// Element by element, since the JSON objects of all of them take many times the memory of their text.
void MapText::Add(const MappedPage& page) {
    for (const MappedElement& element : page.elements) {
        ordered_json object = {{"page", results_.Of(page.page)}};
        AddElement(object, element, sources_);
        text_ += isFirst_ ? "" : ",";
        text_ += Text(object);
        isFirst_ = false;
    }
}

bool MapText::Write() {
    text_ += "]}\n";
    return platform::WriteWholeFile(NormalPath({folder_.utf8 + '/' + kMapName}).utf8, text_) ==
           platform::kErrorNone;
}

}  // namespace ventrix::desk
