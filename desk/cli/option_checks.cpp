#include "desk/cli/option_checks.h"

#include <algorithm>
#include <iterator>
#include <string_view>

#include "desk/cli/exit_status.h"
#include "desk/xml/xml_handles.h"
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

/// Parameters have the form NAME=VALUE.
void CheckParams(const char* option, const std::vector<std::string>& parameters, bool hasStylesheet) {
    for (const std::string& parameter : parameters) {
        const std::size_t equals = parameter.find('=');
        if (equals == std::string::npos || !IsQualifiedName(parameter.substr(0, equals))) {
            Refuse(option, parameter, "is not of the form NAME=VALUE");
        }
        RequireOption(option, parameter, "a stylesheet (--xslt)", hasStylesheet);
    }
}

/// What a run sets itself cannot be set a second time.
void CheckToolkitParam(const std::string& parameter) {
    constexpr std::string_view kOwn[] = {
        "args.input",    "args.filter",         "dita.input.valfile", "args.resources", "output.dir",
        "dita.temp.dir", "generate.copy.outer", "outer.control",      "transtype",      "dita.dir"};
    constexpr std::string_view kNameCharacters =
        "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789._-";
    const std::size_t equals = parameter.find('=');
    const std::string name = parameter.substr(0, equals);
    if (equals == std::string::npos || name.empty() ||
        name.find_first_not_of(kNameCharacters) != std::string::npos) {
        Refuse("--toolkit-param", parameter, "is not of the form NAME=VALUE");
    }
    if (std::ranges::find(kOwn, name) != std::end(kOwn)) {
        Refuse("--toolkit-param", name,
               "is set by ventrix itself; use --ditaval, --resource, --transtype or --output");
    }
}

/// The module refuses a request without a step.
void RequireStep(const PublishOptions& options) {
    if (options.noTransform && options.preScript.empty() && options.postScript.empty()) {
        throw Stop{kExitUsage, "--no-transform leaves nothing to do; add --pre-script or --post-script"};
    }
}

/// The title goes into pages, which are XML.
void CheckTitle(const std::string& title) {
    const bool hasControls = std::ranges::any_of(title, [](unsigned char c) { return c < ' ' || c == 0x7f; });
    if (hasControls || xmlCheckUTF8(Xml(title.c_str())) == 0) {
        throw Stop{kExitUsage, "--title: the title has a control character or is not UTF-8; remove it"};
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
    for (const std::string& filter : options.ditaval) {
        RequireOption("--ditaval", filter, "a DITA transformation (--dita-ot)",
                      AsksForDitaTransformation(options));
    }
    CheckTitle(options.title);
    CheckParams("--param", options.params, !options.xslt.empty());
    CheckParams("--string-param", options.stringParams, !options.xslt.empty());
    RequireOption("--xslt-engine", options.xsltEngine, "a stylesheet (--xslt)", !options.xslt.empty());
    for (const std::string& parameter : options.toolkitParams) {
        CheckToolkitParam(parameter);
    }
}

}  // namespace ventrix::desk
