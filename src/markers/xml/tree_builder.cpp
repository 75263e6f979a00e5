#include "markers/xml/tree_builder.h"

#include <algorithm>
#include <array>

#include "markers/xml/characters.h"
#include "markers/xml/prolog.h"
#include "markers/xml/references.h"

namespace ventrix::xml {
namespace {

constexpr std::size_t kNotFound = std::string_view::npos;
constexpr std::size_t kLongestName = UINT16_MAX;

bool EndsName(char c) {
    return (ClassOf(c) & kNameEnd) != 0;
}

/// Whether a character reference stands for ASCII that may occur in a name, as in "&#65;".
bool StandsForNameByte(std::string_view reference) {
    if (reference[1] != '#') {
        return false;
    }
    std::string character;
    AppendDecodedText(character, reference);
    return character.size() == 1 && (ClassOf(character[0]) & kNameByte) != 0;
}

/// The attribute names of one start tag, to find duplicates. A tag with more than fit is left to the parser.
class TagNames {
  public:
    void Clear() { count_ = 0; }

    /// False for a duplicate, or if the array is full.
    bool Add(std::string_view name) {
        const auto end = names_.begin() + static_cast<std::ptrdiff_t>(count_);
        if (count_ == names_.size() || std::find(names_.begin(), end, name) != end) {
            return false;
        }
        names_[count_++] = name;
        return true;
    }

  private:
    std::array<std::string_view, 16> names_;
    std::size_t count_ = 0;
};

/// An estimate with room for the nodes that a pass adds: five for each tag in the first part of the text,
/// extrapolated to all of it. Memory that is not used costs nothing, while growing the table copies it.
/// Bounded, since the rest may have fewer tags.
std::size_t ExpectedNodes(std::string_view text) {
    constexpr std::size_t kSampleSize = std::size_t{64} * 1024;
    constexpr std::size_t kNodesPerTag = 5;
    const std::string_view sample = text.substr(0, kSampleSize);
    const auto tags = static_cast<std::size_t>(std::ranges::count(sample, '<'));
    const std::size_t expected = kNodesPerTag * tags * text.size() / std::max<std::size_t>(sample.size(), 1);
    return std::min(expected, text.size() / 2) + 2;
}

/// One pass over the text, with a position `at_` and the open element `parent_`. Each turn of the loop in
/// Build reads one piece of markup and the text that follows it; start tags open an element, end tags close
/// it. There is no recursion, so that no depth of nesting can exhaust the stack.
///
/// The pass finds structure, not errors. But most documents are plain enough to be recognised as well-formed
/// on the way, and need no second pass by a parser. Whatever is not certainly well-formed (a name beyond
/// ASCII, a reference to an entity that is not predefined, a tag with many attributes, a real error) fails a
/// Require, which leaves the decision to the parser. After that the tree only has to be right if the parser
/// accepts the document.
///
/// A NUL follows the text. It is neither a name byte nor whitespace, and stops the scans of text and values,
/// so that these scans need no check for the end.
class TreeBuilder {
  public:
    TreeBuilder(DocumentStore& store, SourceText& source)
        : store_(store),
          source_(source),
          text_(source.text),
          data_(source.text.data()),
          parent_(source.document) {}

    BuildResult Build() {
        at_ = RootBegin(text_);
        if (at_ == kNotFound) {
            return BuildResult::kNoTree;
        }
        hasDoctype_ = text_.substr(0, at_).find("<!DOCTYPE") != kNotFound;
        store_.Reserve(ExpectedNodes(text_));
        do {
            if (at_ >= text_.size() || !ReadMarkup()) {
                return BuildResult::kNoTree;
            }
            if (parent_ != source_.document) {
                ReadText();
            }
        } while (parent_ != source_.document);
        LinkLastChild();
        source_.rootEnd = Offset(at_);
        if (hasLongName_) {
            return BuildResult::kNoTree;
        }
        return verified_ ? BuildResult::kWellFormed : BuildResult::kUnverified;
    }

  private:
    std::uint32_t Offset(std::size_t at) const { return source_.base + static_cast<std::uint32_t>(at); }

    /// The text is certainly well-formed only if the condition holds.
    void Require(bool condition) { verified_ = verified_ && condition; }

    /// Appends a child to the open element. Inlined, since this is most of the work.
    [[gnu::always_inline]] void AddNode(NodeType type, std::size_t begin, std::size_t end,
                                        unsigned flags = 0) {
        NodeRecord record(type);
        record.Set(flags);
        record.parent = parent_;
        record.SetPreviousOrLast(last_);
        record.begin = Offset(begin);
        record.SetEnd(Offset(end));
        const NodeIndex index = store_.Add(record);
        if (last_ == 0) {
            store_.At(parent_).SetFirstChild(index);
        } else {
            store_.At(last_).next = index;
        }
        last_ = index;
    }

    void OpenLast() {
        parent_ = last_;
        last_ = 0;
    }

    /// Makes the first child lead to the last one.
    void LinkLastChild() {
        if (last_ != 0) {
            store_.At(store_.FirstChild(parent_)).SetPreviousOrLast(last_);
        }
    }

    void CloseParent() {
        LinkLastChild();
        last_ = parent_;
        parent_ = store_.At(last_).parent;
    }

    /// Reads one tag, comment, CDATA section or processing instruction; false if it has no end.
    bool ReadMarkup() {
        switch (data_[at_ + 1]) {
            case '/':
                return ReadEndTag();
            case '!':
                return text_.compare(at_, 4, "<!--") == 0 ? ReadComment() : ReadCdata();
            case '?':
                return ReadInstruction();
            default:
                return ReadStartTag();
        }
    }

    bool ReadComment() {
        const std::size_t from = at_ + sizeof "<!--" - 1;
        const std::size_t end = FindEnd(text_, "-->", from);
        return ReadUpTo(NODE_COMMENT, end, [&] {
            const std::string_view content =
                text_.substr(from, end - from - 2);  // With the first dash of the end.
            return content.find("--") == kNotFound;
        });
    }

    bool ReadCdata() {
        const std::size_t end = FindEnd(text_, "]]>", at_);
        return ReadUpTo(NODE_CDATA_SECTION, end,
                        [&] { return text_.compare(at_, sizeof "<![CDATA[" - 1, "<![CDATA[") == 0; });
    }

    bool ReadInstruction() {
        const std::size_t from = at_ + sizeof "<?" - 1;
        const std::size_t end = FindEnd(text_, "?>", from);
        return ReadUpTo(NODE_PROCESSING_INSTRUCTION, end, [&] {
            const std::string_view content = text_.substr(from, end - from - 2);
            const auto targetEnd = std::ranges::find_if(content, IsWhitespace);
            const std::string_view target(content.begin(), targetEnd);
            constexpr std::size_t kReserved = sizeof "xml" - 1;  // Reserved in any letter case.
            return target.size() != kReserved && IsPlainName(target);
        });
    }

    template <typename IsPlain>
    bool ReadUpTo(NodeType type, std::size_t end, IsPlain isPlain) {
        if (end == kNotFound) {
            return false;
        }
        Require(isPlain() && HoldsOnlyCharacters(text_.substr(at_, end - at_)));
        AddNode(type, at_, end);
        at_ = end;
        return true;
    }

    bool ReadEndTag() {
        if (parent_ == source_.document) {
            return false;
        }
        NodeRecord& element = store_.At(parent_);
        const std::size_t name = at_ + sizeof "</" - 1;
        std::size_t close = name;
        const char* opened = data_ + (element.begin - source_.base) + 1;
        // The opened name may contain NULs, which the NUL after the text equals.
        const std::size_t nameEnd = std::min(name + element.nameLength, text_.size());
        while (close < nameEnd && data_[close] == *opened) {
            ++close;
            ++opened;
        }
        Require(close == name + element.nameLength);
        while (IsWhitespace(data_[close])) {
            ++close;
        }
        if (data_[close] != '>') {
            verified_ = false;
            close = text_.find('>', name);
            if (close == kNotFound) {
                return false;
            }
        }
        element.SetEndTag(Offset(at_));
        CloseParent();
        at_ = close + 1;
        return true;
    }

    bool ReadStartTag() {
        const std::size_t nameEnd = NameEnd(at_ + 1);
        const std::size_t close = data_[nameEnd] == '>' ? nameEnd : AttributesEnd(nameEnd);
        if (close >= text_.size() || nameEnd - at_ - 1 > kLongestName) {
            return false;
        }
        // A DOCTYPE may supply attributes that the tag does not have.
        const bool hasNoAttributes = close == nameEnd && !hasDoctype_;
        AddNode(NODE_ELEMENT, at_, close + 1, hasNoAttributes ? kAttributesRead : 0);
        store_.At(last_).nameLength = static_cast<std::uint16_t>(nameEnd - at_ - 1);
        if (parent_ == source_.document) {
            source_.root = last_;
        }
        if (text_[close - 1] != '/') {
            OpenLast();
        }
        at_ = close + 1;
        return true;
    }

    /// The position past the name that begins there.
    std::size_t NameEnd(std::size_t begin) {
        std::size_t at = begin;
        if ((ClassOf(data_[at]) & kNameStart) != 0) {
            while ((ClassOf(data_[at]) & kLocalNameByte) != 0) {
                ++at;
            }
        }
        if (at == begin || !EndsName(data_[at])) {
            while (at < text_.size() && !EndsName(data_[at])) {
                ++at;
            }
            Require(IsPlainName(text_.substr(begin, at - begin)));
        }
        return at;
    }

    /// The position of the ">" of a start tag, from the end of its name.
    std::size_t AttributesEnd(std::size_t at) {
        names_.Clear();
        while (true) {
            std::size_t next = at;
            while (IsWhitespace(data_[next])) {
                ++next;
            }
            if (data_[next] == '>') {
                return next;
            }
            if (data_[next] == '/' && data_[next + 1] == '>') {
                return next + 1;
            }
            const std::size_t end = next > at ? AttributeEnd(next) : kNotFound;
            if (end == kNotFound) {
                verified_ = false;
                return FindTagClose(next);
            }
            at = end;
        }
    }

    /// The position past the closing quote; npos if there is no attribute.
    std::size_t AttributeEnd(std::size_t begin) {
        std::size_t at = NameEnd(begin);
        const std::string_view name = text_.substr(begin, at - begin);
        Require(names_.Add(name));
        hasLongName_ = hasLongName_ || name.size() > kLongestName;
        NoteNamespace(name);
        while (IsWhitespace(data_[at])) {
            ++at;
        }
        if (data_[at] != '=') {
            return kNotFound;
        }
        ++at;
        while (IsWhitespace(data_[at])) {
            ++at;
        }
        const char quote = data_[at];
        return quote == '"' || quote == '\'' ? ValueEnd(at + 1, quote) : kNotFound;
    }

    void NoteNamespace(std::string_view attributeName) {
        if (attributeName.starts_with("xmlns")) {
            source_.hasNamespaces = true;
            source_.hasDefaultNamespace = source_.hasDefaultNamespace || attributeName == "xmlns";
        }
    }

    /// The position past the closing quote of a value; npos without one.
    std::size_t ValueEnd(std::size_t at, char quote) {
        while (true) {
            while ((ClassOf(data_[at]) & kValueStop) == 0) {
                ++at;
            }
            const char c = data_[at];
            if (c == quote) {
                return at + 1;
            }
            if (at >= text_.size()) {
                return kNotFound;
            }
            at = c == '"' || c == '\'' ? at + 1 : SpecialEnd(at);
        }
    }

    /// The position of the ">" of a malformed start tag; a ">" in quotes does not count.
    std::size_t FindTagClose(std::size_t at) const {
        while (at < text_.size() && text_[at] != '>') {
            if (text_[at] == '"' || text_[at] == '\'') {
                at = std::min(text_.find(text_[at], at + 1), text_.size() - 1);
            }
            ++at;
        }
        return at;
    }

    /// The position past a reference, a character beyond ASCII, or a byte that is not allowed.
    std::size_t SpecialEnd(std::size_t at) {
        if (text_[at] == '&') {
            const Reference reference = ReadReference(text_.substr(at));
            Require(reference.kind != ReferenceKind::kOther);
            return at + reference.length;
        }
        const std::size_t length = text_[at] == '<' ? 0 : CharacterLength(text_.substr(at, 4));
        Require(length != 0);
        return at + std::max<std::size_t>(length, 1);
    }

    /// Reads the text up to the next "<". A reference to an entity that is not predefined becomes a node of
    /// its own, with text nodes before and after it.
    void ReadText() {
        StartTextNode();
        while (data_[at_] != '<') {
            at_ = TextStopFrom(at_);
            if (at_ >= text_.size()) {
                break;
            }
            if (data_[at_] != '<') {
                ReadSpecialInText();
            }
        }
        EndTextNode();
    }

    std::size_t TextStopFrom(std::size_t at) const {
        while (true) {
            at = SkipPlain(text_, at);
            if ((ClassOf(data_[at]) & kTextStop) != 0) {
                return at;
            }
            ++at;
        }
    }

    void ReadSpecialInText() {
        switch (text_[at_]) {
            case '&':
                ReadReferenceInText();
                return;
            case '\r':
                verbatim_ = false;
                searchable_ = searchable_ && data_[at_ + 1] == '\n';
                ++at_;
                return;
            case ']':
                Require(text_.compare(at_, 3, "]]>") != 0);
                ++at_;
                return;
            default:
                at_ = SpecialEnd(at_);
        }
    }

    void ReadReferenceInText() {
        const Reference reference = ReadReference(text_.substr(at_));
        const std::size_t end = at_ + reference.length;
        if (reference.kind == ReferenceKind::kOther) {
            verified_ = false;
            EndTextNode();
            AddNode(NODE_ENTITY_REFERENCE, at_, end);
            at_ = end;
            StartTextNode();
        } else {
            verbatim_ = false;
            searchable_ = searchable_ && !StandsForNameByte(text_.substr(at_, reference.length));
            at_ = end;
        }
    }

    /// Indentation is skipped here, since TextStopFrom is slow for line feeds.
    void StartTextNode() {
        textBegin_ = at_;
        verbatim_ = searchable_ = true;
        while ((ClassOf(data_[at_]) & kIndentation) != 0) {
            ++at_;
        }
        visibleBegin_ = at_;
    }

    void EndTextNode() {
        if (textBegin_ == at_) {
            return;
        }
        const std::string_view visible(data_ + visibleBegin_, at_ - visibleBegin_);
        const bool filled = !visible.empty() && IsFilled(visible, TextForm::kSource);
        AddNode(NODE_TEXT, textBegin_, at_,
                (verbatim_ ? kVerbatim : 0) | (searchable_ ? kSearchable : 0) | (filled ? kFilled : 0));
    }

    DocumentStore& store_;
    SourceText& source_;
    std::string_view text_;
    const char* data_;    ///< The same text, with the NUL after it.
    NodeIndex parent_;    ///< The open element.
    NodeIndex last_ = 0;  ///< The last child of the open element so far.
    std::size_t at_ = 0;
    bool hasDoctype_ = false;   ///< It may supply attributes.
    bool verified_ = true;      ///< All that was read is certainly well-formed.
    bool hasLongName_ = false;  ///< Longer than a node can record.
    TagNames names_;

    std::size_t textBegin_ = 0;     ///< Of the text node that is being read.
    std::size_t visibleBegin_ = 0;  ///< Past its leading whitespace.
    bool verbatim_ = true;          ///< Its bytes so far are its content.
    bool searchable_ = true;        ///< Its bytes so far hold the same words as its content.
};

}  // namespace

BuildResult BuildTree(DocumentStore& store, SourceText& source) {
    const BuildResult result = TreeBuilder(store, source).Build();
    if (result == BuildResult::kNoTree) {
        source.root = 0;
        store.RemoveRoot(source.document);
    }
    return result;
}

}  // namespace ventrix::xml
