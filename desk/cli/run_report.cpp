#include "desk/cli/run_report.h"

#include <nlohmann/json.hpp>

#include "desk/report/report_files.h"

namespace ventrix::desk {
namespace {

using nlohmann::json;

constexpr int kSchema = 1;

json TextOrNull(const std::string& text) {
    return text.empty() ? json() : json(text);
}

json PathOrNull(const NativePath& path) {
    return TextOrNull(path.utf8);
}

template <typename Item, typename Convert>
json List(const std::vector<Item>& items, Convert convert) {
    json list = json::array();
    for (const Item& item : items) {
        list.push_back(convert(item));
    }
    return list;
}

json PageAsJson(const ReportedPage& page) {
    return {{"page", page.page}, {"source", PathOrNull(page.source)}};
}

json FindingAsJson(const Finding& finding) {
    return {{"file", PathOrNull(finding.file)},
            {"line", finding.line > 0 ? json(finding.line) : json()},
            {"column", finding.line > 0 && finding.column > 0 ? json(finding.column) : json()},
            {"code", finding.code},
            {"text", finding.text}};
}

json FailedAsJson(const FailedFile& failed) {
    return {{"file", failed.file}, {"reason", failed.reason}};
}

json ReplyAsJson(const ReplyStrings& reply) {
    return {{"first", reply.first}, {"second", reply.second}};
}

json ItemAsJson(const ItemCount& count) {
    return {{"kind", KindOf(count.item)},
            {"name", TextOrNull(count.item.name)},
            {"places", count.places},
            {"arrived", count.arrived},
            {"lost", count.places - count.arrived}};
}

json LossAsJson(const LossSummary& loss) {
    return {{"file", PathOrNull(loss.file)},
            {"notCounted", TextOrNull(loss.notCounted)},
            {"items", List(loss.items, ItemAsJson)},
            {"copied", loss.copied},
            {"repeated", loss.repeated},
            {"changed", loss.changed}};
}

}  // namespace

void PrintFinding(const Screen& screen, const Finding& finding) {
    std::string place = finding.file.utf8;
    for (const int number : {finding.line, finding.line > 0 ? finding.column : 0}) {
        place += number > 0 ? ':' + std::to_string(number) : std::string();
    }
    screen.Warning((place.empty() ? "" : place + ": ") + finding.text + " [" + finding.code + ']');
}

void Warn(RunReport& report, const Screen& screen, const Finding& finding) {
    PrintFinding(screen, finding);
    report.warnings.push_back(finding);
}

void PrintReport(const RunReport& report) {
    PrintObject({{"schema", kSchema},
                 {"deliverable", TextOrNull(report.deliverable)},
                 {"exitStatus", report.exitStatus},
                 {"error", TextOrNull(report.error)},
                 {"status", report.status ? json(*report.status) : json()},
                 {"resultFolder", PathOrNull(report.resultFolder)},
                 {"startPage", PathOrNull(report.startPage)},
                 {"buildLog", PathOrNull(report.buildLog)},
                 {"log", PathOrNull(report.log)},
                 {"toolkit", TextOrNull(report.toolkit)},
                 {"pages", List(report.pages, PageAsJson)},
                 {"warnings", List(report.warnings, FindingAsJson)},
                 {"failed", List(report.failed, FailedAsJson)},
                 {"missing", report.missing},
                 {"valid", report.valid},
                 {"unsaved", report.unsaved},
                 {"loss", report.loss ? LossAsJson(*report.loss) : json()},
                 {"reply", report.reply ? ReplyAsJson(*report.reply) : json()}});
}

}  // namespace ventrix::desk
