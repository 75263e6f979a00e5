#include "desk/cli/request_text.h"

#include <algorithm>
#include <cctype>

#include "bridge/contract/request.h"
#include "desk/cli/exit_status.h"

namespace ventrix::desk {
namespace {

/// The request grammar has no escapes: a value with double quotes is put in single quotes, and a value with
/// both cannot be expressed. `given` is the command-line option, for the error message.
std::string Quoted(const char* given, const std::string& value) {
    if (value.size() > kLongestRequestToken) {
        throw Stop{kExitUsage, std::string(given) + ": the value is too long (" +
                                   std::to_string(value.size()) + " bytes; the limit is " +
                                   std::to_string(kLongestRequestToken) + ")"};
    }
    const bool hasDouble = value.find('"') != std::string::npos;
    if (hasDouble && value.find('\'') != std::string::npos) {
        throw Stop{kExitUsage,
                   std::string(given) + ": a value cannot contain both single and double quotes: " + value};
    }
    const char quote = hasDouble ? '\'' : '"';
    return quote + value + quote;
}

class RequestWriter {
  public:
    explicit RequestWriter(std::string command, std::uint32_t documentId)
        : text_(std::move(command) + ' ' + kDocIdOption + ' ' + std::to_string(documentId)) {}

    void Flag(const char* option, bool given) {
        if (given) {
            text_ += ' ';
            text_ += option;
        }
    }

    void Value(const char* option, const char* given, const std::string& value) {
        if (!value.empty()) {
            Flag(option, true);
            text_ += ' ' + Quoted(given, value);
        }
    }

    void Path(const char* option, const char* given, const SystemPath& path) {
        Value(option, given, path.utf8);
    }

    /// The module joins the lists of a repeated option, so each is written separately.
    void Lists(const char* option, const char* given, const std::vector<std::string>& lists) {
        for (const std::string& list : lists) {
            Value(option, given, list);
        }
    }

    std::string Text() && { return std::move(text_); }

  private:
    std::string text_;
};

bool EqualIgnoringCase(std::string_view a, std::string_view b) {
    return std::ranges::equal(a, b, [](char left, char right) {
        return std::tolower(static_cast<unsigned char>(left)) ==
               std::tolower(static_cast<unsigned char>(right));
    });
}

}  // namespace

std::string PublishRequest(const PublishValues& values, const PublishOptions& options) {
    RequestWriter request(kPublishCommand, values.documentId);
    request.Path(kOutputFolderOption, "--output", values.outputFolder);
    request.Flag(kUseDitaOtOption, values.ditaOt);
    request.Path(kUseXsltOption, "--xslt", values.xslt);
    request.Path(kUsePreScriptOption, "--pre-script", values.preScript);
    request.Path(kUsePostScriptOption, "--post-script", values.postScript);
    request.Path(kDitavalOption, "--ditaval", values.ditaval);
    request.Path(kOutFilePathOption, "--out-file", values.outFile);
    request.Path(kLogFileOption, "--log", values.log);
    request.Lists(kAttributesOption, "--attributes", options.attributes);
    request.Lists(kElementsOption, "--elements", options.elements);
    request.Lists(kScopedAttributesOption, "--scoped-attributes", options.scopedAttributes);
    request.Value(kTargetAttrOption, "--target-attr", options.targetAttr);
    request.Flag(kAddXpathOption, options.xpath);
    request.Value(kXpathAttrOption, "--xpath-attr", options.xpathAttr);
    request.Lists(kAddSourcePathOption, "--source-path", options.sourcePath);
    request.Value(kSourcePathAttrOption, "--source-path-attr", options.sourcePathAttr);
    request.Lists(kPreserveXPathListOption, "--preserve-xpath", options.preserveXpath);
    request.Value(kPreserveXPathAttrOption, "--preserve-xpath-attr", options.preserveXpathAttr);
    return std::move(request).Text();
}

std::string ValidateRequest(std::uint32_t documentId, const SystemPath& log) {
    RequestWriter request(kValidateCommand, documentId);
    request.Path(kLogFileOption, "--log", log);
    return std::move(request).Text();
}

bool IsRequest(std::string_view text, std::string_view command) {
    text.remove_prefix(std::min(text.find_first_not_of(' '), text.size()));
    const bool quoted = text.starts_with('"') || text.starts_with('\'');
    const char end = quoted ? text.front() : ' ';
    text.remove_prefix(quoted ? 1 : 0);
    return EqualIgnoringCase(text.substr(0, text.find(end)), command);
}

std::string RequestOption(std::string_view request, std::string_view option) {
    bool isNext = false;
    while (!request.empty()) {
        const char first = request.front();
        if (first == ' ' || first == '\t') {
            request.remove_prefix(1);
            continue;
        }
        const bool isQuoted = first == '"' || first == '\'';
        request.remove_prefix(isQuoted ? 1 : 0);
        const std::size_t end =
            std::min(isQuoted ? request.find(first) : request.find_first_of(" \t"), request.size());
        const std::string_view word = request.substr(0, end);
        if (isNext) {
            return std::string(word);
        }
        isNext = !isQuoted && EqualIgnoringCase(word, option);
        request.remove_prefix(std::min(end + 1, request.size()));
    }
    return {};
}

std::string FillDocumentId(std::string text, std::uint32_t documentId) {
    constexpr std::string_view kPlaceholder = "{docId}";
    const std::string number = std::to_string(documentId);
    for (std::size_t at = text.find(kPlaceholder); at != std::string::npos;
         at = text.find(kPlaceholder, at + number.size())) {
        text.replace(at, kPlaceholder.size(), number);
    }
    return text;
}

}  // namespace ventrix::desk
