#include "markers/xml/well_formed.h"

#include <libxml/SAX2.h>
#include <libxml/parser.h>
#include <libxml/parserInternals.h>
#include <libxml/xmlerror.h>

#include <algorithm>
#include <memory>
#include <unordered_map>

#include "markers/xml/local_entities.h"
#include "markers/xml/references.h"

namespace ventrix::xml {
namespace {

struct FreeContext {
    void operator()(xmlParserCtxt* context) const { xmlFreeParserCtxt(context); }
};
using Context = std::unique_ptr<xmlParserCtxt, FreeContext>;

/// Calls `visit` with the name of each entity that the text refers to.
template <typename Visit>
void ForEachReference(std::string_view text, Visit visit) {
    for (std::size_t at = 0; (at = text.find('&', at)) != std::string_view::npos; ++at) {
        const std::size_t end = text.find(';', at);
        if (end != std::string_view::npos && text[at + 1] != '#') {
            visit(std::string(text.substr(at + 1, end - at - 1)));
        }
    }
}

/// The sizes of entities, computed without expanding them: a few hundred bytes of declarations may expand to
/// more than any memory holds.
class EntitySizes {
  public:
    /// The bytes of the replacement text with all nested entities expanded. An entity that is nested too deep
    /// or within itself counts as more than kExpansionLimit.
    std::size_t SizeOf(const xmlEntity& entity) { return SizeOf(entity, 0); }

  private:
    std::size_t SizeOf(const xmlEntity& entity, int depth) {
        if (entity.content == nullptr || entity.etype != XML_INTERNAL_GENERAL_ENTITY) {
            return 0;
        }
        if (depth > kDeepestEntity) {
            return kExpansionLimit + 1;
        }
        if (const auto known = known_.find(&entity); known != known_.end()) {
            return known->second;
        }
        const std::string_view content = View(entity.content);
        std::size_t size = content.size();
        ForEachReference(content, [&](const std::string& name) {
            const xmlEntity* nested = xmlGetDocEntity(entity.doc, Chars(name));
            const std::size_t nestedSize = nested == nullptr ? 0 : SizeOf(*nested, depth + 1);
            size = std::min(size + nestedSize, kExpansionLimit + 1);
        });
        known_[&entity] = size;
        return size;
    }

    std::unordered_map<const xmlEntity*, std::size_t> known_;
};

/// What the handlers of one parse share, as the context's private data.
struct Parse {
    Parse() {
        emptyEntity.name = reinterpret_cast<const xmlChar*>("empty");
        emptyEntity.content = emptyEntity.orig = &noText;
        emptyEntity.etype = XML_INTERNAL_GENERAL_ENTITY;
        emptyEntity.checked = 2;
    }

    xmlParserCtxt* document = nullptr;  ///< The context of the document itself; entities get their own.
    std::string reason;
    EntitySizes sizes;
    std::size_t expanded = 0;  ///< Bytes of replacement text so far.
    bool refused = false;      ///< By the handlers, whatever the parser finds. No more entities are expanded.
    /// Replaces each entity once refused: on null the parser would look the entity up by itself.
    xmlEntity emptyEntity = {};
    xmlChar noText = 0;
};

std::string OneLine(std::string_view message) {
    std::string line(message.empty() ? "unknown error" : message);
    for (char& c : line) {
        c = c == '\n' || c == '\r' ? ' ' : c;
    }
    line.erase(line.find_last_not_of(' ') + 1);
    return line;
}

std::string Place(int line, int column) {
    return " (line " + std::to_string(line) + ", column " + std::to_string(column) + ")";
}

Parse& ParseOf(void* context) {
    return *static_cast<Parse*>(static_cast<xmlParserCtxt*>(context)->_private);
}

void NoteError(void* context, xmlError* error) {
    Parse& parse = ParseOf(context);
    if (parse.reason.empty() && error->level == XML_ERR_FATAL) {
        parse.reason =
            OneLine(error->message == nullptr ? "" : error->message) + Place(error->line, error->int2);
    }
}

void Refuse(Parse& parse, const std::string& reason) {
    const xmlParserInput* input = parse.document->inputNr > 0 ? parse.document->inputTab[0] : nullptr;
    parse.reason = reason + (input == nullptr ? "" : Place(input->line, input->col));
    parse.refused = true;
}

/// Counts the bytes of a reference against kExpansionLimit: with XML_PARSE_HUGE the parser has no limit of
/// its own.
bool Admit(const xmlEntity& entity, std::size_t size, Parse& parse) {
    parse.expanded += size;
    if (parse.expanded > kExpansionLimit && !parse.refused) {
        Refuse(parse, "The entity '" + OneLine(View(entity.name)) + "' expands to more than " +
                          std::to_string(kExpansionLimit) + " bytes or without end");
    }
    return !parse.refused;
}

/// Refuses an undeclared entity: if there is a DTD that was not read, the parser itself would only warn.
xmlEntity* FindEntity(void* data, const xmlChar* name) {
    auto* context = static_cast<xmlParserCtxt*>(data);
    Parse& parse = ParseOf(context);
    xmlEntity* entity = parse.refused ? nullptr : xmlSAX2GetEntity(context, name);
    if (entity == nullptr && !parse.refused) {
        Refuse(parse, "Reference to undefined entity '" + OneLine(View(name)) + "'");
    }
    // The parser parses an entity at its first reference, to check it, and again at each further one for the
    // benefit of handlers, unless it has child nodes already. An entity that an attribute has used would
    // count as checked, although content is held to more rules.
    static xmlNode content = {};
    if (entity != nullptr && entity->etype == XML_INTERNAL_GENERAL_ENTITY && entity->children == nullptr &&
        context->instate == XML_PARSER_CONTENT) {
        entity->checked = 0;
        entity->children = &content;
    }
    const bool nested = context != parse.document || context->depth > 0;
    const bool admitted =
        entity != nullptr && Admit(*entity, nested ? 0 : parse.sizes.SizeOf(*entity), parse);
    return admitted ? entity : &parse.emptyEntity;
}

xmlEntity* FindParameterEntity(void* data, const xmlChar* name) {
    auto* context = static_cast<xmlParserCtxt*>(data);
    Parse& parse = ParseOf(context);
    xmlEntity* entity = parse.refused ? nullptr : xmlSAX2GetParameterEntity(context, name);
    const bool admitted =
        entity != nullptr && Admit(*entity, static_cast<std::size_t>(entity->length), parse);
    return admitted ? entity : nullptr;
}

/// Called past the document's own XML declaration, whose encoding is ignored. That of external files is not.
void StartDocument(void* data) {
    static_cast<xmlParserCtxt*>(data)->options &= ~XML_PARSE_IGNORE_ENC;
    xmlSAX2StartDocument(data);
}

/// No tree of the content is built: only the DTD is of interest.
void SetHandlers(xmlSAXHandler& handler) {
    handler.startElementNs = nullptr;
    handler.endElementNs = nullptr;
    handler.startElement = nullptr;
    handler.endElement = nullptr;
    handler.characters = nullptr;
    handler.ignorableWhitespace = nullptr;
    handler.cdataBlock = nullptr;
    handler.reference = nullptr;
    handler.comment = nullptr;
    handler.processingInstruction = nullptr;
    handler.startDocument = StartDocument;
    handler.getEntity = FindEntity;
    handler.getParameterEntity = FindParameterEntity;
    handler.resolveEntity = OpenExternalSubset;
    handler.serror = NoteError;
}

/// Makes the parser read the text in place, without a copy. False if memory runs out.
bool PushText(xmlParserCtxt& context, std::string_view text, const std::string& nativePath) {
    xmlParserInput* input = xmlNewInputStream(&context);
    if (input == nullptr) {
        return false;
    }
    input->base = input->cur = reinterpret_cast<const xmlChar*>(text.data());
    input->end = input->base + text.size();
    input->filename = nativePath.empty() ? nullptr : xmlMemStrdup(nativePath.c_str());
    return inputPush(&context, input) >= 0;
}

}  // namespace

ParseResult ParseWithLibxml(std::string_view text, const std::string& nativePath, bool resolveExternals) {
    if (const std::size_t nul = text.find('\0'); nul != std::string::npos) {
        return {"The document holds a NUL character at byte " + std::to_string(nul), nullptr};
    }
    Parse parse;
    const Context context(xmlNewParserCtxt());
    if (!context || !PushText(*context, text, nativePath)) {
        return {"Out of memory", nullptr};
    }
    xmlCtxtUseOptions(context.get(), XML_PARSE_NONET | XML_PARSE_HUGE | XML_PARSE_IGNORE_ENC |
                                         (resolveExternals ? XML_PARSE_DTDLOAD : 0));
    parse.document = context.get();
    context->_private = &parse;
    SetHandlers(*context->sax);
    const LocalEntitiesOnly guard;
    const bool wellFormed = xmlParseDocument(context.get()) == 0 && context->wellFormed == 1;
    XmlDocument document(context->myDoc);
    context->myDoc = nullptr;
    if (parse.refused || !wellFormed || !document) {
        return {parse.reason.empty() ? "The document cannot be parsed" : parse.reason, nullptr};
    }
    if (document->intSubset == nullptr && document->extSubset == nullptr) {
        document.reset();
    }
    return {{}, std::move(document)};
}

}  // namespace ventrix::xml
