#include <algorithm>
#include <filesystem>
#include <map>
#include <string_view>

#include "desk/report/report_files.h"
#include "desk/xml/xml_handles.h"

namespace ventrix::desk {
namespace {

constexpr char kHead[] = R"(<!DOCTYPE html>
<html lang="en">
<head>
<meta charset="utf-8">
<meta name="viewport" content="width=device-width, initial-scale=1">
<meta name="color-scheme" content="light dark">
<title>Loss report</title>
<style>
:root { --text: #1c2430; --quiet: #56606e; --back: #fff; --panel: #f3f5f8; --line: #c9d0d9; --link: #0b57a4;
  --good: #1b6e34; --bad: #a3261b; --bar: #2f7d47; }
@media (prefers-color-scheme: dark) {
  :root { --text: #e6e9ee; --quiet: #a3adba; --back: #14181f; --panel: #1f2530; --line: #3b4553; --link: #8cc0ff;
    --good: #7fd596; --bad: #ff9d92; --bar: #58b374; } }
body { margin: 0 auto; max-width: 90rem; padding: 1.5rem; background: var(--back); color: var(--text);
  font: 1rem/1.5 system-ui, sans-serif; }
h1 { font-size: 1.6rem; margin: 0 0 .3rem; } h2 { font-size: 1.2rem; margin: 2rem 0 .5rem; }
p { margin: .3rem 0; max-width: 60rem; } .quiet { color: var(--quiet); } a { color: var(--link); }
.scroll { overflow-x: auto; }
table { border-collapse: collapse; width: 100%; } .wide { min-width: 60rem; }
th, td { text-align: left; vertical-align: top; padding: .4rem .6rem; border-bottom: 1px solid var(--line); }
thead th { background: var(--panel); } .number { text-align: right; font-variant-numeric: tabular-nums; }
th button { font: inherit; font-weight: bold; text-align: left; white-space: nowrap; color: inherit; background: none; border: 0; padding: 0; cursor: pointer; }
th button::after { content: " \2195"; color: var(--quiet); } th[aria-sort=ascending] button::after { content: " \2191"; }
th[aria-sort=descending] button::after { content: " \2193"; }
code { font: .85rem/1.5 ui-monospace, monospace; overflow-wrap: anywhere; } ul { margin: 0; padding-left: 1.1rem; }
.good { color: var(--good); } .bad { color: var(--bad); font-weight: bold; }
meter { width: 8rem; height: .9rem; }
form { display: flex; flex-wrap: wrap; gap: .5rem 1.2rem; align-items: end; background: var(--panel); padding: .7rem;
  border-radius: .4rem; } label { display: grid; grid-template-columns: minmax(0, auto); gap: .1rem; min-width: 0; max-width: 100%; color: var(--quiet); font-size: .9rem; }
input, select { min-width: 0; max-width: 100%; font: inherit; color: var(--text); background: var(--back); border: 1px solid var(--quiet);
  border-radius: .25rem; padding: .25rem .4rem; }
:focus-visible { outline: 2px solid var(--link); outline-offset: 2px; }
.js form { display: flex; } form { display: none; } [hidden] { display: none; }
@media print { form { display: none !important; } body { max-width: none; } }
</style>
</head>
<body>
<main>
)";

constexpr char kScript[] = R"(<script>
"use strict";
document.documentElement.classList.add("js");
const value = cell => cell.dataset.value ?? cell.textContent.trim();
for (const button of document.querySelectorAll("th button")) {
  button.addEventListener("click", () => {
    const head = button.closest("th");
    const table = head.closest("table");
    const column = head.cellIndex;
    const direction = head.ariaSort === "ascending" ? "descending" : "ascending";
    for (const other of table.querySelectorAll("th[aria-sort]")) other.removeAttribute("aria-sort");
    head.setAttribute("aria-sort", direction);
    const order = new Intl.Collator(undefined, { numeric: true });
    const sign = direction === "ascending" ? 1 : -1;
    const rows = Array.from(table.tBodies[0].rows, row => [value(row.cells[column]), row]);
    rows.sort((a, b) => sign * order.compare(a[0], b[0]));
    table.tBodies[0].append(...rows.map(row => row[1]));
  });
}
for (const form of document.querySelectorAll("form")) {
  const table = document.getElementById(form.dataset.table);
  const rows = Array.from(table.tBodies[0].rows, row => [row, row.textContent.toLowerCase()]);
  const filter = () => {
    const words = form.elements.words.value.toLowerCase().split(/\s+/).filter(Boolean);
    const chosen = Array.from(form.querySelectorAll("select"), list => [list.name, list.value]);
    let shown = 0;
    for (const [row, text] of rows) {
      const fits = words.every(word => text.includes(word)) &&
        chosen.every(([name, wanted]) => wanted === "" || row.dataset[name] === wanted);
      row.hidden = !fits;
      shown += fits ? 1 : 0;
    }
    form.querySelector("output").value = `${shown} of ${rows.length} rows`;
  };
  form.addEventListener("input", filter);
  form.addEventListener("submit", event => event.preventDefault());
  filter();
}
</script>
</body>
</html>
)";

std::string Code(std::string_view text) {
    return text.empty() ? std::string() : "<code>" + EscapedXml(text) + "</code>";
}

/// Breaks between steps where the column is too narrow.
std::string XPathCode(const std::string& xpath) {
    std::string code = Code(xpath);
    for (std::size_t at = code.find('/', std::string_view("<code>/").size());
         at != std::string::npos && code[at - 1] != '<'; at = code.find('/', at + 1)) {
        constexpr std::string_view kBreak = "<wbr>";
        code.insert(at, kBreak);
        at += kBreak.size();
    }
    return code;
}

/// A count with its noun, as "1 place" or "3 places".
std::string Counted(std::size_t count, const std::string& noun) {
    return std::to_string(count) + ' ' + noun + (count == 1 ? "" : "s");
}

/// What is preserved, in words for a reader.
std::string NameOf(const PreservedItem& item) {
    switch (item.kind) {
        case ItemKind::kAttribute:
            return "attribute " + item.name;
        case ItemKind::kScopedAttribute:
            return "scoped attribute " + item.name;
        case ItemKind::kElement:
            return "element " + item.name;
        case ItemKind::kXPath:
            return "XPath of each text";
        case ItemKind::kQuery:
            return "query " + item.name;
        case ItemKind::kSourcePath:
            break;
    }
    return "source path on " + item.name + (item.isImplied ? " (always recorded)" : "");
}

class PageWriter {
  public:
    PageWriter(const LossReport& report, const NativePath& file)
        : report_(report),
          folder_(ToFilesystem(FolderOf(file))),
          documentFolder_(ToFilesystem(FolderOf(report.document))) {}

    std::string Write() && {
        page_ = kHead;
        WriteIntroduction();
        if (report_.notCounted.empty()) {
            WriteItems();
            WriteLost();
            WriteRepeated();
            WriteCopies("copied", "Copied to places that are not decoded", report_.copied,
                        "Marker text in attribute values, comments and files that are not pages. Ventrix "
                        "takes it out "
                        "there; what it carries does not reach a reader.");
            WriteCopies(
                "changed", "Changed by the transformation", report_.changed,
                "Marker text in pages that is not as it was in the sources, for example in other case.");
        }
        page_ += "</main>\n";
        page_ += kScript;
        return std::move(page_);
    }

  private:
    void WriteIntroduction() {
        const std::size_t places = PlacesOf(report_);
        const std::size_t lost = LostOf(report_);
        page_ += "<h1>Loss report</h1>\n<p class=\"quiet\">" + EscapedXml(NameOf(report_.document)) +
                 (report_.toolkit.empty() ? "" : "; toolkit: " + EscapedXml(report_.toolkit)) + "</p>\n";
        if (!report_.notCounted.empty()) {
            page_ += "<p><strong>Not counted:</strong> " + EscapedXml(report_.notCounted) + "</p>\n";
            return;
        }
        page_ += "<p><strong>" + std::to_string(places - lost) + " of " + Counted(places, "place") +
                 "</strong> of the sources arrived in the result; <strong class=\"" +
                 (lost > 0 ? "bad" : "good") + "\">" + std::to_string(lost) + " did not</strong>.</p>\n";
        for (const NativePath& file : report_.sources.unread) {
            page_ += "<p class=\"bad\">" + EscapedXml(NameOf(file)) +
                     " could not be read and is not counted.</p>\n";
        }
    }

    void WriteItems() {
        page_ += "<h2 id=\"items-title\">What was to be preserved</h2>\n";
        OpenTable("items", {"Preserved", "#Places", "#Arrived", "#Lost", "Share"});
        for (const ItemCount& count : report_.items) {
            const std::size_t lost = count.places - count.arrived;
            const std::string places = std::to_string(count.places);
            const std::string arrived = std::to_string(count.arrived);
            const std::string share = count.places == 0 ? "<span class=\"quiet\">none in the sources</span>"
                                                        : "<meter aria-label=\"arrived\" min=\"0\" max=\"" +
                                                              places + "\" value=\"" + arrived + "\">" +
                                                              arrived + " of " + places + "</meter>";
            page_ += "<tr><th scope=\"row\">" + EscapedXml(NameOf(count.item)) + "</th>" + Number(places) +
                     Number(arrived) + Number(std::to_string(lost), lost > 0 ? " bad" : "") +
                     "<td data-value=\"" +
                     std::to_string(count.places == 0 ? 100 : count.arrived * 100 / count.places) + "\">" +
                     share + "</td></tr>\n";
        }
        CloseTable();
    }

    void WriteLost() {
        page_ += "<h2 id=\"lost-title\">Did not arrive: " + std::to_string(LostOf(report_)) + "</h2>\n";
        if (report_.lost.empty()) {
            page_ += "<p>Every place arrived.</p>\n";
            return;
        }
        WriteFilter("lost", true);
        OpenTable("lost", {"Preserved", "Value", "Place", "Line", "XPath", "Text", "Why"});
        for (const LostPlace& lost : report_.lost) {
            const PreservedItem& item = report_.items[static_cast<std::size_t>(lost.item)].item;
            const std::string kind = EscapedXml(NameOf(item));
            // The XPath of the place says it already.
            const std::string value = item.kind == ItemKind::kXPath ? std::string() : Code(lost.value);
            page_ += "<tr data-item=\"" + kind + "\" data-reason=\"" + EscapedXml(lost.reason) + "\"><td>" +
                     kind + "</td><td>" + value + "</td>";
            WritePlace(lost.candidates, lost.count);
            page_ += "<td>" + EscapedXml(DescribeReason(lost.reason)) + "</td></tr>\n";
        }
        CloseTable();
    }

    /// Four cells: file, line, XPath and text. Of several candidates, the first stands there and the others
    /// below it.
    void WritePlace(const Candidates& candidates, std::size_t count) {
        if (candidates.count == 0) {
            page_ += "<td class=\"quiet\">unknown</td><td></td><td></td><td></td>";
            return;
        }
        const SourcePlace& first = *candidates.first.front();
        page_ += "<td>" + FileOf(first);
        if (candidates.count > 1) {
            page_ += "<details><summary>" + std::to_string(count) + " of " +
                     Counted(candidates.count, "place") + "</summary><ul>";
            for (const SourcePlace* place : candidates.first) {
                page_ += "<li>" + FileOf(*place) +
                         (place->line > 0 ? ":" + std::to_string(place->line) : "") + ' ' +
                         XPathCode(place->xpath) + "</li>";
            }
            page_ +=
                candidates.count > candidates.first.size()
                    ? "<li>and " + std::to_string(candidates.count - candidates.first.size()) + " more</li>"
                    : "";
            page_ += "</ul></details>";
        } else if (count > 1) {
            page_ += " (" + std::to_string(count) + " times)";
        }
        page_ += "</td>" + Number(first.line > 0 ? std::to_string(first.line) : "") + "<td>" +
                 XPathCode(first.xpath) + "</td><td>" + EscapedXml(first.text) + "</td>";
    }

    void WriteRepeated() {
        page_ +=
            "<h2 id=\"repeated-title\">Arrived more than once: " + std::to_string(report_.repeated.size()) +
            "</h2>\n";
        if (report_.repeated.empty()) {
            return;
        }
        page_ +=
            "<p class=\"quiet\">The transformation used the text in several places, as a contents page "
            "does.</p>\n";
        WriteFilter("repeated", false);
        OpenTable("repeated", {"Place", "Line", "XPath", "Text", "#Times", "In the result"});
        for (const RepeatedPlace& repeated : report_.repeated) {
            page_ += "<tr>";
            WritePlace(repeated.candidates, 1);
            page_ += Number(std::to_string(repeated.spots.size())) + "<td><ul>";
            for (const ResultSpot& spot : repeated.spots) {
                page_ += "<li>" + LinkTo(spot) + "</li>";
            }
            page_ += "</ul></td></tr>\n";
        }
        CloseTable();
    }

    void WriteCopies(const std::string& id, const std::string& title, const std::vector<CopiedPlace>& copies,
                     const char* explanation) {
        page_ += "<h2 id=\"" + id + "-title\">" + title + ": " + std::to_string(copies.size()) + "</h2>\n";
        if (copies.empty()) {
            return;
        }
        page_ += std::string("<p class=\"quiet\">") + explanation + "</p>\n";
        WriteFilter(id, false);
        OpenTable(id, {"In the result", "Marker text", "Place", "Line", "XPath", "Text"});
        for (const CopiedPlace& copy : copies) {
            page_ += "<tr><td>" + LinkTo(copy.spot) + "</td><td>" + Code(copy.shown) + "</td>";
            WritePlace(copy.candidates, 1);
            page_ += "</tr>\n";
        }
        CloseTable();
    }

    void WriteFilter(const std::string& table, bool hasLists) {
        page_ += "<form data-table=\"" + table + "\" role=\"search\" aria-labelledby=\"" + table +
                 "-title\"><label>Words <input type=\"search\" name=\"words\"></label>";
        if (hasLists) {
            std::map<std::string, std::string> items, reasons;
            for (const LostPlace& lost : report_.lost) {
                const std::string name = NameOf(report_.items[static_cast<std::size_t>(lost.item)].item);
                items.emplace(name, name);
                reasons.emplace(lost.reason, DescribeReason(lost.reason));
            }
            WriteList("Preserved", "item", items);
            WriteList("Why", "reason", reasons);
        }
        page_ += "<output class=\"quiet\" aria-live=\"polite\"></output></form>\n";
    }

    void WriteList(const std::string& label, const std::string& name,
                   const std::map<std::string, std::string>& choices) {
        page_ += "<label>" + label + " <select name=\"" + name + "\"><option value=\"\">all</option>";
        for (const auto& [value, shown] : choices) {
            page_ += "<option value=\"" + EscapedXml(value) + "\">" + EscapedXml(shown) + "</option>";
        }
        page_ += "</select></label>";
    }

    /// The heads of the columns; one that begins with "#" has numbers.
    void OpenTable(const std::string& id, const std::vector<std::string>& heads) {
        page_ += "<div class=\"scroll\" role=\"region\" tabindex=\"0\" aria-labelledby=\"" + id +
                 "-title\"><table id=\"" + id + (id == "items" ? "\"" : "\" class=\"wide\"") + "><thead><tr>";
        for (const std::string& head : heads) {
            const bool isNumber = head.starts_with('#');
            page_ += std::string("<th scope=\"col\"") + (isNumber ? " class=\"number\"" : "") +
                     "><button type=\"button\">" + head.substr(isNumber ? 1 : 0) + "</button></th>";
        }
        page_ += "</tr></thead><tbody>\n";
    }

    void CloseTable() { page_ += "</tbody></table></div>\n"; }

    static std::string Number(const std::string& number, const char* further = "") {
        return std::string("<td class=\"number") + further + "\">" + number + "</td>";
    }

    /// A source, relative to the document where that is shorter; a link to its page if it has one.
    std::string FileOf(const SourcePlace& place) const {
        const auto file = static_cast<std::size_t>(place.file);
        return Link(report_.pageOfFile[file], {}, NameOf(report_.sources.files[file]));
    }

    std::string NameOf(const NativePath& file) const {
        return FromFilesystem(ToFilesystem(file).lexically_relative(documentFolder_)).utf8;
    }
    static std::string NameOf(const PreservedItem& item) { return desk::NameOf(item); }

    std::string LinkTo(const ResultSpot& spot) const {
        const NativePath& page = report_.pages[static_cast<std::size_t>(spot.page)];
        const NativePath folder = report_.resultFolder;
        const std::string name =
            FromFilesystem(ToFilesystem(page).lexically_relative(ToFilesystem(folder))).utf8;
        return Link(page, spot.anchor, name) + ' ' + Code(spot.where);
    }

    std::string Link(const NativePath& page, const std::string& anchor, const std::string& shown) const {
        if (page.Empty()) {
            return EscapedXml(shown);
        }
        const NativePath relative = FromFilesystem(ToFilesystem(page).lexically_relative(folder_));
        return "<a href=\"" + PercentEncoded(relative.utf8) +
               (anchor.empty() ? "" : '#' + PercentEncoded(anchor)) + "\">" + EscapedXml(shown) + "</a>";
    }

    const LossReport& report_;
    std::filesystem::path folder_, documentFolder_;
    std::string page_;
};

}  // namespace

std::string ReportAsPage(const LossReport& report, const NativePath& file) {
    return PageWriter(report, file).Write();
}

}  // namespace ventrix::desk
