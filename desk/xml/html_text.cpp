#include "desk/xml/html_text.h"

#include <algorithm>
#include <cctype>

#include "desk/xml/encodings.h"
#include "desk/xml/xhtml.h"
#include "desk/xml/xml_handles.h"

namespace ventrix::desk {
namespace {

constexpr std::string_view kWhitespace = " \t\r\n";
constexpr std::size_t kNpos = std::string_view::npos;

std::string Lower(std::string_view text) {
    std::string lower(text);
    std::ranges::transform(lower, lower.begin(),
                           [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return lower;
}

/// The value of an attribute may contain these signs in HTML.
std::string WithoutTagSigns(std::string_view value) {
    std::string escaped;
    for (const char c : value) {
        escaped += c == '<' ? "&lt;" : c == '"' ? "&quot;" : std::string(1, c);
    }
    return escaped;
}

/// Reads HTML from its start to its end and appends it to the XML.
class Rewriting {
  public:
    explicit Rewriting(std::string_view html) : html_(html) {}

    std::string Run() {
        while (!html_.empty()) {
            AppendMarkup(xml_, Take(html_.find('<')));
            TakeTag();
        }
        return std::move(xml_);
    }

  private:
    /// What is left up to the length.
    std::string_view Take(std::size_t length) {
        const std::string_view taken = html_.substr(0, length);
        html_.remove_prefix(taken.size());
        return taken;
    }

    std::string_view TakePast(std::string_view word) {
        const std::size_t found = html_.find(word);
        return Take(found == kNpos ? found : found + word.size());
    }

    void SkipWhitespace() { Take(std::min(html_.find_first_not_of(kWhitespace), html_.size())); }

    void TakeTag() {
        if (html_.starts_with("<!--")) {
            xml_ += TakePast("-->");
        } else if (html_.starts_with("<![CDATA[")) {
            xml_ += TakePast("]]>");
        } else if (html_.starts_with("<!")) {
            TakeDoctype();
        } else if (html_.starts_with("<?")) {
            TakeInstruction();
        } else if (html_.starts_with("</")) {
            xml_ += TakePast(">");
        } else if (html_.size() > 1 && std::isalpha(static_cast<unsigned char>(html_[1])) != 0) {
            TakeElement();
        } else if (!html_.empty()) {
            Take(1);
            xml_ += "&lt;";
        }
    }

    /// XML wants a system id after a public one.
    void TakeDoctype() {
        std::string doctype(TakePast(">"));
        if (doctype.find("PUBLIC") != kNpos && std::ranges::count(doctype, '"') == 2) {
            doctype.insert(doctype.rfind('"') + 1, " \"\"");
        }
        xml_ += doctype;
    }

    void TakeInstruction() {
        std::string instruction(TakePast(">"));
        if (!instruction.ends_with("?>")) {
            instruction.insert(instruction.size() - 1, "?");
        }
        xml_ += instruction;
    }

    void TakeElement() {
        const std::string name(Take(html_.find_first_of(" \t\r\n/>", 1)).substr(1));
        xml_ += '<' + name;
        for (SkipWhitespace(); !html_.empty() && html_[0] != '>' && html_[0] != '/'; SkipWhitespace()) {
            TakeAttribute();
        }
        const std::string_view end = TakePast(">");
        const bool isClosed = end.starts_with('/') || IsEmptyHtmlElement(name);
        xml_ += isClosed ? " />" : ">";
        if (!isClosed && (Lower(name) == "script" || Lower(name) == "style")) {
            xml_ += EscapedXml(Take(html_.find("</" + name)));
        }
    }

    void TakeAttribute() {
        const std::string_view name = Take(html_.find_first_of(" \t\r\n=/>", 1));
        SkipWhitespace();
        std::string_view value = name;
        if (html_.starts_with('=')) {
            Take(1);
            SkipWhitespace();
            value = TakeValue();
        }
        xml_.append(" ").append(name).append("=\"");
        AppendMarkup(xml_, WithoutTagSigns(value));
        xml_ += '"';
    }

    std::string_view TakeValue() {
        const char quote = html_.empty() ? '\0' : html_[0];
        if (quote != '"' && quote != '\'') {
            return Take(html_.find_first_of(" \t\r\n>"));
        }
        Take(1);
        const std::string_view value = Take(html_.find(quote));
        Take(1);
        return value;
    }

    std::string_view html_;
    std::string xml_;
};

XmlDocument Parsed(std::string_view xml, const char* encoding) {
    return XmlDocument(
        xmlReadMemory(xml.data(), static_cast<int>(xml.size()), nullptr, encoding,
                      XML_PARSE_NOERROR | XML_PARSE_NOWARNING | XML_PARSE_NONET | XML_PARSE_HUGE));
}

/// The encoding that a page of HTML declares, by its byte order mark or in its head.
std::string EncodingOf(std::string_view html) {
    if (const char* utf16 = Utf16Encoding(html); utf16 != nullptr) {
        return utf16;
    }
    constexpr std::string_view kCharset = "charset=";
    constexpr std::size_t kHead = 4096;
    const std::size_t found = html.substr(0, kHead).find(kCharset);
    if (found == kNpos) {
        return "UTF-8";
    }
    std::string_view name = html.substr(found + kCharset.size());
    name.remove_prefix(name.starts_with('"') ? 1 : 0);
    return std::string(name.substr(0, name.find_first_of("\"'> ;/")));
}

XmlDocument ParsedHtml(std::string_view html) {
    std::string text = ToUtf8(html, EncodingOf(html).c_str()).value_or(std::string());
    if (text.starts_with("\xEF\xBB\xBF")) {
        text.erase(0, 3);
    }
    return Parsed(WellFormedHtml(text), "UTF-8");
}

}  // namespace

std::string WellFormedHtml(std::string_view html) {
    return Rewriting(html).Run();
}

std::string XhtmlOfPage(std::string_view page) {
    if (const XmlDocument document = Parsed(page, nullptr); document != nullptr) {
        const std::string root = Lower(View(xmlDocGetRootElement(document.get())->name));
        return root == "html" ? XhtmlOf(document.get()) : std::string();
    }
    const XmlDocument document = ParsedHtml(page);
    return document == nullptr ? std::string() : XhtmlOf(document.get());
}

}  // namespace ventrix::desk
