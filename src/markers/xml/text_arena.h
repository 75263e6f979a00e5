// Memory for texts that live as long as their owner: taken from large blocks, given back all at once.
#pragma once

#include <algorithm>
#include <memory>
#include <string_view>
#include <vector>

#include "platform/memory.h"

namespace ventrix::xml {

class TextArena {
  public:
    /// Tells that so many bytes may come.
    void Expect(std::size_t size) { nextBlock_ = std::clamp(size, nextBlock_, kLargestBlock); }

    /// A copy of the text that stays where it is.
    std::string_view Keep(std::string_view text) {
        if (text.size() > left_) {
            left_ = std::max(text.size(), nextBlock_);
            nextBlock_ = std::min(2 * nextBlock_, kLargestBlock);
            blocks_.emplace_back(static_cast<char*>(platform::TakeMemory(left_)));
            free_ = blocks_.back().get();
        }
        char* place = free_;
        std::copy(text.begin(), text.end(), place);
        free_ += text.size();
        left_ -= text.size();
        return {place, text.size()};
    }

  private:
    static constexpr std::size_t kFirstBlock = std::size_t{16} * 1024;
    static constexpr std::size_t kLargestBlock = std::size_t{8} * 1024 * 1024;

    struct Release {
        void operator()(char* block) const { platform::ReleaseMemory(block); }
    };

    std::vector<std::unique_ptr<char, Release>> blocks_;
    char* free_ = nullptr;
    std::size_t left_ = 0;
    std::size_t nextBlock_ = kFirstBlock;
};

}  // namespace ventrix::xml
