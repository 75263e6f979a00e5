// Enforces the limits of limits.h while libxml2 parses a document. Strings are UTF-8.
#pragma once

#include <libxml/parser.h>

#include <cstddef>
#include <string>
#include <string_view>
#include <unordered_map>

namespace ventrix::desk {

/// Watches one parse. It replaces SAX handlers of the parser and is the parser's private data, so it must
/// live until the parse has ended. Once a limit is exceeded, the parser stops.
class ParseBudget {
  public:
    explicit ParseBudget(xmlParserCtxt& parser);
    ParseBudget(const ParseBudget&) = delete;
    ParseBudget& operator=(const ParseBudget&) = delete;

    /// The budget of the document that a parser, or the parser of an entity in it, belongs to.
    static ParseBudget& Of(const xmlParserCtxt* parser) {
        return *static_cast<ParseBudget*>(parser->_private);
    }

    /// The limit that was exceeded, one line that begins with the line number; empty if none was.
    const std::string& Refusal() const { return refusal_; }

    /// The line of the document that is being parsed; an entity counts as the line that refers to it.
    int Line() const;

    /// For the caller's own use.
    void* data = nullptr;

  private:
    static xmlEntity* FindEntity(void* context, const xmlChar* name);
    static xmlEntity* FindParameterEntity(void* context, const xmlChar* name);
    static void StartElement(void* context, const xmlChar* name, const xmlChar* prefix, const xmlChar* uri,
                             int namespaceCount, const xmlChar** namespaces, int attributeCount,
                             int defaultedCount, const xmlChar** attributes);
    static void DeclareAttribute(void* context, const xmlChar* element, const xmlChar* name, int type,
                                 int defaultKind, const xmlChar* defaultValue, xmlEnumeration* tree);

    void Refuse(xmlParserCtxt* parser, const std::string& what);
    bool Admit(xmlParserCtxt* parser, const xmlEntity& entity, std::size_t bytes);
    std::size_t ExpandedSize(const xmlEntity& entity, int depth);
    std::size_t ExpandedSize(std::string_view text, xmlDoc* document, int depth);

    xmlParserCtxt& document_;
    std::string refusal_;
    std::size_t expanded_ = 0;
    std::unordered_map<const xmlEntity*, std::size_t> sizes_;
    std::unordered_map<std::string, std::size_t> declaredAttributes_;  ///< By element.
};

/// Looks for an element with too many attributes, which the parser would take minutes for before it calls a
/// handler. The refusal as ParseBudget gives it; empty if there is none. `text` is a document in any encoding
/// that contains ASCII.
std::string FindTooManyAttributes(std::string_view text);

}  // namespace ventrix::desk
