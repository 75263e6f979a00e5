// All nodes of a store, side by side, numbered from 1. Nothing is ever taken out.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>

#include "markers/xml/dom.h"
#include "platform/memory.h"

namespace ventrix::xml {

using NodeIndex = std::uint32_t;  ///< 0 is no node.

/// 32 bytes: what a tree costs is the memory that it touches. So fields have a meaning for each kind of node.
struct NodeRecord {
    NodeIndex parent = 0;  ///< For an attribute the element that has it.
    NodeIndex next = 0;    ///< Sibling; for an attribute the next attribute.
    /// Sibling; for a first child the last one. An element's first attribute has the end of the start tag
    /// here.
    NodeIndex previous = 0;
    /// Element, document: its first child. Otherwise: the number of its own text, or of the text in front.
    NodeIndex child = 0;
    std::uint32_t begin = 0;  ///< Element: its start tag. Attribute: from its name to its closing quote.
    std::uint32_t end = 0;    ///< Element with HasAttributes: the first attribute.
    /// Element: where its end tag begins, 0 for an empty-element tag. Attribute: its value, or the number of
    /// its name if it was created. Quoted text: the number of the text behind.
    std::uint32_t close = 0;
    std::uint16_t nameLength = 0;
    std::uint8_t type = NODE_INVALID;
    std::uint8_t flags = 0;
};
static_assert(sizeof(NodeRecord) == 32);

/// A bit means something else for each kind of node.
enum NodeFlags : std::uint8_t {
    kCreated = 1,  ///< Any node: has no place in a source at all.
    kOwnText = 2,  ///< Text or attribute: its content is a text of the store's, not of the source.

    kAttributesRead = 4,      ///< Element: its attributes stand as nodes.
    kHasAttributes = 8,       ///< Element: there are some.
    kAttributesChanged = 16,  ///< Element: its start tag must be written anew.
    kTouched = 32,            ///< Element: it has changed itself, or something below it.

    kFromDtd = 4,  ///< Attribute: the DTD supplies it and nobody changed it.

    kVerbatim = 4,  ///< Text: its source bytes are its content.
    kPrefixed = 8,  ///< Text: one of the source with a text of the store's in front.
    kQuoted = 16,   ///< Text: markup of the source, escaped, with texts of the store's around it.
    kFilled = 32,   ///< Text: it is not all white space.

    kRewritten = 64,  ///< Text or attribute: the store's text is a string that is its own.
};

/// References hold until the next Add or Reserve.
class NodeTable {
  public:
    NodeTable() { Add(NODE_INVALID); }

    NodeRecord& operator[](NodeIndex index) { return records_.get()[index]; }
    std::size_t Size() const { return size_; }

    NodeIndex Add(NodeType type) {
        if (size_ == capacity_) {
            Reserve(1);
        }
        NodeRecord& record = records_.get()[size_];
        record = {};
        record.type = static_cast<std::uint8_t>(type);
        return static_cast<NodeIndex>(size_++);
    }

    /// Makes room for this many more nodes; twice what was there at least, since many small documents may
    /// come.
    void Reserve(std::size_t nodes);

  private:
    struct Release {
        void operator()(NodeRecord* records) const { platform::ReleaseMemory(records); }
    };

    std::unique_ptr<NodeRecord, Release> records_;
    std::size_t size_ = 0;
    std::size_t capacity_ = 0;
};

}  // namespace ventrix::xml
