#include "desk/report/report_files.h"

#include <nlohmann/json.hpp>

#include "platform/files.h"

namespace ventrix::desk {
namespace {

using nlohmann::json;

constexpr int kSchema = 1;

json TextOrNull(const std::string& text) {
    return text.empty() ? json() : json(text);
}

json AsJson(const SourcePlace& place, const LossReport& report) {
    const auto file = static_cast<std::size_t>(place.file);
    return {{"file", report.sources.files[file].utf8},
            {"line", place.line > 0 ? json(place.line) : json()},
            {"xpath", place.xpath},
            {"text", place.text},
            {"page", TextOrNull(report.pageOfFile[file].utf8)}};
}

json AsJson(const Candidates& candidates, const LossReport& report) {
    json places = json::array();
    for (const SourcePlace* place : candidates.first) {
        places.push_back(AsJson(*place, report));
    }
    return places;
}

json AsJson(const ResultSpot& spot, const LossReport& report) {
    return {{"page", report.pages[static_cast<std::size_t>(spot.page)].utf8},
            {"where", spot.where},
            {"id", TextOrNull(spot.anchor)}};
}

json AsJson(const LostPlace& lost, const LossReport& report) {
    const PreservedItem& item = report.items[static_cast<std::size_t>(lost.item)].item;
    return {{"kind", KindOf(item)},
            {"name", TextOrNull(item.name)},
            {"value", TextOrNull(lost.value)},
            {"count", lost.count},
            {"reason", lost.reason},
            {"candidates", lost.candidates.count},
            {"places", AsJson(lost.candidates, report)}};
}

json AsJson(const RepeatedPlace& repeated, const LossReport& report) {
    json spots = json::array();
    for (const ResultSpot& spot : repeated.spots) {
        spots.push_back(AsJson(spot, report));
    }
    return {{"candidates", repeated.candidates.count},
            {"places", AsJson(repeated.candidates, report)},
            {"spots", spots}};
}

json AsJson(const CopiedPlace& copied, const LossReport& report) {
    return {{"spot", AsJson(copied.spot, report)},
            {"text", copied.shown},
            {"candidates", copied.candidates.count},
            {"places", AsJson(copied.candidates, report)}};
}

json AsJson(const ItemCount& count) {
    return {{"kind", KindOf(count.item)},
            {"name", TextOrNull(count.item.name)},
            {"places", count.places},
            {"arrived", count.arrived},
            {"lost", count.places - count.arrived}};
}

template <typename Item>
json List(const std::vector<Item>& items, const LossReport& report) {
    json list = json::array();
    for (const Item& item : items) {
        list.push_back(AsJson(item, report));
    }
    return list;
}

}  // namespace

bool IsReportName(const std::string& fileName) {
    return fileName.ends_with(".html") || fileName.ends_with(".json");
}

std::string KindOf(const PreservedItem& item) {
    switch (item.kind) {
        case ItemKind::kAttribute:
            return "attribute";
        case ItemKind::kScopedAttribute:
            return "scoped-attribute";
        case ItemKind::kElement:
            return "element";
        case ItemKind::kXPath:
            return "xpath";
        case ItemKind::kQuery:
            return "query";
        case ItemKind::kSourcePath:
            break;
    }
    return "source-path";
}

std::string ReportAsJson(const LossReport& report) {
    json items = json::array();
    for (const ItemCount& count : report.items) {
        items.push_back(AsJson(count));
    }
    json unread = json::array();
    for (const NativePath& file : report.sources.unread) {
        unread.push_back(file.utf8);
    }
    const json object{{"schema", kSchema},
                      {"document", report.document.utf8},
                      {"resultFolder", report.resultFolder.utf8},
                      {"toolkit", TextOrNull(report.toolkit)},
                      {"notCounted", TextOrNull(report.notCounted)},
                      {"places", PlacesOf(report)},
                      {"arrived", PlacesOf(report) - LostOf(report)},
                      {"lost", LostOf(report)},
                      {"items", items},
                      {"lostPlaces", List(report.lost, report)},
                      {"copied", List(report.copied, report)},
                      {"repeated", List(report.repeated, report)},
                      {"changed", List(report.changed, report)},
                      {"unread", unread}};
    return object.dump(2, ' ', false, json::error_handler_t::replace) + '\n';
}

std::string WriteLossReport(const LossReport& report, const NativePath& file) {
    const std::string content =
        file.utf8.ends_with(".json") ? ReportAsJson(report) : ReportAsPage(report, file);
    const bool written = platform::WriteWholeFile(file.utf8, content) == platform::kErrorNone;
    return written ? std::string()
                   : "the report " + file.utf8 +
                         " cannot be written; check the permissions of its folder and the free space";
}

}  // namespace ventrix::desk
