#include "markers/xml/lossless/loading.h"

#include "markers/xml/lossless/source_encoding.h"
#include "markers/xml/lossless/tree_builder.h"
#include "markers/xml/lossless/well_formed.h"
#include "platform/drives.h"

namespace ventrix::xml {
namespace {

constexpr std::size_t LargestText = INT32_MAX;  ///< The parser counts in int.

void NoteDeclarations(const xmlDtd* subset, SourceText& source) {
    for (const xmlNode* node = subset == nullptr ? nullptr : subset->children; node != nullptr;
         node = node->next) {
        if (node->type == XML_ATTRIBUTE_DECL) {
            const auto* attribute = reinterpret_cast<const xmlAttribute*>(node);
            source.suppliesAttributes = source.suppliesAttributes || attribute->defaultValue != nullptr;
            source.tokenizes = source.tokenizes || attribute->atype != XML_ATTRIBUTE_CDATA;
        }
    }
}

}  // namespace

std::string LoadSource(DocumentStore& store, NodeIndex document, std::string bytes,
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
    if (decoded.text.size() > LargestText) {
        return "The document is too large";
    }
    Judgement judgement =
        JudgeDocument(decoded.text, platform::ToNative(settings.path), settings.resolveExternals);
    if (!judgement.reason.empty()) {
        return judgement.reason;
    }
    SourceText* source = store.AddSource(std::move(decoded.text));
    if (source == nullptr) {
        return "The document is too large";
    }
    source->encoding = std::move(decoded.encoding);
    source->document = document;
    source->dtd = std::move(judgement.dtd);
    source->hasReturns = source->text.find('\r') != std::string::npos;
    if (source->dtd) {
        // Inherited declarations may come from the DTD.
        source->hasNamespaces = true;
        NoteDeclarations(source->dtd->intSubset, *source);
        NoteDeclarations(source->dtd->extSubset, *source);
    }
    return BuildTree(store, *source) ? std::string() : "The document cannot be read as a tree";
}

}  // namespace ventrix::xml
