#include "markers/xml/attributes.h"

#include <libxml/valid.h>

#include <algorithm>

#include "markers/xml/characters.h"
#include "markers/xml/references.h"

namespace ventrix::xml {
namespace {

std::string_view View(const xmlChar* text) {
    return text == nullptr ? std::string_view() : std::string_view(reinterpret_cast<const char*>(text));
}

const xmlChar* Chars(const std::string& text) {
    return reinterpret_cast<const xmlChar*>(text.c_str());
}

/// The declarations of an element in one subset; the internal one goes first.
const xmlAttribute* DeclaredIn(xmlDtd* subset, const std::string& element) {
    const xmlElement* declaration =
        subset == nullptr ? nullptr : xmlGetDtdElementDesc(subset, Chars(element));
    return declaration == nullptr ? nullptr : declaration->attributes;
}

/// A qualified name as the DTD holds it: prefix and local part apart.
bool HasName(const xmlAttribute& declaration, std::string_view name) {
    const std::string_view prefix = View(declaration.prefix);
    if (prefix.empty()) {
        return name == View(declaration.name);
    }
    return name.size() == prefix.size() + 1 + View(declaration.name).size() && name.starts_with(prefix) &&
           name[prefix.size()] == ':' && name.ends_with(View(declaration.name));
}

bool IsTokenized(xmlDoc& dtd, const std::string& element, std::string_view attribute) {
    for (xmlDtd* subset : {dtd.intSubset, dtd.extSubset}) {
        for (const xmlAttribute* declared = DeclaredIn(subset, element); declared != nullptr;
             declared = declared->nexth) {
            if (HasName(*declared, attribute)) {
                return declared->atype != XML_ATTRIBUTE_CDATA;
            }
        }
    }
    return false;
}

NodeIndex FindAttribute(DocumentStore& store, NodeIndex element, std::string_view name) {
    NodeIndex attribute = store.FirstAttribute(element);
    while (attribute != 0 && store.NameOf(attribute) != name) {
        attribute = store.At(attribute).next;
    }
    return attribute;
}

/// Links attributes one behind the other, in the order in which they are added.
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

/// The first fitting byte at or behind `at`; a position beyond the end without one.
template <typename Fits>
std::size_t Find(std::string_view text, std::size_t at, Fits fits) {
    while (at < text.size() && !fits(text[at])) {
        ++at;
    }
    return at;
}

void AddFromTag(DocumentStore& store, NodeIndex element, AttributeChain& chain) {
    const NodeRecord record = store.At(element);
    const std::string_view tag = store.Slice(record.begin, record.end);
    std::size_t at = 1U + record.nameLength;
    while (true) {
        at = Find(tag, at, [](char c) { return !IsBlank(c); });
        const std::size_t nameEnd = Find(tag, at, [](char c) { return c == '=' || IsBlank(c); });
        const std::size_t open = Find(tag, nameEnd, [](char c) { return c == '"' || c == '\''; });
        const std::size_t closing = Find(tag, open + 1, [&](char c) { return c == tag[open]; });
        if (closing >= tag.size()) {
            return;
        }
        NodeRecord& attribute = store.At(chain.Add());
        attribute.begin = record.begin + static_cast<std::uint32_t>(at);
        attribute.nameLength = static_cast<std::uint16_t>(nameEnd - at);
        attribute.close = record.begin + static_cast<std::uint32_t>(open + 1);
        attribute.end = record.begin + static_cast<std::uint32_t>(closing + 1);
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
            const std::uint32_t ownName = store.ShareText(attributeName);
            const std::uint32_t ownValue =
                store.AddText(DecodeAttributeValue(View(declared->defaultValue), &dtd));
            store.At(attribute).close = ownName;
            store.At(attribute).child = ownValue;
            store.At(attribute).flags = kCreated | kOwnText | kFromDtd;
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

std::string_view SourceValue(DocumentStore& store, NodeIndex attribute, std::string& buffer) {
    const NodeRecord& record = store.At(attribute);
    const SourceText& source = store.SourceOf(record.begin);
    const std::string_view raw = store.Slice(record.close, record.end - 1);
    const bool tokenized =
        source.tokenizes &&
        IsTokenized(*source.dtd, std::string(store.NameOf(record.parent)), store.NameOf(attribute));
    const auto standsForItself = [](char c) { return c == ' ' || (c != '&' && !IsBlank(c)); };
    if (!tokenized && std::ranges::all_of(raw, standsForItself)) {
        return raw;
    }
    buffer = DecodeAttributeValue(raw, source.dtd.get());
    if (tokenized) {
        buffer = CollapseSpaces(buffer);
    }
    return buffer;
}

}  // namespace ventrix::xml
