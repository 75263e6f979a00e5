#include "markers/xml/lossless/well_formed.h"

#include <libxml/SAX2.h>
#include <libxml/parser.h>
#include <libxml/parserInternals.h>
#include <libxml/xmlerror.h>

#include <memory>

#include "markers/xml/lossless/local_entities.h"
#include "markers/xml/lossless/tree_builder.h"

namespace ventrix::xml {
namespace {

struct FreeContext {
    void operator()(xmlParserCtxt* context) const { xmlFreeParserCtxt(context); }
};
using Context = std::unique_ptr<xmlParserCtxt, FreeContext>;

/// What the handlers of one parse share, as the context's private data.
struct Parse {
    std::string reason;
    bool undefinedEntity = false;
};

std::string OneLine(const char* message) {
    std::string line = message == nullptr ? "unknown error" : message;
    for (char& c : line) {
        c = c == '\n' || c == '\r' ? ' ' : c;
    }
    line.erase(line.find_last_not_of(' ') + 1);
    return line;
}

std::string Place(const xmlError& error) {
    return " (line " + std::to_string(error.line) + ", column " + std::to_string(error.int2) + ")";
}

/// An undeclared entity counts as an error in every document: with a DTD that was not read, libxml2 alone
/// would warn.
void NoteError(void* data, xmlError* error) {
    auto& parse = *static_cast<Parse*>(static_cast<xmlParserCtxt*>(data)->_private);
    const bool undefined =
        error->code == XML_ERR_UNDECLARED_ENTITY || error->code == XML_WAR_UNDECLARED_ENTITY;
    if (undefined && !parse.undefinedEntity) {
        parse.undefinedEntity = true;
        const std::string name = error->str1 == nullptr ? "" : error->str1;
        parse.reason = "Reference to undefined entity '" + name + "'" + Place(*error);
    } else if (parse.reason.empty() && error->level == XML_ERR_FATAL) {
        parse.reason = OneLine(error->message) + Place(*error);
    }
}

/// Only the DTD is of interest; content is what this layer's own tree is for.
void PassOverContent(xmlSAXHandler& handler) {
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
    handler.serror = NoteError;
}

/// The parser's guards against expanding entities hold only without XML_PARSE_HUGE, which deep documents and
/// long texts need: a document that declares no entity can do without the guards.
int ParseOptions(const std::string& text, bool resolveExternals) {
    const bool declaresEntities =
        resolveExternals ||
        std::string_view(text).substr(0, RootBegin(text)).find("<!ENTITY") != std::string_view::npos;
    return XML_PARSE_NONET | (declaresEntities ? 0 : XML_PARSE_HUGE) |
           (resolveExternals ? XML_PARSE_DTDLOAD : 0);
}

}  // namespace

Judgement JudgeDocument(const std::string& text, bool transcoded, const std::string& nativePath,
                        bool resolveExternals) {
    Parse parse;
    const Context context(xmlNewParserCtxt());
    if (!context) {
        return {"Out of memory", nullptr};
    }
    context->_private = &parse;
    PassOverContent(*context->sax);
    context->sax->resolveEntity = OpenExternalSubset;
    const LocalEntitiesOnly guard;
    XmlDocument document(xmlCtxtReadMemory(context.get(), text.data(), static_cast<int>(text.size()),
                                           nativePath.empty() ? nullptr : nativePath.c_str(),
                                           transcoded ? "UTF-8" : nullptr,
                                           ParseOptions(text, resolveExternals)));
    if (parse.undefinedEntity || !document) {
        return {parse.reason.empty() ? "The document cannot be parsed" : parse.reason, nullptr};
    }
    if (document->intSubset == nullptr && document->extSubset == nullptr) {
        document.reset();
    }
    return {{}, std::move(document)};
}

}  // namespace ventrix::xml
