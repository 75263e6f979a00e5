#include "markers/xml/lossless/tree_builder.h"

#include <algorithm>
#include <cstring>

namespace ventrix::xml {
namespace {

constexpr std::size_t NotFound = std::string_view::npos;
constexpr std::size_t LongestName = UINT16_MAX;

bool EndsName(char c) {
    return c == ' ' || c == '\t' || c == '\n' || c == '\r' || c == '>' || c == '/';
}

bool IsPredefined(std::string_view name) {
    return name == "amp" || name == "lt" || name == "gt" || name == "quot" || name == "apos";
}

/// Behind the "]" that closes an internal subset which begins at `at`. Literals, comments and instructions
/// may hold one.
std::size_t BehindInternalSubset(std::string_view text, std::size_t at) {
    while (at < text.size() && text[at] != ']') {
        if (text.compare(at, 4, "<!--") == 0) {
            at = text.find("-->", at + 4);
        } else if (text.compare(at, 2, "<?") == 0) {
            at = text.find("?>", at + 2);
        } else if (text[at] == '"' || text[at] == '\'') {
            at = text.find(text[at], at + 1);
        }
        if (at == NotFound) {
            return NotFound;
        }
        ++at;
    }
    return at < text.size() ? at + 1 : NotFound;
}

std::size_t BehindDoctype(std::string_view text, std::size_t at) {
    while (at < text.size() && text[at] != '>') {
        if (text[at] == '"' || text[at] == '\'') {
            at = text.find(text[at], at + 1);
        } else if (text[at] == '[') {
            at = BehindInternalSubset(text, at + 1);
            continue;
        }
        if (at == NotFound) {
            return NotFound;
        }
        ++at;
    }
    return at < text.size() ? at + 1 : NotFound;
}

std::size_t Behind(std::string_view text, std::string_view closing, std::size_t at) {
    const std::size_t found = text.find(closing, at);
    return found == NotFound ? NotFound : found + closing.size();
}

class TreeBuilder {
  public:
    TreeBuilder(DocumentStore& store, SourceText& source)
        : store_(store), source_(source), text_(source.text), parent_(source.document) {}

    bool Build() {
        at_ = RootBegin(text_);
        store_.Reserve(2 * static_cast<std::size_t>(std::ranges::count(text_, '<')) + 1);
        do {
            if (at_ >= text_.size() || !TakeMarkup()) {
                return false;
            }
            if (parent_ != source_.document) {
                TakeText();
            }
        } while (parent_ != source_.document);
        source_.rootEnd = Offset(at_);
        return true;
    }

  private:
    std::uint32_t Offset(std::size_t at) const { return source_.base + static_cast<std::uint32_t>(at); }

    NodeIndex AddNode(NodeType type, std::size_t begin, std::size_t end) {
        const NodeIndex index = store_.Add(type);
        store_.At(index).begin = Offset(begin);
        store_.At(index).end = Offset(end);
        store_.Append(parent_, index);
        return index;
    }

    /// One tag, comment, CDATA section or instruction.
    bool TakeMarkup() {
        const char c = at_ + 1 < text_.size() ? text_[at_ + 1] : '\0';
        if (c == '/') {
            return TakeEndTag();
        }
        if (c == '!') {
            const bool comment = text_.compare(at_, 4, "<!--") == 0;
            return comment ? TakeUpTo(NODE_COMMENT, "-->", at_ + 4)
                           : TakeUpTo(NODE_CDATA_SECTION, "]]>", at_ + 9);
        }
        return c == '?' ? TakeUpTo(NODE_PROCESSING_INSTRUCTION, "?>", at_ + 2) : TakeStartTag();
    }

    bool TakeUpTo(NodeType type, std::string_view closing, std::size_t from) {
        const std::size_t end = Behind(text_, closing, from);
        if (end == NotFound) {
            return false;
        }
        AddNode(type, at_, end);
        at_ = end;
        return true;
    }

    bool TakeEndTag() {
        const std::size_t end = Behind(text_, ">", at_);
        if (end == NotFound || parent_ == source_.document) {
            return false;
        }
        NodeRecord& element = store_.At(parent_);
        element.close = Offset(at_);
        parent_ = element.parent;
        at_ = end;
        return true;
    }

    bool TakeStartTag() {
        std::size_t nameEnd = at_ + 1;
        while (nameEnd < text_.size() && !EndsName(text_[nameEnd])) {
            ++nameEnd;
        }
        const std::size_t close = TagClose(nameEnd);
        if (close >= text_.size() || nameEnd - at_ - 1 > LongestName) {
            return false;
        }
        const NodeIndex index = AddNode(NODE_ELEMENT, at_, close + 1);
        store_.At(index).nameLength = static_cast<std::uint16_t>(nameEnd - at_ - 1);
        if (close == nameEnd && !source_.suppliesAttributes) {
            store_.At(index).flags = AttributesRead;
        }
        if (parent_ == source_.document) {
            source_.root = index;
        }
        if (!source_.hasNamespaces && close > nameEnd) {
            source_.hasNamespaces = text_.substr(nameEnd, close - nameEnd).find("xmlns") != NotFound;
        }
        if (text_[close - 1] != '/') {
            parent_ = index;
        }
        at_ = close + 1;
        return true;
    }

    /// The ">" of a start tag; values may hold one.
    std::size_t TagClose(std::size_t at) const {
        while (at < text_.size() && text_[at] != '>') {
            if (text_[at] == '"' || text_[at] == '\'') {
                at = std::min(text_.find(text_[at], at + 1), text_.size() - 1);
            }
            ++at;
        }
        return at;
    }

    /// The text up to the next "<", cut at references to entities that stay in the tree.
    void TakeText() {
        const std::size_t end = std::min(text_.find('<', at_), text_.size());
        std::size_t begin = at_;
        bool verbatim = !source_.hasReturns;
        for (std::size_t mark = at_; (mark = text_.substr(0, end).find('&', mark)) != NotFound;) {
            const std::size_t behind = std::min(Behind(text_, ";", mark), end);
            const std::string_view name = text_.substr(mark + 1, behind - mark - 2);
            if (name.starts_with('#') || IsPredefined(name)) {
                verbatim = false;
            } else {
                AddText(begin, mark, verbatim);
                AddNode(NODE_ENTITY_REFERENCE, mark, behind);
                begin = behind;
                verbatim = !source_.hasReturns;
            }
            mark = behind;
        }
        AddText(begin, end, verbatim);
        at_ = end;
    }

    void AddText(std::size_t begin, std::size_t end, bool verbatim) {
        if (begin < end) {
            store_.At(AddNode(NODE_TEXT, begin, end)).flags = verbatim ? Verbatim : 0;
        }
    }

    DocumentStore& store_;
    SourceText& source_;
    std::string_view text_;
    NodeIndex parent_;
    std::size_t at_ = 0;
};

}  // namespace

std::size_t RootBegin(std::string_view text) {
    std::size_t at = text.find('<');
    while (at != NotFound && at + 1 < text.size() && (text[at + 1] == '?' || text[at + 1] == '!')) {
        std::size_t behind = 0;
        if (text[at + 1] == '?') {
            behind = Behind(text, "?>", at);
        } else if (text.compare(at, 4, "<!--") == 0) {
            behind = Behind(text, "-->", at + 4);
        } else {
            behind = BehindDoctype(text, at + 2);
        }
        at = behind == NotFound ? NotFound : text.find('<', behind);
    }
    return at;
}

bool BuildTree(DocumentStore& store, SourceText& source) {
    if (TreeBuilder(store, source).Build()) {
        return true;
    }
    source.root = 0;
    store.At(source.document).firstChild = store.At(source.document).lastChild = 0;
    return false;
}

}  // namespace ventrix::xml
