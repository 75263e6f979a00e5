#include "markers/xml/source_encoding.h"

#include <libxml/encoding.h>
#include <libxml/tree.h>

#include <algorithm>
#include <memory>

#include "markers/xml/libxml.h"

namespace ventrix::xml {
namespace {

using namespace std::string_view_literals;

struct CloseHandler {
    void operator()(xmlCharEncodingHandler* handler) const { xmlCharEncCloseFunc(handler); }
};
using Handler = std::unique_ptr<xmlCharEncodingHandler, CloseHandler>;

struct FreeBuffer {
    void operator()(xmlBuffer* buffer) const { xmlBufferFree(buffer); }
};
using Buffer = std::unique_ptr<xmlBuffer, FreeBuffer>;

Handler FindHandler(const std::string& encoding) {
    return Handler(xmlFindCharEncodingHandler(encoding.c_str()));
}

bool IsEncodingNameByte(char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '-' ||
           c == '_' || c == '.';
}

/// The encoding that the XML declaration names; empty without one, and for a malformed name, which the parser
/// rejects later.
std::string DeclaredEncoding(std::string_view bytes) {
    const std::string_view declaration = bytes.substr(0, bytes.find("?>"));
    const std::size_t word =
        declaration.starts_with("<?xml") ? declaration.find("encoding") : std::string_view::npos;
    const std::size_t open = word == std::string_view::npos ? word : declaration.find_first_of("\"'", word);
    if (open == std::string_view::npos) {
        return {};
    }
    const std::string_view name =
        declaration.substr(open + 1, declaration.find(declaration[open], open + 1) - open - 1);
    return std::ranges::all_of(name, IsEncodingNameByte) ? std::string(name) : std::string();
}

std::string EncodingOf(std::string_view bytes) {
    if (bytes.starts_with("\xFF\xFE"sv) || bytes.starts_with("<\0?\0"sv)) {
        return "UTF-16LE";
    }
    if (bytes.starts_with("\xFE\xFF"sv) || bytes.starts_with("\0<\0?"sv)) {
        return "UTF-16BE";
    }
    if (bytes.starts_with("\xEF\xBB\xBF"sv)) {
        return {};
    }
    std::string declared = DeclaredEncoding(bytes);
    std::ranges::transform(declared, declared.begin(),
                           [](char c) { return c >= 'a' && c <= 'z' ? static_cast<char>(c - 32) : c; });
    const bool isUtf8 = declared.empty() || declared == "UTF-8" || declared == "UTF8";
    return isUtf8 ? std::string() : declared;
}

using Convert = int(xmlCharEncodingHandler*, xmlBuffer*, xmlBuffer*);

/// The converters take as much as fits at a time and may stop early; no progress is a failure.
template <typename Target>
bool ConvertAll(Convert* convert, const std::string& encoding, std::string_view from, Target& to) {
    const QuietErrors quiet;
    const Handler handler = FindHandler(encoding);
    const Buffer in(xmlBufferCreate());
    const Buffer out(xmlBufferCreate());
    if (!handler || !in || !out) {
        return false;
    }
    xmlBufferSetAllocationScheme(in.get(), XML_BUFFER_ALLOC_DOUBLEIT);
    xmlBufferSetAllocationScheme(out.get(), XML_BUFFER_ALLOC_DOUBLEIT);
    xmlBufferAdd(in.get(), reinterpret_cast<const xmlChar*>(from.data()), static_cast<int>(from.size()));
    while (xmlBufferLength(in.get()) > 0) {
        const int before = xmlBufferLength(in.get());
        convert(handler.get(), out.get(), in.get());
        if (xmlBufferLength(in.get()) == before) {
            return false;
        }
    }
    const auto* converted = reinterpret_cast<const char*>(xmlBufferContent(out.get()));
    to.assign(converted, converted + xmlBufferLength(out.get()));
    return true;
}

/// True for the converters of ICU, which drop the bytes that are not valid in the encoding and report
/// nothing.
bool DropsInvalidBytes(const xmlCharEncodingHandler& handler) {
#ifdef LIBXML_ICONV_ENABLED
    return handler.input == nullptr && handler.iconv_in == nullptr;
#else
    return handler.input == nullptr;
#endif
}

bool Decode(const std::string& encoding, std::string_view bytes, platform::Bytes& text) {
    if (!ConvertAll(&xmlCharEncInFunc, encoding, bytes, text)) {
        return false;
    }
    std::string back;
    return !DropsInvalidBytes(*FindHandler(encoding)) ||
           (ConvertAll(&xmlCharEncOutFunc, encoding, {text.data(), text.size()}, back) && back == bytes);
}

}  // namespace

DecodedSource DecodeSource(platform::Bytes bytes) {
    DecodedSource source;
    const std::string_view text(bytes.data(), bytes.size());
    source.encoding = EncodingOf(text);
    if (source.encoding.empty()) {
        source.text = std::move(bytes);
    } else if (!FindHandler(source.encoding) || !CanEncode("<>", source.encoding)) {
        // UTF-7 writes markup with an escape that its converter does not end.
        source.problem = "Unsupported encoding " + source.encoding;
    } else if (!Decode(source.encoding, text, source.text)) {
        source.problem = "The bytes are not valid in the encoding " + source.encoding;
    }
    return source;
}

// The converter reports no character that it replaced by a reference, so the bytes are converted back.
bool CanEncode(std::string_view text, const std::string& encoding) {
    std::string bytes;
    std::string back;
    return ConvertAll(&xmlCharEncOutFunc, encoding, text, bytes) &&
           ConvertAll(&xmlCharEncInFunc, encoding, bytes, back) && back == text;
}

bool EncodeSource(const std::string& text, const std::string& encoding, std::string& bytes) {
    return ConvertAll(&xmlCharEncOutFunc, encoding, text, bytes);
}

}  // namespace ventrix::xml
