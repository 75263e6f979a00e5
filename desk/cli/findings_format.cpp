#include "desk/cli/findings_format.h"

#include <algorithm>
#include <cctype>
#include <cstdint>
#include <cstdio>
#include <iterator>
#include <map>
#include <nlohmann/json.hpp>
#include <set>
#include <string_view>
#include <tuple>

#include "desk/cli/exit_status.h"
#include "desk/cli/options.h"
#include "desk/xml/xml_handles.h"

namespace ventrix::desk {
namespace {

// Members keep the order in which they are written.
using nlohmann::ordered_json;

constexpr int kSchema = 1;

struct Rule {
    const char* id;
    bool isError;  ///< The result would be incomplete or missing; else it would differ from what one expects.
    const char* text;
};

constexpr Rule kRules[] = {
    {"broken-link", true, "A link leads to a page or an element that does not exist"},
    {"dead-reference", true, "A reference to content that is to be reused has no usable target"},
    {"failed", true, "The document could not be checked"},
    {"graphics-on-other-drive", false, "Graphics on a different drive from the document are not packaged"},
    {"log", false, "The report log could not be written"},
    {"malformed-drive", false, "An entry of VENTRIX_DRIVES is not understood"},
    {"missing", true, "A referenced file is missing or unreadable"},
    {"misspelled-name", false, "A name in an option does not occur, and one that is nearly the same does"},
    {"not-checked", false, "The module's log does not report whether a file is readable"},
    {"not-handled", false, "The built-in toolkit does not handle an element or attribute"},
    {"not-readable", true, "A file is not well-formed XML"},
    {"not-transformed", true, "A page, or a part of one, would be missing"},
    {"passed-over", false, "A file is XML, but nothing in it is preserved because of its name"},
    {"reference-left-out", false, "A reference names something that cannot be part of the document"},
    {"several-drives", true, "The files are on several drives and cannot be packaged"},
    {"stylesheet-version", false, "libxslt would run a stylesheet of a newer version of XSLT"},
    {"toolkit", false, "The toolkit would not do what a file asks for"},
    {"undeclared-prefix", false, "A namespace prefix is used that is not declared"},
    {"unknown-key", true, "A key is used that no map defines, or that is empty"},
    {"unreadable-document", true, "The document itself cannot be read"},
    {"unsaved", false, "A referenced file has unsaved changes"},
    {"unsaved-not-referenced", false, "A file in --unsaved is not part of the document"},
};

const char* LevelOf(const std::string& code) {
    const auto* rule = std::ranges::find(kRules, std::string_view(code), &Rule::id);
    return rule != std::end(kRules) && rule->isError ? "error" : "warning";
}

/// All findings of a run. One without a file is about the document.
std::vector<Finding> FindingsOf(const RunReport& report) {
    std::vector<Finding> findings = report.unusable;
    std::ranges::copy(report.warnings, std::back_inserter(findings));
    if (!report.error.empty()) {
        const char* code = report.exitStatus == kExitUnreadable ? "unreadable-document" : "failed";
        findings.push_back({report.document, report.errorLine, code, report.error, report.errorColumn});
    }
    for (Finding& finding : findings) {
        finding.file = finding.file.Empty() ? report.document : finding.file;
    }
    return findings;
}

std::string Dump(const ordered_json& object) {
    return object.dump(2, ' ', false, ordered_json::error_handler_t::replace) + '\n';
}

ordered_json NumberOrNull(int number) {
    return number > 0 ? ordered_json(number) : ordered_json();
}

ordered_json TextOrNull(const std::string& text) {
    return text.empty() ? ordered_json() : ordered_json(text);
}

ordered_json FindingAsJson(const Finding& finding) {
    return {{"rule", finding.code},
            {"level", LevelOf(finding.code)},
            {"file", TextOrNull(finding.file.utf8)},
            {"line", NumberOrNull(finding.line)},
            {"column", NumberOrNull(finding.column)},
            {"text", finding.text}};
}

std::string FormatAsJson(const std::vector<RunReport>& reports) {
    ordered_json documents = ordered_json::array();
    for (const RunReport& report : reports) {
        ordered_json findings = ordered_json::array();
        for (const Finding& finding : FindingsOf(report)) {
            findings.push_back(FindingAsJson(finding));
        }
        documents.push_back({{"document", report.document.utf8},
                             {"deliverable", TextOrNull(report.deliverable)},
                             {"exitStatus", report.exitStatus},
                             {"findings", findings}});
    }
    return Dump({{"schema", kSchema}, {"version", kVersion}, {"documents", documents}});
}

/// The current folder with its closing slash.
std::string CurrentFolder() {
    const std::string folder = AbsolutePath({"."}).utf8;
    return folder.ends_with('/') ? folder : folder + '/';
}

/// The path as seen from the current folder, if it is below it.
std::string ShortName(const NativePath& path) {
    const std::string folder = CurrentFolder();
    return path.utf8.starts_with(folder) ? path.utf8.substr(folder.size()) : path.utf8;
}

/// Hosting services match files by their path from the root of the repository, where such a check runs.
ordered_json ArtifactAsSarif(const NativePath& file) {
    const std::string name = ShortName(file);
    if (name == file.utf8) {
        return {{"uri", FileUri(file)}};
    }
    return {{"uri", PercentEncoded(name)}, {"uriBaseId", "%SRCROOT%"}};
}

ordered_json ResultAsSarif(const Finding& finding) {
    ordered_json place = {{"artifactLocation", ArtifactAsSarif(finding.file)}};
    if (finding.line > 0) {
        place["region"]["startLine"] = finding.line;
    }
    if (finding.line > 0 && finding.column > 0) {
        place["region"]["startColumn"] = finding.column;
    }
    return {{"ruleId", finding.code},
            {"level", LevelOf(finding.code)},
            {"message", {{"text", finding.text}}},
            {"locations", ordered_json::array({{{"physicalLocation", place}}})}};
}

ordered_json RulesAsSarif() {
    ordered_json rules = ordered_json::array();
    for (const Rule& rule : kRules) {
        rules.push_back({{"id", rule.id},
                         {"shortDescription", {{"text", rule.text}}},
                         {"defaultConfiguration", {{"level", LevelOf(rule.id)}}}});
    }
    return rules;
}

ordered_json RunAsSarif(const RunReport& report) {
    ordered_json results = ordered_json::array();
    for (const Finding& finding : FindingsOf(report)) {
        results.push_back(ResultAsSarif(finding));
    }
    ordered_json run = {
        {"tool", {{"driver", {{"name", "Ventrix"}, {"version", kVersion}, {"rules", RulesAsSarif()}}}}},
        {"columnKind", "unicodeCodePoints"},
        {"originalUriBaseIds", {{"%SRCROOT%", {{"uri", FileUri({CurrentFolder()})}}}}},
        {"results", results}};
    if (!report.deliverable.empty()) {
        run["automationDetails"]["id"] = report.deliverable;
    }
    return run;
}

std::string FormatAsSarif(const std::vector<RunReport>& reports) {
    ordered_json runs = ordered_json::array();
    for (const RunReport& report : reports) {
        runs.push_back(RunAsSarif(report));
    }
    return Dump(
        {{"$schema", "https://json.schemastore.org/sarif-2.1.0.json"}, {"version", "2.1.0"}, {"runs", runs}});
}

/// The text with the paths below the current folder as seen from there: a repository is checked out to
/// another folder on each machine.
std::string WithShortNames(std::string text) {
    const std::string folder = CurrentFolder();
    for (std::size_t at = text.find(folder); at != std::string::npos; at = text.find(folder, at)) {
        if (at == 0 || text[at - 1] == ' ' || text[at - 1] == '"') {
            text.erase(at, folder.size());
        } else {
            at += folder.size();
        }
    }
    return text;
}

/// A parser's message may contain a line, too.
std::string WithoutDigits(std::string text) {
    std::erase_if(text, [](unsigned char c) { return std::isdigit(c) != 0; });
    return text;
}

/// FNV-1a, 64 bits, in hexadecimal: std::hash may differ between builds.
std::string StableHash(std::string_view text) {
    std::uint64_t hash = 0xcbf29ce484222325U;
    for (const char c : text) {
        hash = (hash ^ static_cast<unsigned char>(c)) * 0x100000001b3U;
    }
    char digits[17];
    std::snprintf(digits, sizeof digits, "%016llx", static_cast<unsigned long long>(hash));
    return digits;
}

/// The findings of all runs as issues, each once: deliverables may share a document. A fingerprint says which
/// issue of another commit is the same. It has no line, which changes with each line above, but the number of
/// the finding among equal ones.
class CodeQuality {
  public:
    void Add(const Finding& finding) {
        const std::string file = ShortName(finding.file);
        const std::string text = WithShortNames(finding.text);
        if (!known_.emplace(file, finding.line, finding.column, finding.code, text).second) {
            return;
        }
        const std::string identity = finding.code + '\n' + file + '\n' + WithoutDigits(text);
        const int number = ++counts_[identity];
        const bool isError = LevelOf(finding.code) == std::string_view("error");
        issues_.push_back(
            {{"description", text},
             {"check_name", finding.code},
             {"fingerprint", StableHash(identity + '\n' + std::to_string(number))},
             {"severity", isError ? "major" : "minor"},
             {"location", {{"path", file}, {"lines", {{"begin", std::max(finding.line, 1)}}}}}});
    }

    const ordered_json& Issues() const { return issues_; }

  private:
    std::set<std::tuple<std::string, int, int, std::string, std::string>> known_;
    std::map<std::string, int> counts_;
    ordered_json issues_ = ordered_json::array();
};

std::string FormatAsCodeQuality(const std::vector<RunReport>& reports) {
    CodeQuality quality;
    for (const RunReport& report : reports) {
        for (const Finding& finding : FindingsOf(report)) {
            quality.Add(finding);
        }
    }
    return Dump(quality.Issues());
}

/// UTF-8 without what XML cannot express.
std::string Printable(const std::string& text) {
    const std::string valid =
        ordered_json::parse(ordered_json(text).dump(-1, ' ', false, ordered_json::error_handler_t::replace))
            .get<std::string>();
    std::string printable;
    for (const char c : valid) {
        const auto byte = static_cast<unsigned char>(c);
        if (byte < 0x20) {
            char code[5];
            std::snprintf(code, sizeof code, "\\x%02x", byte);
            printable += code;
        } else {
            printable += c;
        }
    }
    return printable;
}

std::string Escaped(const std::string& text) {
    return EscapedXml(Printable(text));
}

std::string PlaceOf(const Finding& finding) {
    std::string place = ShortName(finding.file);
    if (finding.line > 0) {
        place += ':' + std::to_string(finding.line);
    }
    if (finding.line > 0 && finding.column > 0) {
        place += ':' + std::to_string(finding.column);
    }
    return place;
}

std::string FailureAsJunit(const Finding& finding) {
    const std::string text = Escaped(finding.text);
    std::string attributes = "classname=\"" + Escaped(finding.code) + "\" name=\"" +
                             Escaped(PlaceOf(finding)) + "\" file=\"" + Escaped(ShortName(finding.file)) +
                             '"';
    if (finding.line > 0) {
        attributes += " line=\"" + std::to_string(finding.line) + '"';
    }
    return "    <testcase " + attributes + ">\n      <failure type=\"" + Escaped(finding.code) +
           "\" message=\"" + text + "\">" + Escaped(PlaceOf(finding)) + ": " + text +
           "</failure>\n    </testcase>\n";
}

struct Suite {
    std::string cases;
    std::size_t tests = 0, failures = 0;
};

/// A test for each finding, and one that passes for each file without findings.
Suite SuiteOf(const RunReport& report) {
    Suite suite;
    std::set<NativePath> named;
    for (const Finding& finding : FindingsOf(report)) {
        suite.cases += FailureAsJunit(finding);
        named.insert(finding.file);
        ++suite.failures;
    }
    suite.tests = suite.failures;
    for (const NativePath& file : report.valid) {
        if (!named.contains(file)) {
            const std::string name = Escaped(ShortName(file));
            suite.cases +=
                "    <testcase classname=\"valid\" name=\"" + name + "\" file=\"" + name + "\"/>\n";
            ++suite.tests;
        }
    }
    return suite;
}

std::string FormatAsJunit(const std::vector<RunReport>& reports) {
    std::string suites;
    std::size_t tests = 0;
    std::size_t failures = 0;
    for (const RunReport& report : reports) {
        const Suite suite = SuiteOf(report);
        const std::string name = report.deliverable.empty() ? ShortName(report.document) : report.deliverable;
        suites += "  <testsuite name=\"" + Escaped(name) + "\" tests=\"" + std::to_string(suite.tests) +
                  "\" failures=\"" + std::to_string(suite.failures) + "\" errors=\"0\" skipped=\"0\">\n" +
                  suite.cases + "  </testsuite>\n";
        tests += suite.tests;
        failures += suite.failures;
    }
    return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<testsuites name=\"ventrix validate\" tests=\"" +
           std::to_string(tests) + "\" failures=\"" + std::to_string(failures) + "\" errors=\"0\">\n" +
           suites + "</testsuites>\n";
}

}  // namespace

std::string FormatFindings(const std::string& format, const std::vector<RunReport>& reports) {
    if (format == "sarif") {
        return FormatAsSarif(reports);
    }
    if (format == "codequality") {
        return FormatAsCodeQuality(reports);
    }
    return format == "junit" ? FormatAsJunit(reports) : FormatAsJson(reports);
}

}  // namespace ventrix::desk
