#include "markers/xml/attributes.h"

#include <libxml/valid.h>

#include <algorithm>

#include "markers/xml/characters.h"
#include "markers/xml/libxml.h"
#include "markers/xml/references.h"

namespace ventrix::xml {
namespace {

/// The attribute declarations of an element in one subset of the DTD. The internal subset takes precedence.
const xmlAttribute* DeclaredIn(xmlDtd* subset, const std::string& element) {
    const xmlElement* declaration =
        subset == nullptr ? nullptr : xmlGetDtdElementDesc(subset, Chars(element));
    return declaration == nullptr ? nullptr : declaration->attributes;
}

/// Compares a qualified name with a declaration, which has prefix and local part apart.
bool HasName(const xmlAttribute& declaration, std::string_view name) {
    const std::string_view prefix = View(declaration.prefix);
    if (prefix.empty()) {
        return name == View(declaration.name);
    }
    return name.size() == prefix.size() + 1 + View(declaration.name).size() && name.starts_with(prefix) &&
           name[prefix.size()] == ':' && name.ends_with(View(declaration.name));
}

NodeIndex FindAttribute(DocumentStore& store, NodeIndex element, std::string_view name) {
    NodeIndex attribute = store.FirstAttribute(element);
    while (attribute != 0 && store.NameOf(attribute) != name) {
        attribute = store.At(attribute).next;
    }
    return attribute;
}

/// Appends attribute nodes to an element's list.
class AttributeChain {
  public:
    AttributeChain(DocumentStore& store, NodeIndex element) : store_(store), element_(element) {}

    NodeIndex Add() {
        const NodeIndex attribute = store_.Add(NODE_ATTRIBUTE);
        store_.At(attribute).parent = element_;
        if (last_ == 0) {
            store_.SetFirstAttribute(element_, attribute);
        } else {
            store_.At(last_).next = attribute;
        }
        return last_ = attribute;
    }

  private:
    DocumentStore& store_;
    NodeIndex element_;
    NodeIndex last_ = 0;
};

/// The position of the first matching byte at or after `at`; at least the text's size without one.
template <typename Matches>
std::size_t Find(std::string_view text, std::size_t at, Matches matches) {
    while (at < text.size() && !matches(text[at])) {
        ++at;
    }
    return at;
}

/// The tag is well-formed, so that finding the next delimiter is enough to parse it.
void AddFromTag(DocumentStore& store, NodeIndex element, AttributeChain& chain) {
    const NodeRecord record = store.At(element);
    const std::string_view tag = store.Slice(record.begin, record.End());
    std::size_t at = 1U + record.nameLength;
    while (true) {
        at = Find(tag, at, [](char c) { return !IsWhitespace(c); });
        const std::size_t nameEnd = Find(tag, at, [](char c) { return c == '=' || IsWhitespace(c); });
        const std::size_t open = Find(tag, nameEnd, [](char c) { return c == '"' || c == '\''; });
        const std::size_t closing = Find(tag, open + 1, [&](char c) { return c == tag[open]; });
        if (closing >= tag.size()) {
            return;
        }
        NodeRecord& attribute = store.At(chain.Add());
        attribute.begin = record.begin + static_cast<std::uint32_t>(at);
        attribute.nameLength = static_cast<std::uint16_t>(nameEnd - at);
        attribute.SetValueBegin(record.begin + static_cast<std::uint32_t>(open + 1));
        attribute.SetEnd(record.begin + static_cast<std::uint32_t>(closing + 1));
        at = closing + 1;
    }
}

void AddFromDtd(DocumentStore& store, NodeIndex element, xmlDoc& dtd, AttributeChain& chain) {
    const std::string name(store.NameOf(element));
    for (xmlDtd* subset : {dtd.intSubset, dtd.extSubset}) {
        for (const xmlAttribute* declared = DeclaredIn(subset, name); declared != nullptr;
             declared = declared->nexth) {
            const std::string prefix(View(declared->prefix));
            std::string attributeName =
                (prefix.empty() ? "" : prefix + ":") + std::string(View(declared->name));
            if (declared->defaultValue == nullptr || FindAttribute(store, element, attributeName) != 0) {
                continue;
            }
            const NodeIndex attribute = chain.Add();
            const StringIndex ownName = store.strings.Intern(attributeName);
            const StringIndex ownValue =
                store.strings.Add(DecodeAttributeValue(View(declared->defaultValue), &dtd));
            NodeRecord& record = store.At(attribute);
            record.Set(kCreated | kOwnContent | kFromDtd);
            record.SetNameString(ownName);
            record.SetOwnString(ownValue);
        }
    }
}

}  // namespace

void ReadSourceAttributes(DocumentStore& store, NodeIndex element) {
    AttributeChain chain(store, element);
    AddFromTag(store, element, chain);
    const SourceText& source = store.SourceOf(store.At(element).begin);
    if (source.suppliesAttributes) {
        AddFromDtd(store, element, *source.dtd, chain);
    }
}

xmlAttributeType DeclaredType(DocumentStore& store, NodeIndex attribute) {
    const NodeIndex owner = store.At(attribute).parent;
    const SourceText& source = store.SourceOf(store.At(owner).begin);
    if (!source.tokenizes) {
        return XML_ATTRIBUTE_CDATA;
    }
    const std::string element(store.NameOf(owner));
    for (xmlDtd* subset : {source.dtd->intSubset, source.dtd->extSubset}) {
        for (const xmlAttribute* declared = DeclaredIn(subset, element); declared != nullptr;
             declared = declared->nexth) {
            if (HasName(*declared, store.NameOf(attribute))) {
                return declared->atype;
            }
        }
    }
    return XML_ATTRIBUTE_CDATA;
}

std::string_view SourceValue(DocumentStore& store, NodeIndex attribute, std::string& buffer) {
    const NodeRecord& record = store.At(attribute);
    const SourceText& source = store.SourceOf(record.begin);
    const std::string_view raw = store.Slice(record.ValueBegin(), record.End() - 1);
    const bool tokenized = DeclaredType(store, attribute) != XML_ATTRIBUTE_CDATA;
    const auto isVerbatim = [](char c) { return c == ' ' || (c != '&' && !IsWhitespace(c)); };
    if (!tokenized && std::ranges::all_of(raw, isVerbatim)) {
        return raw;
    }
    buffer = DecodeAttributeValue(raw, source.dtd.get());
    if (tokenized) {
        buffer = CollapseSpaces(buffer);
    }
    return buffer;
}

}  // namespace ventrix::xml
