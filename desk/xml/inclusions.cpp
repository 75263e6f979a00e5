#include "desk/xml/inclusions.h"

#include <libxml/xinclude.h>

#include <algorithm>
#include <optional>
#include <string_view>

#include "desk/xml/encodings.h"
#include "desk/xml/markup_in_text.h"
#include "desk/xml/network_guard.h"
#include "desk/xml/reference_path.h"
#include "desk/xml/xml_handles.h"

namespace ventrix::desk {
namespace {

constexpr std::size_t kNpos = std::string_view::npos;

struct Recorder {
    NetworkGuard& guard;
    std::vector<FailedInclusion> failed = {};
};

std::string ReasonFor(const xmlError& error) {
    if (error.code == XML_XINCLUDE_RECURSION) {
        return "it includes the file that contains it";
    }
    if (error.code == XML_XINCLUDE_NO_FALLBACK) {
        return "href has to name a well-formed local file, and xpointer a part of it";
    }
    const std::string_view message = error.message == nullptr ? "unknown error" : error.message;
    return std::string(message.substr(0, message.find('\n')));
}

std::string StartOf(const xmlNode* include) {
    std::string text = "xi:include";
    for (const char* name : {"href", "xpointer"}) {
        if (const std::string value = Attribute(include, name); !value.empty()) {
            text.append(" ").append(name).append("=\"").append(value).append("\"");
        }
    }
    return text;
}

/// Without an href, the file itself is meant.
Subject SubjectOf(const xmlNode* include, const NativePath& file) {
    const std::string href = Attribute(include, "href");
    if (href.empty()) {
        return {.attribute = "xpointer", .value = Attribute(include, "xpointer"), .target = file};
    }
    return {.attribute = "href", .value = href, .target = TargetOf(href, FolderOf(file)).path};
}

void TakeError(void* context, xmlErrorPtr error) {
    auto& recorder = *static_cast<Recorder*>(context);
    recorder.guard.Take(*error);
    const auto* node = static_cast<const xmlNode*>(error->node);
    if (error->domain == XML_FROM_XINCLUDE && error->level >= XML_ERR_ERROR && node != nullptr) {
        const NativePath file = TargetOf(View(node->doc->URL), {"/"}).path;
        recorder.failed.push_back({file, static_cast<int>(xmlGetLineNo(node)), StartOf(node),
                                   ReasonFor(*error), SubjectOf(node, file)});
    }
}

struct Delimiters {
    std::string_view opening, closing;
};

/// What contains no include element, whatever it looks like. Of a declaration only the start counts: a
/// comment may follow inside.
constexpr Delimiters kOtherMarkup[] = {{"<!--", "-->"}, {"<![CDATA[", "]]>"}, {"<?", "?>"}, {"<!", ""}};

/// The length of the piece of markup that the text begins with.
std::size_t MarkupLength(std::string_view text) {
    for (const Delimiters& delimiters : kOtherMarkup) {
        if (text.starts_with(delimiters.opening)) {
            const std::size_t end = text.find(delimiters.closing, delimiters.opening.size());
            return end == kNpos ? text.size() : end + delimiters.closing.size();
        }
    }
    return TagLength(text);
}

bool IsIncludeTag(std::string_view tag) {
    if (tag.starts_with("<!")) {
        return false;
    }
    const std::string_view name = tag.substr(1, tag.find_first_of(" \t\r\n/>", 1) - 1);
    return name.substr(name.find(':') + 1) == "include";
}

/// Text that declares UTF-16 here was converted.
std::string EncodingOf(std::string_view document) {
    const std::vector<AttributeInText> attributes = AttributesIn(document.substr(0, document.find("?>")));
    const bool isDeclared = !attributes.empty() && attributes.front().name == "version";
    const auto encoding = std::ranges::find(attributes, "encoding", &AttributeInText::name);
    return isDeclared && encoding != attributes.end() && !encoding->value.starts_with("UTF-16")
               ? std::string(encoding->value)
               : "UTF-8";
}

/// The value of an attribute that is written so, in quotes; nothing if it refers to an entity.
std::optional<std::string> Parsed(std::string_view quoted, const std::string& encoding) {
    const std::optional<std::string> utf8 = ToUtf8(quoted, encoding.c_str());
    const std::string element = "<a b=" + utf8.value_or("") + "/>";
    const XmlDocument document(xmlReadMemory(element.data(), static_cast<int>(element.size()), nullptr,
                                             "UTF-8",
                                             XML_PARSE_NONET | XML_PARSE_NOERROR | XML_PARSE_NOWARNING));
    return document == nullptr ? std::nullopt
                               : std::optional(Attribute(xmlDocGetRootElement(document.get()), "b"));
}

/// What is not allowed in a URI is escaped, and what would need an escape in an attribute.
std::string Escaped(std::string_view path) {
    constexpr std::string_view kEscaped = " \"&<>\\^`{|}";
    std::string escaped;
    for (const char byte : path) {
        const bool isEscaped = kEscaped.find(byte) != kNpos || static_cast<unsigned char>(byte) >= 0x80;
        escaped += byte == '\'' ? "%27" : isEscaped ? PercentEncoded({&byte, 1}) : std::string(1, byte);
    }
    return escaped;
}

/// The tag with its href escaped.
std::string WithEscapedPath(std::string_view tag, const std::string& encoding) {
    const std::vector<AttributeInText> attributes = AttributesIn(tag);
    const auto href = std::ranges::find(attributes, "href", &AttributeInText::name);
    std::string changed(tag);
    if (href == attributes.end()) {
        return changed;
    }
    const auto begin = static_cast<std::size_t>(href->value.data() - tag.data());
    const std::size_t end = tag.find(tag[begin - 1], begin);
    const auto path = Parsed(tag.substr(begin - 1, end - begin + 2), encoding);
    return path.has_value() && end != kNpos ? changed.replace(begin, end - begin, Escaped(*path)) : changed;
}

bool IsInclude(const xmlNode* node) {
    return node->type == XML_ELEMENT_NODE && node->ns != nullptr && View(node->name) == "include" &&
           (View(node->ns->href) == View(XINCLUDE_NS) || View(node->ns->href) == View(XINCLUDE_OLD_NS));
}

void RemoveIncludes(xmlDoc* document) {
    auto* const top = reinterpret_cast<xmlNode*>(document);
    std::vector<xmlNode*> includes;
    for (xmlNode* node = NextNode(top, top); node != nullptr; node = NextNode(node, top)) {
        if (IsInclude(node)) {
            includes.push_back(node);
        }
    }
    // A fallback may contain further ones, which come later.
    for (; !includes.empty(); includes.pop_back()) {
        xmlUnlinkNode(includes.back());
        xmlFreeNode(includes.back());
    }
}

}  // namespace

std::vector<FailedInclusion> ProcessInclusions(xmlDoc* document, NetworkGuard& guard) {
    Recorder recorder{guard};
    const xmlStructuredErrorFunc function = xmlStructuredError;
    void* const context = xmlStructuredErrorContext;
    xmlSetStructuredErrorFunc(&recorder, TakeError);
    xmlXIncludeProcessFlags(document, XML_PARSE_NONET | XML_PARSE_NOENT | XML_PARSE_NOCDATA |
                                          XML_PARSE_DTDLOAD | XML_PARSE_DTDATTR | XML_PARSE_NOXINCNODE |
                                          XML_PARSE_NOBASEFIX);
    xmlSetStructuredErrorFunc(context, function);
    if (!recorder.failed.empty()) {
        RemoveIncludes(document);
    }
    return std::move(recorder.failed);
}

void EscapeInclusionPaths(std::string& document) {
    if (document.find("XInclude") == kNpos) {
        return;
    }
    const std::string encoding = EncodingOf(document);
    std::string changed;
    std::size_t copied = 0;
    for (std::size_t at = document.find('<'); at != kNpos;) {
        const std::string_view rest = std::string_view(document).substr(at);
        const std::string_view markup = rest.substr(0, MarkupLength(rest));
        const std::size_t end = at + markup.size();
        if (IsIncludeTag(markup)) {
            changed.append(document, copied, at - copied).append(WithEscapedPath(markup, encoding));
            copied = end;
        }
        at = document.find('<', end);
    }
    document = changed.append(document, copied);
}

}  // namespace ventrix::desk
