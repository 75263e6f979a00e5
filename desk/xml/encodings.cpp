#include "desk/xml/encodings.h"

#include <libxml/encoding.h>
#include <libxml/tree.h>

#include <memory>

namespace ventrix::desk {
namespace {

struct FreeHandler {
    void operator()(xmlBuffer* buffer) const { xmlBufferFree(buffer); }
    void operator()(xmlCharEncodingHandler* handler) const { xmlCharEncCloseFunc(handler); }
};

using Buffer = std::unique_ptr<xmlBuffer, FreeHandler>;
using Convert = int (*)(xmlCharEncodingHandler*, xmlBuffer* out, xmlBuffer* in);

/// The library converts a large text piece by piece.
std::optional<std::string> Converted(std::string_view text, const char* encoding, Convert convert) {
    const std::unique_ptr<xmlCharEncodingHandler, FreeHandler> handler(xmlFindCharEncodingHandler(encoding));
    if (handler == nullptr) {
        return std::nullopt;
    }
    const Buffer in(xmlBufferCreate());
    const Buffer out(xmlBufferCreate());
    xmlBufferAdd(in.get(), reinterpret_cast<const xmlChar*>(text.data()), static_cast<int>(text.size()));
    while (xmlBufferLength(in.get()) > 0 && convert(handler.get(), out.get(), in.get()) > 0) {
    }
    if (xmlBufferLength(in.get()) > 0) {
        return std::nullopt;
    }
    return std::string(reinterpret_cast<const char*>(xmlBufferContent(out.get())),
                       static_cast<std::size_t>(xmlBufferLength(out.get())));
}

}  // namespace

const char* Utf16Encoding(std::string_view text) {
    return text.starts_with("\xFF\xFE") ? "UTF-16LE" : text.starts_with("\xFE\xFF") ? "UTF-16BE" : nullptr;
}

std::optional<std::string> ToUtf8(std::string_view text, const char* encoding) {
    return Converted(text, encoding, xmlCharEncInFunc);
}

std::optional<std::string> FromUtf8(std::string_view text, const char* encoding) {
    return Converted(text, encoding, xmlCharEncOutFunc);
}

}  // namespace ventrix::desk
