// The strings of a store that are not slices of a source: content that was set, prefixes, names of new
// attributes. They live as long as the table, are UTF-8 and end at the first NUL.
//
// Interned strings never change, so that any number of nodes may refer to one. A replaceable string belongs
// to one node, and a new value releases the old one.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "platform/memory.h"

namespace ventrix::xml {

using StringIndex = std::uint32_t;  ///< Interned and replaceable strings are numbered apart.

inline std::string_view UpToNul(std::string_view text) {
    return text.substr(0, text.find('\0'));
}

/// Memory for strings that never move, taken in large blocks and released with the arena.
class StringArena {
  public:
    /// Announces about how many bytes will be added, so that the first block is large enough for them.
    void Expect(std::size_t size);

    std::string_view Add(std::string_view text);

    /// Adds the text and a NUL after it.
    char* AddTerminated(std::string_view text);

    /// Memory for a structure, aligned as a pointer is.
    void* TakeAligned(std::size_t size);

  private:
    char* Take(std::size_t size);

    static constexpr std::size_t kFirstBlock = std::size_t{16} * 1024;

    struct Release {
        void operator()(char* block) const { platform::ReleaseMemory(block); }
    };

    std::vector<std::unique_ptr<char, Release>> blocks_;
    char* free_ = nullptr;
    std::size_t left_ = 0;
    std::size_t nextBlock_ = kFirstBlock;
};

class StringTable {
  public:
    StringTable() : interned_(1) {}

    void ExpectBytes(std::size_t size) { arena_.Expect(size); }
    void ExpectStrings(std::size_t count) { expectedStrings_ = count; }

    /// Adds an interned string without looking for an equal one.
    StringIndex Add(std::string_view text);

    /// Adds an interned string unless it equals one of the last few that were interned, as the marker text at
    /// the start of neighbouring text nodes often does.
    StringIndex Intern(std::string_view text);

    /// The same, if the text is likely to equal an interned string that the caller knows.
    StringIndex Intern(std::string_view text, StringIndex likely) {
        return interned_[likely] == text ? likely : Intern(text);
    }

    std::string_view At(StringIndex interned) const { return interned_[interned]; }

    StringIndex AddReplaceable(std::string_view text) {
        replaceable_.emplace_back(UpToNul(text));
        return static_cast<StringIndex>(replaceable_.size() - 1);
    }
    void Replace(StringIndex replaceable, std::string_view text) {
        replaceable_[replaceable] = UpToNul(text);
    }
    void Append(StringIndex replaceable, std::string_view text) {
        replaceable_[replaceable] += UpToNul(text);
    }
    std::string_view ReplaceableAt(StringIndex replaceable) const { return replaceable_[replaceable]; }

  private:
    StringArena arena_;
    /// Number 0 is the empty string.
    std::vector<std::string_view, platform::FullUseAllocator<std::string_view>> interned_;
    std::array<StringIndex, 8> recent_{};
    std::size_t recentCount_ = 0;  ///< Counts on; the remainder is the place of the next one.
    std::size_t expectedStrings_ = 0;
    std::deque<std::string> replaceable_;
};

}  // namespace ventrix::xml
