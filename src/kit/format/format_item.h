// One "%" item of a format: read from the format, and printed with its argument into memory of its own.
#pragma once

#include <cstdarg>
#include <cstdint>

namespace ventrix {

/// A copied va_list in a record, so that it passes by reference on every platform.
struct FormatArguments {
    std::va_list list;
};

/// The item's text, terminated, with the "*" fields filled in.
struct FormatItem {
    char text[128];
    char letter;        ///< The conversion, the text's last byte.
    std::uint32_t end;  ///< Bytes of the format that the item takes.
};

/// Reads the item at a "%". False, with all that is left of the format as its end, if no conversion follows
/// or the item is longer than it can be.
bool ReadFormatItem(const char* format, FormatArguments& arguments, FormatItem& item);

/// Memory for printed items: on the stack, and on the heap from the first that needs more.
class FormatBuffer {
  public:
    FormatBuffer() = default;
    ~FormatBuffer();
    FormatBuffer(const FormatBuffer&) = delete;
    FormatBuffer& operator=(const FormatBuffer&) = delete;

    /// Prints the item. The bytes without the terminator, or -1 if memory runs out.
    int Print(const FormatItem& item, FormatArguments& arguments);

    const char* Text() const { return heap_ != nullptr ? heap_ : stack_; }

  private:
    template <class Value>
    int PrintValue(const FormatItem& item, Value value);
    int PrintInteger(const FormatItem& item, FormatArguments& arguments);
    int PrintUnsigned(const FormatItem& item, FormatArguments& arguments);
    int PrintFloating(const FormatItem& item, FormatArguments& arguments);
    int PrintCharacter(const FormatItem& item, const char* character);
    bool Grow(std::uint32_t size);
    char* Buffer() { return heap_ != nullptr ? heap_ : stack_; }

    char stack_[256];
    char* heap_ = nullptr;
    std::uint32_t size_ = sizeof stack_;
};

}  // namespace ventrix
