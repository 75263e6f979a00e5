#include "markers/xml/loading.h"

#include <algorithm>

#include "markers/xml/characters.h"
#include "markers/xml/prolog.h"
#include "markers/xml/source_encoding.h"
#include "markers/xml/tree_builder.h"
#include "markers/xml/well_formed.h"
#include "platform/drives.h"

namespace ventrix::xml {
namespace {

constexpr std::size_t kLargestText = INT32_MAX;  ///< libxml2 counts bytes in int.

void NoteDeclarations(const xmlDtd* subset, SourceText& source) {
    for (const xmlNode* node = subset == nullptr ? nullptr : subset->children; node != nullptr;
         node = node->next) {
        source.hasDeclarations = true;
        if (node->type == XML_ATTRIBUTE_DECL) {
            const auto* attribute = reinterpret_cast<const xmlAttribute*>(node);
            source.suppliesAttributes = source.suppliesAttributes || attribute->defaultValue != nullptr;
            source.tokenizes = source.tokenizes || attribute->atype != XML_ATTRIBUTE_CDATA;
        }
    }
}

/// The text with an empty element in place of its root element.
std::string WithoutContent(const SourceText& source, std::size_t rootBegin) {
    const std::string_view epilog = source.text.substr(source.rootEnd - source.base);
    return std::string(source.text.substr(0, rootBegin)).append("<root/>").append(epilog);
}

ParseResult Parse(std::string_view text, const LoadSettings& settings) {
    return ParseWithLibxml(text, platform::ToNative(settings.path), settings.resolveExternals);
}

/// Parses what the tree builder could not verify: nothing of a plain document, otherwise what surrounds a
/// well-formed root element, otherwise everything. Where the surroundings fail, everything is parsed after
/// all, so that the reason has the right line and column.
ParseResult ParseUnverified(const SourceText& source, BuildResult built, const LoadSettings& settings) {
    if (built == BuildResult::kWellFormed) {
        const std::string_view text = source.text;
        const std::size_t rootBegin = RootBegin(text);
        if (IsPlainProlog(text.substr(0, rootBegin)) &&
            std::ranges::all_of(text.substr(source.rootEnd - source.base), IsWhitespace)) {
            return {};
        }
        ParseResult around = Parse(WithoutContent(source, rootBegin), settings);
        if (around.reason.empty()) {
            return around;
        }
    }
    return Parse(source.text, settings);
}

std::string ReadSource(DocumentStore& store, SourceText& source, const LoadSettings& settings) {
    const BuildResult built = BuildTree(store, source);
    ParseResult parsed = ParseUnverified(source, built, settings);
    if (parsed.reason.empty() && built == BuildResult::kNoTree) {
        parsed.reason = "The document cannot be read as a tree";
    }
    if (!parsed.reason.empty()) {
        store.RemoveRoot(source.document);
        return parsed.reason;
    }
    source.dtd = std::move(parsed.dtd);
    if (source.dtd) {
        NoteDeclarations(source.dtd->intSubset, source);
        NoteDeclarations(source.dtd->extSubset, source);
        // A namespace may be declared by an attribute that the DTD supplies.
        source.hasNamespaces = source.hasNamespaces || source.suppliesAttributes;
        source.hasDefaultNamespace = source.hasDefaultNamespace || source.suppliesAttributes;
    }
    return {};
}

}  // namespace

std::string LoadSource(DocumentStore& store, NodeIndex document, platform::Bytes bytes,
                       const LoadSettings& settings) {
    DecodedSource decoded;
    if (settings.isFile) {
        decoded = DecodeSource(std::move(bytes));
    } else {
        decoded.text = std::move(bytes);
    }
    if (!decoded.problem.empty()) {
        return decoded.problem;
    }
    if (decoded.text.size() > kLargestText) {
        return "The document is too large";
    }
    SourceText* source = store.AddSource(std::move(decoded.text));
    if (source == nullptr) {
        return "The document is too large";
    }
    source->encoding = std::move(decoded.encoding);
    source->document = document;
    return ReadSource(store, *source, settings);
}

NodeIndex LoadElement(DocumentStore& store, std::string_view xml) {
    SourceText piece;
    if (RootBegin(xml) != 0 || !store.AddPiece(xml, piece)) {
        return 0;
    }
    const BuildResult built = BuildTree(store, piece);
    const NodeIndex element = store.FirstChild(piece.document);
    store.RemoveRoot(piece.document);
    const bool isPlain = built == BuildResult::kWellFormed && !piece.hasNamespaces &&
                         std::ranges::all_of(piece.text.substr(piece.rootEnd - piece.base), IsWhitespace);
    if (!isPlain) {
        store.TakeBackPiece(piece);
        return 0;
    }
    return element;
}

}  // namespace ventrix::xml
