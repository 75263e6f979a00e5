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
    return IsBlank(c) || c == '>' || c == '/' || c == '=';
}

std::size_t Behind(std::string_view text, std::string_view closing, std::size_t at) {
    const std::size_t found = text.find(closing, at);
    return found == kNotFound ? kNotFound : found + closing.size();
}

/// ASCII names with one colon at most, and a name on either side of it.
bool IsPlainName(std::string_view name) {
    const std::size_t colon = name.find(':');
    const auto isLocal = [](std::string_view part) {
        return !part.empty() && (ClassOf(part[0]) & kNameStart) != 0 && part.find(':') == kNotFound;
    };
    const bool parts = colon == kNotFound ? isLocal(name)
                                          : isLocal(name.substr(0, colon)) && isLocal(name.substr(colon + 1));
    return parts && std::ranges::all_of(name, [](char c) { return (ClassOf(c) & kNameByte) != 0; });
}

/// The names of one start tag, to see a name that comes twice. A tag with many is left to the parser.
class TagNames {
  public:
    void Clear() { count_ = 0; }

    /// False if the name is there already or there is no room for it.
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

/// As many as there would be if the whole text were like its beginning, and some more. Bounded, since it may
/// be like that in its beginning only.
std::size_t ExpectedNodes(std::string_view text) {
    constexpr std::size_t kSampleSize = std::size_t{64} * 1024;
    const std::string_view sample = text.substr(0, kSampleSize);
    const auto tags = static_cast<std::size_t>(std::ranges::count(sample, '<'));
    const std::size_t expected = 2 * tags * text.size() / std::max<std::size_t>(sample.size(), 1);
    return std::min(expected + expected / 4, text.size() / 4) + 2;
}

/// The text ends in a NUL, which is no character of any class, so that scans by class need no other end.
class TreeBuilder {
  public:
    TreeBuilder(DocumentStore& store, SourceText& source)
        : store_(store),
          source_(source),
          text_(source.text),
          data_(source.text.data()),
          parent_(source.document) {}

    Form Build() {
        at_ = RootBegin(text_);
        if (at_ == kNotFound) {
            return Form::kBroken;
        }
        hasDoctype_ = text_.substr(0, at_).find("<!DOCTYPE") != kNotFound;
        store_.Reserve(ExpectedNodes(text_));
        do {
            if (at_ >= text_.size() || !TakeMarkup()) {
                return Form::kBroken;
            }
            if (parent_ != source_.document) {
                TakeText();
            }
        } while (parent_ != source_.document);
        TieChildren();
        source_.rootEnd = Offset(at_);
        if (hasLongName_) {
            return Form::kBroken;
        }
        return doubtful_ ? Form::kDoubtful : Form::kWellFormed;
    }

  private:
    std::uint32_t Offset(std::size_t at) const { return source_.base + static_cast<std::uint32_t>(at); }

    void Expect(bool condition) { doubtful_ = doubtful_ || !condition; }

    /// Adds a child of the element that is open. Inlined, for building is mostly this.
    [[gnu::always_inline]] void AddNode(NodeType type, std::size_t begin, std::size_t end,
                                        std::uint8_t flags = 0) {
        const NodeIndex index = store_.Add(type);
        NodeRecord& record = store_.At(index);
        record.flags = flags;
        record.parent = parent_;
        record.previous = last_;
        record.begin = Offset(begin);
        record.end = Offset(end);
        (last_ == 0 ? store_.At(parent_).child : store_.At(last_).next) = index;
        last_ = index;
    }

    void EnterLast() {
        parent_ = last_;
        last_ = 0;
    }

    /// A first child knows the last one.
    void TieChildren() {
        if (last_ != 0) {
            store_.At(store_.At(parent_).child).previous = last_;
        }
    }

    void LeaveParent() {
        TieChildren();
        last_ = parent_;
        parent_ = store_.At(last_).parent;
    }

    /// One tag, comment, CDATA section or instruction.
    bool TakeMarkup() {
        switch (data_[at_ + 1]) {
            case '/':
                return TakeEndTag();
            case '!':
                return text_.compare(at_, 4, "<!--") == 0 ? TakeComment() : TakeCdata();
            case '?':
                return TakeInstruction();
            default:
                return TakeStartTag();
        }
    }

    bool TakeComment() {
        const std::size_t from = at_ + sizeof "<!--" - 1;
        const std::size_t end = Behind(text_, "-->", from);
        return TakeSpecial(NODE_COMMENT, end, [&] {
            const std::string_view content = text_.substr(from, end - from - 2);  // With one of the dashes.
            return content.find("--") == kNotFound;
        });
    }

    bool TakeCdata() {
        const std::size_t end = Behind(text_, "]]>", at_);
        return TakeSpecial(NODE_CDATA_SECTION, end,
                           [&] { return text_.compare(at_, sizeof "<![CDATA[" - 1, "<![CDATA[") == 0; });
    }

    bool TakeInstruction() {
        const std::size_t from = at_ + sizeof "<?" - 1;
        const std::size_t end = Behind(text_, "?>", from);
        return TakeSpecial(NODE_PROCESSING_INSTRUCTION, end, [&] {
            const std::string_view content = text_.substr(from, end - from - 2);
            const auto blank = std::ranges::find_if(content, IsBlank);
            const std::string_view target(content.begin(), blank);
            constexpr std::size_t kReserved = sizeof "xml" - 1;  // In any case.
            return target.size() != kReserved && IsPlainName(target);
        });
    }

    template <typename IsPlain>
    bool TakeSpecial(NodeType type, std::size_t end, IsPlain isPlain) {
        if (end == kNotFound) {
            return false;
        }
        Expect(isPlain() && HoldsOnlyCharacters(text_.substr(at_, end - at_)));
        AddNode(type, at_, end);
        at_ = end;
        return true;
    }

    bool TakeEndTag() {
        if (parent_ == source_.document) {
            return false;
        }
        NodeRecord& element = store_.At(parent_);
        const std::size_t name = at_ + sizeof "</" - 1;
        std::size_t close = name;
        const char* opened = data_ + (element.begin - source_.base) + 1;
        while (close < name + element.nameLength && data_[close] == *opened) {
            ++close;
            ++opened;
        }
        Expect(close == name + element.nameLength);
        while (IsBlank(data_[close])) {
            ++close;
        }
        if (data_[close] != '>') {
            doubtful_ = true;
            close = text_.find('>', name);
            if (close == kNotFound) {
                return false;
            }
        }
        element.close = Offset(at_);
        LeaveParent();
        at_ = close + 1;
        return true;
    }

    bool TakeStartTag() {
        const std::size_t nameEnd = NameEnd(at_ + 1);
        const std::size_t close = data_[nameEnd] == '>' ? nameEnd : AttributesEnd(nameEnd);
        if (close >= text_.size() || nameEnd - at_ - 1 > kLongestName) {
            return false;
        }
        const bool hasNoAttributes = close == nameEnd && !hasDoctype_;
        AddNode(NODE_ELEMENT, at_, close + 1, hasNoAttributes ? kAttributesRead : 0);
        store_.At(last_).nameLength = static_cast<std::uint16_t>(nameEnd - at_ - 1);
        if (parent_ == source_.document) {
            source_.root = last_;
        }
        if (text_[close - 1] != '/') {
            EnterLast();
        }
        at_ = close + 1;
        return true;
    }

    /// Behind the name that begins there.
    std::size_t NameEnd(std::size_t begin) {
        std::size_t at = begin;
        if ((ClassOf(data_[at]) & kNameStart) != 0) {
            while ((ClassOf(data_[at]) & kNameByte) != 0 && data_[at] != ':') {
                ++at;
            }
        }
        if (at == begin || !EndsName(data_[at])) {
            while (at < text_.size() && !EndsName(data_[at])) {
                ++at;
            }
            Expect(IsPlainName(text_.substr(begin, at - begin)));
        }
        return at;
    }

    /// The ">" of a start tag.
    std::size_t AttributesEnd(std::size_t at) {
        names_.Clear();
        while (true) {
            std::size_t next = at;
            while (IsBlank(data_[next])) {
                ++next;
            }
            if (data_[next] == '>') {
                return next;
            }
            if (data_[next] == '/' && data_[next + 1] == '>') {
                return next + 1;
            }
            const std::size_t behind = next > at ? AttributeEnd(next) : kNotFound;
            if (behind == kNotFound) {
                doubtful_ = true;
                return TagClose(next);
            }
            at = behind;
        }
    }

    /// Behind the closing quote; npos if no attribute stands there.
    std::size_t AttributeEnd(std::size_t begin) {
        std::size_t at = NameEnd(begin);
        const std::string_view name = text_.substr(begin, at - begin);
        Expect(names_.Add(name));
        hasLongName_ = hasLongName_ || name.size() > kLongestName;
        NoteNamespace(name);
        while (IsBlank(data_[at])) {
            ++at;
        }
        if (data_[at] != '=') {
            return kNotFound;
        }
        ++at;
        while (IsBlank(data_[at])) {
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
            at = c == '"' || c == '\'' ? at + 1 : BehindSpecial(at);
        }
    }

    /// The ">" of a start tag of whatever form; values may hold one.
    std::size_t TagClose(std::size_t at) const {
        while (at < text_.size() && text_[at] != '>') {
            if (text_[at] == '"' || text_[at] == '\'') {
                at = std::min(text_.find(text_[at], at + 1), text_.size() - 1);
            }
            ++at;
        }
        return at;
    }

    /// Behind a reference or a character that is not of ASCII, or a byte that fits nowhere.
    std::size_t BehindSpecial(std::size_t at) {
        if (text_[at] == '&') {
            const ReferenceRead reference = ReadReference(text_.substr(at));
            Expect(reference.kind != Reference::kOther);
            return at + reference.length;
        }
        const std::size_t length = text_[at] == '<' ? 0 : CharacterLength(text_.substr(at, 4));
        Expect(length != 0);
        return at + std::max<std::size_t>(length, 1);
    }

    /// The text up to the next "<", cut at references to entities that stay in the tree.
    void TakeText() {
        begin_ = at_;
        StartText();
        while (true) {
            if (!solid_) {
                while (data_[at_] == ' ' || data_[at_] == '\n' || data_[at_] == '\t') {
                    ++at_;
                }
                solid_ = (ClassOf(data_[at_]) & kTextStop) == 0;
            }
            at_ = TextStopFrom(at_);
            if (at_ >= text_.size() || text_[at_] == '<') {
                EndText(at_);
                return;
            }
            TakeSpecialInText();
        }
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

    void TakeSpecialInText() {
        switch (text_[at_]) {
            case '&':
                TakeReference();
                return;
            case '\r':
                verbatim_ = false;
                ++at_;
                return;
            case ']':
                Expect(text_.compare(at_, 3, "]]>") != 0);
                solid_ = true;
                ++at_;
                return;
            default:
                solid_ = true;
                at_ = BehindSpecial(at_);
        }
    }

    void TakeReference() {
        const ReferenceRead reference = ReadReference(text_.substr(at_));
        const std::size_t behind = at_ + reference.length;
        if (reference.kind == Reference::kOther) {
            doubtful_ = true;
            EndText(at_);
            AddNode(NODE_ENTITY_REFERENCE, at_, behind);
            begin_ = behind;
            StartText();
        } else {
            verbatim_ = false;
            solid_ = solid_ || reference.kind == Reference::kSolid;
        }
        at_ = behind;
    }

    void StartText() {
        verbatim_ = true;
        solid_ = false;
    }

    void EndText(std::size_t end) {
        if (begin_ < end) {
            AddNode(NODE_TEXT, begin_, end,
                    static_cast<std::uint8_t>((verbatim_ ? kVerbatim : 0) | (solid_ ? kFilled : 0)));
        }
    }

    DocumentStore& store_;
    SourceText& source_;
    std::string_view text_;
    const char* data_;  ///< The same text; the NUL at its end may be read too.
    NodeIndex parent_;
    NodeIndex last_ = 0;  ///< The last child of the parent so far.
    std::size_t at_ = 0;
    bool hasDoctype_ = false;  ///< Attributes may come from it.
    bool doubtful_ = false;
    bool hasLongName_ = false;  ///< Longer than a node can tell.
    TagNames names_;

    std::size_t begin_ = 0;  ///< Of the text that is being taken.
    bool verbatim_ = true;   ///< It stands for itself as far as it was taken.
    bool solid_ = false;     ///< It is not all white space.
};

}  // namespace

Form BuildTree(DocumentStore& store, SourceText& source) {
    const Form form = TreeBuilder(store, source).Build();
    if (form == Form::kBroken) {
        source.root = 0;
        store.Clear(source.document);
    }
    return form;
}

}  // namespace ventrix::xml
