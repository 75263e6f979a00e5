#include "markers/xml/namespaces.h"

#include <map>
#include <set>

#include "markers/xml/markup_pieces.h"
#include "markers/xml/references.h"

namespace ventrix::xml {
namespace {

constexpr std::string_view kDeclares = "xmlns";

using Prefixes = std::set<std::string, std::less<>>;

/// The declarations on the element itself, from prefix to namespace name.
std::map<std::string, std::string> Declarations(DocumentStore& store, NodeIndex element) {
    std::map<std::string, std::string> found;
    std::string buffer;
    store.ReadAttributes(element);
    for (NodeIndex index = store.FirstAttribute(element); index != 0; index = store.At(index).next) {
        const std::string_view name = store.NameOf(index);
        if (const std::string_view prefix = DeclaredPrefix(name); prefix.data() != nullptr) {
            found.emplace(prefix, store.ContentOf(index, buffer));
        }
    }
    return found;
}

void NotePrefixes(DocumentStore& store, NodeIndex element, Prefixes& used) {
    used.emplace(PrefixOf(store.NameOf(element)));
    store.ReadAttributes(element);
    for (NodeIndex index = store.FirstAttribute(element); index != 0; index = store.At(index).next) {
        const std::string_view prefix = PrefixOf(store.NameOf(index));
        if (!prefix.empty() && prefix != kDeclares) {
            used.emplace(prefix);
        }
    }
}

/// Notes the prefixes in the replacement text of an entity.
void NoteEntityPrefixes(DocumentStore& store, const NodeRecord& reference, Prefixes& used) {
    const std::string xml = ExpandEntity(store.Slice(reference.begin + 1, reference.End() - 1),
                                         store.SourceOf(reference.begin).dtd.get());
    for (std::string_view rest = xml; !rest.empty();) {
        const MarkupPiece piece = TakePiece(rest);
        if (piece.kind == PieceKind::kStartTag) {
            for (const std::string_view name : NamesInTag(piece.text)) {
                used.emplace(PrefixOf(name));
            }
        }
    }
    used.erase(std::string(kDeclares));
}

/// The prefixes that the subtree uses. Those that only descendants use which declare them are included: an
/// additional outer declaration does no harm.
Prefixes UsedPrefixes(DocumentStore& store, NodeIndex top) {
    Prefixes used;
    NodeIndex index = top;
    while (true) {
        if (store.At(index).Type() == NODE_ELEMENT) {
            NotePrefixes(store, index, used);
        } else if (store.At(index).Type() == NODE_ENTITY_REFERENCE) {
            NoteEntityPrefixes(store, store.At(index), used);
        }
        if (store.FirstChild(index) != 0) {
            index = store.FirstChild(index);
            continue;
        }
        while (index != top && store.At(index).next == 0) {
            index = store.At(index).parent;
        }
        if (index == top) {
            return used;
        }
        index = store.At(index).next;
    }
}

}  // namespace

std::string_view DeclaredPrefix(std::string_view attributeName) {
    if (!attributeName.starts_with(kDeclares)) {
        return {};
    }
    if (attributeName.size() == kDeclares.size()) {
        return attributeName.substr(kDeclares.size());
    }
    return attributeName[kDeclares.size()] == ':' ? attributeName.substr(kDeclares.size() + 1)
                                                  : std::string_view();
}

std::string_view PrefixOf(std::string_view qualifiedName) {
    const std::size_t colon = qualifiedName.find(':');
    return colon == std::string_view::npos ? std::string_view() : qualifiedName.substr(0, colon);
}

std::string MissingNamespaces(DocumentStore& store, NodeIndex element) {
    std::string declarations;
    if (!store.SourceOf(store.At(element).begin).hasNamespaces) {
        return declarations;
    }
    Prefixes missing = UsedPrefixes(store, element);
    missing.erase("xml");
    if (!store.SourceOf(store.At(element).begin).hasDefaultNamespace) {
        missing.erase("");
    }
    for (const auto& [prefix, name] : Declarations(store, element)) {
        missing.erase(prefix);
    }
    for (NodeIndex above = store.At(element).parent; above != 0 && !missing.empty();
         above = store.At(above).parent) {
        for (const auto& [prefix, name] : Declarations(store, above)) {
            // xmlns="" around the element means no default namespace, which needs no declaration.
            if (missing.erase(prefix) == 1 && !(prefix.empty() && name.empty())) {
                declarations += prefix.empty() ? " xmlns=\"" : " xmlns:" + prefix + "=\"";
                AppendEscapedValue(declarations, name, '"');
                declarations += '"';
            }
        }
    }
    return declarations;
}

}  // namespace ventrix::xml
