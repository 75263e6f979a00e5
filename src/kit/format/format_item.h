// One conversion ("%" item) of a format: reading it from the format, and printing it with its argument.
#pragma once

#include <cstdarg>
#include <cstdint>

namespace ventrix {

/// A copied va_list. A va_list may be an array type, so only a record around it can be passed by reference on
/// every platform.
struct FormatArguments {
    std::va_list list;
};

/// One conversion of a format.
struct FormatItem {
    char text[128];  ///< The conversion as printf takes it, terminated; each "*" is replaced by its number.
    char letter;     ///< The conversion character, which is the last byte of the text.
    std::uint32_t end;  ///< The number of bytes that the conversion occupies in the format.
};

/// Reads the item at a "%". False if it is not a valid conversion or too long; its end is then the end of the
/// format.
bool ReadFormatItem(const char* format, FormatArguments& arguments, FormatItem& item);

/// Holds one printed item at a time, in the object itself or, after the first long item, on the heap.
class FormatBuffer {
  public:
    FormatBuffer() = default;
    ~FormatBuffer();
    FormatBuffer(const FormatBuffer&) = delete;
    FormatBuffer& operator=(const FormatBuffer&) = delete;

    /// Prints the item in place of the previous one. Returns its length, or -1 when memory runs out.
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
