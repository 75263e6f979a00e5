// The nodes of a store: an array of records of fixed size, numbered from 1. Records are never removed.
#pragma once

#include <cassert>
#include <cstddef>
#include <cstdint>
#include <memory>

#include "markers/xml/dom.h"
#include "markers/xml/string_table.h"
#include "platform/memory.h"

namespace ventrix::xml {

using NodeIndex = std::uint32_t;  ///< 0 means no node.

/// The same bit has a different meaning for each kind of node.
enum NodeFlags : std::uint8_t {
    kCreated = 1,     ///< Any node: it is not in a source.
    kOwnContent = 2,  ///< Text node, attribute: its content is its own string, not source bytes.

    kAttributesRead = 4,      ///< Element: its attributes have been made into nodes.
    kHasAttributes = 8,       ///< Element: there are such nodes.
    kAttributesChanged = 16,  ///< Element: its start tag must be written anew.
    kModified = 32,           ///< Element: it or something in its subtree has changed.

    kFromDtd = 4,  ///< Attribute: supplied by the DTD, and not changed since.

    kVerbatim = 4,  ///< Text node: its source bytes are its content.
    kPrefixed = 8,  ///< Text node: its own string, followed by source bytes.
    kQuoted = 16,   ///< Text node: its own string, escaped markup of the source, and a second string.
    kFilled = 32,   ///< Text node: it is not all whitespace.

    kReplaceable = 64,  ///< Text node, attribute: its own string is one of the replaceable ones.

    kSearchable = 128,  ///< Text node: its source bytes hold the same words as its content.
};

/// One node. The cost of building and walking a tree is the memory that it touches, so a record has 32 bytes,
/// and its private fields hold something else for each kind of node:
///
///     field       element, document      text node            attribute                other kinds
///     previous_   previous sibling       previous sibling     first one: end of the    previous sibling
///                                                             element's start tag
///     link_       first child            own string           own string               -
///     end_        end of start tag, or   end of the source    past the closing quote   end of the source
///                 first attribute        bytes                                         bytes
///     close_      end tag                string after quote   value, or name string    -
///
/// The accessors assert in development builds that the node is of the right kind. All offsets are positions
/// in the store's sources.
class NodeRecord {
  public:
    explicit NodeRecord(NodeType type) : type_(static_cast<std::uint8_t>(type)) {}

    NodeType Type() const { return static_cast<NodeType>(type_); }

    bool Has(unsigned flags) const { return (flags_ & flags) != 0; }  ///< True if one of them is set.
    void Set(unsigned flags) { flags_ |= static_cast<std::uint8_t>(flags); }
    void Clear(unsigned flags) { flags_ &= static_cast<std::uint8_t>(~flags); }

    /// The sibling before a child node. For a first child it is the last one, so that appending is O(1).
    NodeIndex PreviousOrLast() const { return previous_; }
    void SetPreviousOrLast(NodeIndex sibling) { previous_ = sibling; }

    /// Of an element or document; 0 for other kinds.
    NodeIndex FirstChild() const { return HoldsChildren() ? link_ : 0; }
    void SetFirstChild(NodeIndex child) {
        assert(HoldsChildren());
        link_ = child;
    }

    /// Of an element, as far as its attributes have been made into nodes; 0 without any.
    NodeIndex FirstAttribute() const {
        assert(HoldsChildren());
        return Has(kHasAttributes) ? end_ : 0;
    }
    void SetFirstAttribute(NodeIndex attribute) {
        assert(type_ == NODE_ELEMENT);
        end_ = attribute;
        Set(kHasAttributes);
    }

    /// The end of the start tag of an element whose first attribute this is: the attribute has taken its
    /// place there.
    std::uint32_t OwnersTagEnd() const {
        assert(type_ == NODE_ATTRIBUTE);
        return previous_;
    }
    void SetOwnersTagEnd(std::uint32_t offset) {
        assert(type_ == NODE_ATTRIBUTE);
        previous_ = offset;
    }

    /// Past the node's source bytes; for an element without attribute nodes, past its start tag.
    std::uint32_t End() const {
        assert(type_ != NODE_ELEMENT || !Has(kHasAttributes));
        return end_;
    }
    void SetEnd(std::uint32_t offset) { end_ = offset; }

    /// Where an element's end tag begins; 0 for an empty-element tag.
    std::uint32_t EndTag() const {
        assert(type_ == NODE_ELEMENT);
        return close_;
    }
    void SetEndTag(std::uint32_t offset) {
        assert(type_ == NODE_ELEMENT);
        close_ = offset;
    }

    /// Where the value of an attribute in a source begins; it ends one byte before End().
    std::uint32_t ValueBegin() const {
        assert(type_ == NODE_ATTRIBUTE && !Has(kCreated));
        return close_;
    }
    void SetValueBegin(std::uint32_t offset) {
        assert(type_ == NODE_ATTRIBUTE && !Has(kCreated));
        close_ = offset;
    }

    /// The name of a created attribute.
    StringIndex NameString() const {
        assert(type_ == NODE_ATTRIBUTE && Has(kCreated));
        return close_;
    }
    void SetNameString(StringIndex name) {
        assert(type_ == NODE_ATTRIBUTE && Has(kCreated));
        close_ = name;
    }

    /// The string of a text node or attribute with one of the flags kOwnContent, kPrefixed and kQuoted.
    StringIndex OwnString() const {
        assert(type_ == NODE_TEXT || type_ == NODE_ATTRIBUTE);
        return link_;
    }
    void SetOwnString(StringIndex string) {
        assert(type_ == NODE_TEXT || type_ == NODE_ATTRIBUTE);
        link_ = string;
    }

    /// The second string of a text node with the flag kQuoted.
    StringIndex StringAfterQuote() const {
        assert(type_ == NODE_TEXT && Has(kQuoted));
        return close_;
    }
    void SetStringAfterQuote(StringIndex string) {
        assert(type_ == NODE_TEXT && Has(kQuoted));
        close_ = string;
    }

    NodeIndex parent = 0;     ///< For an attribute the element that has it.
    NodeIndex next = 0;       ///< The next sibling; for an attribute the element's next attribute.
    std::uint32_t begin = 0;  ///< Of the source bytes: the start tag of an element, the name of an attribute.
    std::uint16_t nameLength = 0;  ///< Of an element or attribute in a source, in bytes.

  private:
    bool HoldsChildren() const { return type_ == NODE_ELEMENT || type_ == NODE_DOCUMENT; }

    std::uint8_t type_;
    std::uint8_t flags_ = 0;
    NodeIndex previous_ = 0;
    std::uint32_t link_ = 0;
    std::uint32_t end_ = 0;
    std::uint32_t close_ = 0;
};
static_assert(sizeof(NodeRecord) == 32);

/// References to records are valid until the next Add or Reserve.
class NodeTable {
  public:
    NodeTable() { Add(NodeRecord(NODE_INVALID)); }

    NodeRecord& operator[](NodeIndex index) { return records_.get()[index]; }
    std::size_t Size() const { return size_; }

    NodeIndex Add(const NodeRecord& record) {
        if (size_ == capacity_) {
            Reserve(1);
        }
        std::construct_at(records_.get() + size_, record);
        return static_cast<NodeIndex>(size_++);
    }

    /// Reserves space for this many more nodes. The capacity at least doubles, since many small scratch
    /// documents may follow.
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
