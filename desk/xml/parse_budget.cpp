#include "desk/xml/parse_budget.h"

#include <libxml/SAX2.h>

#include <algorithm>

#include "desk/paths/paths.h"
#include "desk/xml/limits.h"
#include "desk/xml/reference_path.h"
#include "desk/xml/xml_handles.h"
#include "platform/native_files.h"

namespace ventrix::desk {
namespace {

constexpr std::size_t kTooMany = kMaxExpansionBytes + 1;

/// The minimum cost of a reference, so that references to empty entities count too.
constexpr std::size_t kReferenceCost = 64;

std::string AtLine(std::size_t line, const std::string& what) {
    return "line " + std::to_string(line) + ": " + what;
}

/// Calls `visit` with the name of each general entity that the text refers to.
template <typename Visit>
void ForEachReference(std::string_view text, Visit visit) {
    for (std::size_t at = 0; (at = text.find('&', at)) != std::string_view::npos; ++at) {
        const std::size_t end = text.find(';', at);
        if (end != std::string_view::npos && text[at + 1] != '#') {
            visit(std::string(text.substr(at + 1, end - at - 1)));
        }
    }
}

std::string ContentOf(const xmlEntity& entity) {
    std::string content;
    const NativePath file = TargetOf(View(entity.URI), {"/"}).path;
    platform::ReadRegularFile(ToFilesystem(file), kMaxExpansionBytes, content);
    std::erase(content, '\0');
    return content;
}

std::string ExpansionRefusal(const xmlEntity& entity) {
    return "the entity '" + std::string(View(entity.name)) + "' expands to more than " +
           std::to_string(kMaxExpansionBytes) + " bytes, or is nested more than " +
           std::to_string(kMaxEntityDepth) + " levels deep, which are the limits";
}

std::string AttributeRefusal(const std::string& what) {
    return what + " has more than " + std::to_string(kMaxAttributes) + " attributes, which is the limit";
}

/// The attributes of the tag that the text begins with. The text ends before the next '<'.
std::size_t CountAttributes(std::string_view tag) {
    std::size_t attributes = 0;
    char quote = '\0';
    char previous = '\0';  // The last character that is not whitespace.
    for (const char c : tag) {
        if (c == '\0') {
            continue;  // Half of an ASCII character in UTF-16.
        }
        const bool opens = quote == '\0' && (c == '"' || c == '\'') && previous == '=';
        if ((c == '>' && quote == '\0') ||
            (previous == '<' && (c == '!' || c == '?' || IsXmlWhitespace(c)))) {
            break;  // The end of a tag, or a comment, a CDATA section, or no tag at all.
        }
        if (opens || c == quote) {
            attributes += opens ? 1 : 0;
            quote = opens ? c : '\0';
        }
        previous = IsXmlWhitespace(c) ? previous : c;
    }
    return attributes;
}

}  // namespace

ParseBudget::ParseBudget(xmlParserCtxt& parser) : document_(parser) {
    parser._private = this;
    parser.sax->getEntity = FindEntity;
    parser.sax->getParameterEntity = FindParameterEntity;
    parser.sax->startElementNs = StartElement;
    parser.sax->attributeDecl = DeclareAttribute;
}

int ParseBudget::Line() const {
    return document_.inputNr > 0 ? document_.inputTab[0]->line : 0;
}

void ParseBudget::Refuse(xmlParserCtxt* parser, const std::string& what) {
    if (refusal_.empty()) {
        refusal_ = AtLine(static_cast<std::size_t>(Line()), what);
    }
    xmlStopParser(parser);
}

bool ParseBudget::Admit(xmlParserCtxt* parser, const xmlEntity& entity, std::size_t bytes) {
    expanded_ = std::min(expanded_ + bytes + kReferenceCost, kTooMany);
    if (expanded_ == kTooMany) {
        Refuse(parser, ExpansionRefusal(entity));
    }
    return refusal_.empty();
}

/// The size is computed without expanding the entity: a few hundred bytes of declarations may expand to more
/// than any memory holds. kTooMany for an entity that is nested too deep or within itself.
std::size_t ParseBudget::ExpandedSize(const xmlEntity& entity, int depth) {
    if (depth > kMaxEntityDepth) {
        return kTooMany;
    }
    if (const auto known = sizes_.find(&entity); known != sizes_.end()) {
        return known->second;
    }
    std::size_t size = 0;
    if (entity.etype == XML_INTERNAL_GENERAL_ENTITY) {
        size = ExpandedSize(View(entity.content), entity.doc, depth);
    } else if (entity.etype == XML_EXTERNAL_GENERAL_PARSED_ENTITY &&
               (document_.options & XML_PARSE_NOENT) != 0) {
        size = ExpandedSize(ContentOf(entity), entity.doc, depth);
    }
    sizes_[&entity] = size;
    return size;
}

std::size_t ParseBudget::ExpandedSize(std::string_view text, xmlDoc* document, int depth) {
    std::size_t size = std::min(text.size(), kTooMany);
    ForEachReference(text, [&](const std::string& name) {
        const xmlEntity* nested = xmlGetDocEntity(document, Xml(name.c_str()));
        const std::size_t nestedSize = nested == nullptr ? 0 : ExpandedSize(*nested, depth + 1);
        size = std::min(size + nestedSize, kTooMany);
    });
    return size;
}

xmlEntity* ParseBudget::FindEntity(void* context, const xmlChar* name) {
    auto* parser = static_cast<xmlParserCtxt*>(context);
    ParseBudget& budget = Of(parser);
    xmlEntity* entity = budget.refusal_.empty() ? xmlSAX2GetEntity(context, name) : nullptr;
    const bool predefined = entity != nullptr && entity->etype == XML_INTERNAL_PREDEFINED_ENTITY;
    const bool admitted =
        entity != nullptr && (predefined || budget.Admit(parser, *entity, budget.ExpandedSize(*entity, 0)));
    return admitted ? entity : nullptr;
}

xmlEntity* ParseBudget::FindParameterEntity(void* context, const xmlChar* name) {
    auto* parser = static_cast<xmlParserCtxt*>(context);
    ParseBudget& budget = Of(parser);
    xmlEntity* entity = budget.refusal_.empty() ? xmlSAX2GetParameterEntity(context, name) : nullptr;
    const bool admitted =
        entity != nullptr && budget.Admit(parser, *entity, static_cast<std::size_t>(entity->length));
    return admitted ? entity : nullptr;
}

void ParseBudget::StartElement(void* context, const xmlChar* name, const xmlChar* prefix, const xmlChar* uri,
                               int namespaceCount, const xmlChar** namespaces, int attributeCount,
                               int defaultedCount, const xmlChar** attributes) {
    auto* parser = static_cast<xmlParserCtxt*>(context);
    ParseBudget& budget = Of(parser);
    const int outside = parser == &budget.document_ ? 0 : budget.document_.nodeNr;
    if (outside + parser->nodeNr >= kMaxElementDepth) {
        budget.Refuse(parser, "elements are nested more than " + std::to_string(kMaxElementDepth) +
                                  " levels deep, which is the limit");
        return;
    }
    xmlSAX2StartElementNs(context, name, prefix, uri, namespaceCount, namespaces, attributeCount,
                          defaultedCount, attributes);
}

void ParseBudget::DeclareAttribute(void* context, const xmlChar* element, const xmlChar* name, int type,
                                   int defaultKind, const xmlChar* defaultValue, xmlEnumeration* tree) {
    auto* parser = static_cast<xmlParserCtxt*>(context);
    ParseBudget& budget = Of(parser);
    const std::string key(View(element));
    if (++budget.declaredAttributes_[key] > kMaxAttributes) {
        budget.Refuse(parser, AttributeRefusal("the declaration of the element '" + key + "'"));
        xmlFreeEnumeration(tree);
        return;
    }
    xmlSAX2AttributeDecl(context, element, name, type, defaultKind, defaultValue, tree);
}

std::string FindTooManyAttributes(std::string_view text) {
    constexpr std::size_t kShortest = 2;  // Bytes of an attribute that counts: the equals sign and a quote.
    for (std::size_t start = text.find('<'); start != std::string_view::npos;) {
        const std::size_t next = text.find('<', start + 1);
        const std::string_view tag = text.substr(start, next - start);
        if (tag.size() > kShortest * kMaxAttributes && CountAttributes(tag) > kMaxAttributes) {
            return AtLine(1 + static_cast<std::size_t>(std::ranges::count(text.substr(0, start), '\n')),
                          AttributeRefusal("an element"));
        }
        start = next;
    }
    return {};
}

}  // namespace ventrix::desk
