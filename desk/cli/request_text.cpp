#include "desk/cli/request_text.h"

#include "desk/cli/exit_status.h"

namespace ventrix::desk {
namespace {

constexpr std::size_t kLongestToken = 1023;

/// A request has no escapes: a value with double quotes goes between single ones, and one with both cannot be
/// told. `given` is the option that the person wrote.
std::string Quoted(const char* given, const std::string& value) {
    if (value.size() > kLongestToken) {
        throw Stop{kExitUsage, std::string(given) + ": the value is too long (" +
                                   std::to_string(value.size()) + " bytes, 1023 at most)"};
    }
    const bool hasDouble = value.find('"') != std::string::npos;
    if (hasDouble && value.find('\'') != std::string::npos) {
        throw Stop{kExitUsage,
                   std::string(given) + ": a value cannot hold both kinds of quotation marks: " + value};
    }
    const char quote = hasDouble ? '\'' : '"';
    return quote + value + quote;
}

class RequestWriter {
  public:
    explicit RequestWriter(std::string verb, std::uint32_t documentId)
        : text_(std::move(verb) + " -docId " + std::to_string(documentId)) {}

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

    /// Lists add up in a request, so that each one given goes in on its own.
    void Lists(const char* option, const char* given, const std::vector<std::string>& lists) {
        for (const std::string& list : lists) {
            Value(option, given, list);
        }
    }

    std::string Text() && { return std::move(text_); }

  private:
    std::string text_;
};

}  // namespace

std::string PublishRequest(const PublishValues& values, const PublishOptions& options) {
    RequestWriter request("Publish", values.documentId);
    request.Path("-outputFolder", "--output", values.outputFolder);
    request.Flag("-useDITAOT", values.ditaOt);
    request.Path("-useXSLT", "--xslt", values.xslt);
    request.Path("-usePreScript", "--pre-script", values.preScript);
    request.Path("-usePostScript", "--post-script", values.postScript);
    request.Path("-ditaval", "--ditaval", values.ditaval);
    request.Path("-outFilePath", "--out-file", values.outFile);
    request.Path("-logFile", "--log", values.log);
    request.Lists("-attributes", "--attributes", options.attributes);
    request.Lists("-elements", "--elements", options.elements);
    request.Lists("-scopedAttributes", "--scoped-attributes", options.scopedAttributes);
    request.Value("-targetAttr", "--target-attr", options.targetAttr);
    request.Flag("-addXpath", options.xpath);
    request.Value("-xpathAttr", "--xpath-attr", options.xpathAttr);
    request.Lists("-addSourcePath", "--source-path", options.sourcePath);
    request.Value("-sourcePathAttr", "--source-path-attr", options.sourcePathAttr);
    request.Lists("-preserveXPathList", "--preserve-xpath", options.preserveXpath);
    request.Value("-preserveXPathAttr", "--preserve-xpath-attr", options.preserveXpathAttr);
    return std::move(request).Text();
}

std::string ValidateRequest(std::uint32_t documentId, const SystemPath& log) {
    RequestWriter request("Validate", documentId);
    request.Path("-logFile", "--log", log);
    return std::move(request).Text();
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
