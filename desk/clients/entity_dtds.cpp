#include "desk/clients/entity_dtds.h"

#include <string>

#include "desk/xml/lenient_load.h"
#include "platform/files.h"

namespace ventrix::desk {
namespace {

/// A parser expands character references and parameter entities in the value of an entity.
std::string EscapedValue(std::string_view value) {
    std::string escaped;
    for (const char c : value) {
        escaped += c == '&' ? "&#38;" : c == '%' ? "&#37;" : c == '"' ? "&#34;" : std::string(1, c);
    }
    return escaped;
}

std::string Declaration(const xmlEntity& entity) {
    const std::string start = "<!ENTITY " + std::string(View(entity.name)) + ' ';
    switch (entity.etype) {
        case XML_INTERNAL_GENERAL_ENTITY:
            return start + '"' + EscapedValue(View(entity.content)) + "\">\n";
        case XML_EXTERNAL_GENERAL_PARSED_ENTITY:
            return start + "SYSTEM \"" + std::string(View(entity.URI)) + "\">\n";
        default:
            return {};
    }
}

/// A parameter entity of the DTD may have the same name as a general one.
void AddDeclarations(const xmlDtd* dtd, std::string& declarations) {
    for (const xmlNode* node = dtd == nullptr ? nullptr : dtd->children; node != nullptr; node = node->next) {
        if (node->type == XML_ENTITY_DECL) {
            declarations += Declaration(*reinterpret_cast<const xmlEntity*>(node));
        }
    }
}

std::string EntitiesOf(const NativePath& document) {
    const LenientDocument loaded = LoadLeniently(document, LoadFor::kStylesheet);
    std::string declarations;
    if (loaded.document != nullptr) {
        AddDeclarations(loaded.document->intSubset, declarations);
        AddDeclarations(loaded.document->extSubset, declarations);
    }
    return declarations;
}

}  // namespace

NativePath EntityDtds::DtdFor(const NativePath& file, const NativePath& otherDtd) {
    const NativePath document = declaringDocument_ ? declaringDocument_(file) : NativePath{};
    if (document.Empty()) {
        return {};
    }
    const auto [entry, isNew] = written_.try_emplace({document, otherDtd});
    if (!isNew) {
        return entry->second;
    }
    if (folder_ == nullptr) {
        folder_ = std::make_unique<platform::TemporaryFolder>("ventrix-entities");
    }
    std::string declarations = EntitiesOf(document);
    if (!otherDtd.Empty()) {
        declarations += "<!ENTITY % ventrix-other SYSTEM \"" + FileUri(otherDtd) + "\">\n%ventrix-other;\n";
    }
    const NativePath dtd{folder_->Path() + '/' + std::to_string(written_.size()) + ".dtd"};
    if (!folder_->Path().empty() &&
        platform::WriteWholeFile(dtd.utf8, declarations) == platform::kErrorNone) {
        entry->second = dtd;
    }
    return entry->second;
}

}  // namespace ventrix::desk
