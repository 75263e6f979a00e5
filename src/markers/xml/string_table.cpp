#include "markers/xml/string_table.h"

#include <algorithm>

namespace ventrix::xml {
namespace {

constexpr std::size_t kLargestBlock = std::size_t{8} * 1024 * 1024;

}  // namespace

void StringArena::Expect(std::size_t size) {
    nextBlock_ = std::clamp(size, nextBlock_, kLargestBlock);
}

char* StringArena::Take(std::size_t size) {
    if (size > left_) {
        left_ = std::max(size, nextBlock_);
        nextBlock_ = std::min(2 * nextBlock_, kLargestBlock);
        blocks_.emplace_back(static_cast<char*>(platform::TakeMemory(left_)));
        free_ = blocks_.back().get();
    }
    char* const place = free_;
    free_ += size;
    left_ -= size;
    return place;
}

std::string_view StringArena::Add(std::string_view text) {
    char* const place = Take(text.size());
    std::ranges::copy(text, place);
    return {place, text.size()};
}

char* StringArena::AddTerminated(std::string_view text) {
    char* const place = Take(text.size() + 1);
    std::ranges::copy(text, place);
    place[text.size()] = '\0';
    return place;
}

void* StringArena::TakeAligned(std::size_t size) {
    constexpr std::size_t kSpare = alignof(void*) - 1;
    void* place = Take(size + kSpare);
    std::size_t room = size + kSpare;
    return std::align(alignof(void*), size, place, room);
}

StringIndex StringTable::Add(std::string_view text) {
    if (interned_.size() == interned_.capacity()) {
        // Growing in many small steps would copy the table again and again.
        interned_.reserve(std::max(2 * interned_.size(), expectedStrings_));
    }
    interned_.push_back(arena_.Add(UpToNul(text)));
    return static_cast<StringIndex>(interned_.size() - 1);
}

StringIndex StringTable::Intern(std::string_view text) {
    const auto known =
        std::ranges::find_if(recent_, [&](StringIndex index) { return interned_[index] == text; });
    if (known != recent_.end()) {
        return *known;
    }
    const StringIndex index = Add(text);
    recent_[recentCount_++ % recent_.size()] = index;
    return index;
}

}  // namespace ventrix::xml
