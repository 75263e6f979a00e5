#include "desk/cli/option_checks.h"

#include <string_view>

#include "desk/cli/exit_status.h"
#include "desk/xml/xpath_syntax.h"

namespace ventrix::desk {
namespace {

constexpr std::string_view kWhitespace = " \t\r\n";
constexpr std::size_t kScopedGroupSize = 4;

[[noreturn]] void Refuse(const std::string& option, const std::string& value, const std::string& problem) {
    throw Stop{kExitUsage, option + ": '" + value + "' " + problem};
}

/// The list with one comma between its words and nothing else.
std::string Corrected(const std::string& list) {
    const std::string separators = std::string(kWhitespace) + ',';
    std::string corrected;
    for (std::size_t start = list.find_first_not_of(separators); start != std::string::npos;) {
        const std::size_t end = list.find_first_of(separators, start);
        corrected += (corrected.empty() ? "" : ",") + list.substr(start, end - start);
        start = list.find_first_not_of(separators, end);
    }
    return corrected;
}

void CheckName(const char* option, const std::string& name) {
    if (!name.empty() && !IsQualifiedName(name)) {
        Refuse(option, name, "is not an XML name; write a name such as 'audience' or 'xml:lang'");
    }
}

void CheckList(const char* option, const std::string& list) {
    const std::vector<std::string> names = SplitList(list);
    const std::string corrected = Corrected(list);
    if (list.find_first_of(kWhitespace) != std::string::npos && !corrected.empty()) {
        Refuse(option, list, "contains spaces; write '" + corrected + "'");
    }
    for (const std::string& name : names) {
        if (name.empty()) {
            Refuse(option, list, "contains an empty name; write names with one comma between them");
        }
        CheckName(option, name);
    }
}

void CheckLists(const char* option, const std::vector<std::string>& lists) {
    for (const std::string& list : lists) {
        CheckList(option, list);
    }
}

void CheckScopedGroups(const char* option, const std::vector<std::string>& lists) {
    CheckLists(option, lists);
    for (const std::string& list : lists) {
        const std::size_t count = SplitList(list).size();
        if (count % kScopedGroupSize != 0) {
            Refuse(option, list,
                   "has " + std::to_string(count) + (count == 1 ? " name" : " names") +
                       ", but each group needs four; write ELEMENT,ATTRIBUTE,HTML-ELEMENT,HTML-ATTRIBUTE");
        }
    }
}

void CheckQueries(const char* option, const std::vector<std::string>& queries) {
    for (const std::string& query : queries) {
        if (query.find(',') != std::string::npos) {
            Refuse(option, query,
                   "contains a comma, at which the module splits it; repeat the option for each query, and "
                   "write "
                   "each without a comma");
        }
        if (const std::string problem = XPathProblem(query); !problem.empty()) {
            Refuse(option, query, "is not an XPath expression (" + problem + "); correct the query");
        }
    }
}

void RequireOption(const char* option, const std::string& value, const char* required, bool given) {
    if (!value.empty() && !given) {
        Refuse(option, value,
               std::string("has no effect without ") + required + "; add it or remove " + option);
    }
}

/// The module refuses a request without a step.
void RequireStep(const PublishOptions& options) {
    if (options.noTransform && options.preScript.empty() && options.postScript.empty()) {
        throw Stop{kExitUsage, "--no-transform leaves nothing to do; add --pre-script or --post-script"};
    }
}

}  // namespace

bool AsksForDitaTransformation(const PublishOptions& options) {
    // A post-script alone stands in for the transformation; a pre-script prepares one.
    const bool onlyPostScript = !options.postScript.empty() && options.preScript.empty();
    return options.ditaOt || (options.xslt.empty() && !options.noTransform && !onlyPostScript);
}

std::vector<std::string> SplitList(const std::string& list) {
    std::vector<std::string> pieces;
    std::size_t start = 0;
    for (std::size_t comma = list.find(','); comma != std::string::npos; comma = list.find(',', start)) {
        pieces.push_back(list.substr(start, comma - start));
        start = comma + 1;
    }
    pieces.push_back(list.substr(start));
    return pieces;
}

void CheckPublishOptions(const PublishOptions& options) {
    RequireStep(options);
    CheckLists("--attributes", options.attributes);
    CheckLists("--elements", options.elements);
    CheckScopedGroups("--scoped-attributes", options.scopedAttributes);
    CheckLists("--source-path", options.sourcePath);
    CheckQueries("--preserve-xpath", options.preserveXpath);
    CheckName("--target-attr", options.targetAttr);
    CheckName("--xpath-attr", options.xpathAttr);
    CheckName("--source-path-attr", options.sourcePathAttr);
    CheckName("--preserve-xpath-attr", options.preserveXpathAttr);
    RequireOption("--xpath-attr", options.xpathAttr, "--xpath", options.xpath);
    RequireOption("--source-path-attr", options.sourcePathAttr, "--source-path", !options.sourcePath.empty());
    RequireOption("--preserve-xpath-attr", options.preserveXpathAttr, "--preserve-xpath",
                  !options.preserveXpath.empty());
    RequireOption("--ditaval", options.ditaval, "a DITA transformation (--dita-ot)",
                  AsksForDitaTransformation(options));
}

}  // namespace ventrix::desk
