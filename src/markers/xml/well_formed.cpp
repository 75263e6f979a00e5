#include "markers/xml/well_formed.h"

#include <libxml/SAX2.h>
#include <libxml/parser.h>
#include <libxml/parserInternals.h>
#include <libxml/xmlerror.h>

#include <memory>

#include "markers/xml/entity_sizes.h"
#include "markers/xml/local_entities.h"
#include "markers/xml/references.h"

namespace ventrix::xml {
namespace {

struct FreeContext {
    void operator()(xmlParserCtxt* context) const { xmlFreeParserCtxt(context); }
};
using Context = std::unique_ptr<xmlParserCtxt, FreeContext>;

/// What the handlers of one parse share, as the context's private data.
struct Parse {
    Parse() {
        nothing.name = reinterpret_cast<const xmlChar*>("nothing");
        nothing.content = nothing.orig = &noText;
        nothing.etype = XML_INTERNAL_GENERAL_ENTITY;
        nothing.checked = 2;
    }

    xmlParserCtxt* document = nullptr;  ///< The context of the document itself; entities get their own.
    std::string reason;
    EntitySizes sizes;
    std::size_t expanded = 0;  ///< Bytes of replacement text so far.
    bool refused = false;      ///< By this layer, whatever the parser says; no entity is expanded any more.
    xmlEntity nothing = {};    ///< What the parser gets for one then: a null it would look up for itself.
    xmlChar noText = 0;
};

std::string OneLine(const char* message) {
    std::string line = message == nullptr ? "unknown error" : message;
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
        parse.reason = OneLine(error->message) + Place(error->line, error->int2);
    }
}

void Refuse(Parse& parse, const std::string& reason) {
    const xmlParserInput* input = parse.document->inputNr > 0 ? parse.document->inputTab[0] : nullptr;
    parse.reason = reason + (input == nullptr ? "" : Place(input->line, input->col));
    parse.refused = true;
}

/// Counts what a reference adds, so that the sum stays within bounds: the parser's own guards are off.
bool Admit(const xmlEntity& entity, std::size_t size, Parse& parse) {
    parse.expanded += size;
    if (parse.expanded > kExpansionLimit && !parse.refused) {
        Refuse(parse, "The entity '" + OneLine(reinterpret_cast<const char*>(entity.name)) +
                          "' expands to more than " + std::to_string(kExpansionLimit) +
                          " bytes or without end");
    }
    return !parse.refused;
}

/// With a DTD that was not read, the parser alone would only warn of an entity that nothing declares.
xmlEntity* FindEntity(void* data, const xmlChar* name) {
    auto* context = static_cast<xmlParserCtxt*>(data);
    Parse& parse = ParseOf(context);
    xmlEntity* entity = parse.refused ? nullptr : xmlSAX2GetEntity(context, name);
    if (entity == nullptr && !parse.refused) {
        Refuse(parse, "Reference to undefined entity '" + OneLine(reinterpret_cast<const char*>(name)) + "'");
    }
    // An entity in content is parsed once, to see whether it is well-formed. One that seems to have content
    // of its own is not parsed again for each further reference, as handlers might want it.
    static xmlNode content = {};
    if (entity != nullptr && entity->etype == XML_INTERNAL_GENERAL_ENTITY && entity->children == nullptr) {
        entity->children = &content;
    }
    const bool nested = context != parse.document || context->depth > 0;
    const bool admitted =
        entity != nullptr && Admit(*entity, nested ? 0 : parse.sizes.SizeOf(*entity), parse);
    return admitted ? entity : &parse.nothing;
}

xmlEntity* FindParameterEntity(void* data, const xmlChar* name) {
    auto* context = static_cast<xmlParserCtxt*>(data);
    Parse& parse = ParseOf(context);
    xmlEntity* entity = parse.refused ? nullptr : xmlSAX2GetParameterEntity(context, name);
    const bool admitted =
        entity != nullptr && Admit(*entity, static_cast<std::size_t>(entity->length), parse);
    return admitted ? entity : nullptr;
}

/// The document's own XML declaration stands behind the parser here, and its encoding did not count. That of
/// other files does.
void StartDocument(void* data) {
    static_cast<xmlParserCtxt*>(data)->options &= ~XML_PARSE_IGNORE_ENC;
    xmlSAX2StartDocument(data);
}

/// Only the DTD is of interest; content is what this layer's own tree is for.
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

/// Has the parser read the text where it lies. False if memory runs out.
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

Judgement JudgeDocument(std::string_view text, const std::string& nativePath, bool resolveExternals) {
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
