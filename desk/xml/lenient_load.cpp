#include "desk/xml/lenient_load.h"

#include <fcntl.h>
#include <libxml/SAX2.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>

#include "desk/xml/reference_path.h"
#include "platform/drives.h"

namespace ventrix::desk {
namespace {

/// The parse errors that count; libxml2 recovers from the others.
struct Errors {
    std::string first;
    std::vector<std::string> undeclared;
};

/// The parser ends its messages with a line break, and a quoted name may contain more.
std::string MessageLine(const char* message) {
    std::string line = message == nullptr ? "unknown error" : message;
    line.resize(line.find_last_not_of("\r\n") + 1);
    std::ranges::replace_if(
        line, [](char c) { return c == '\n' || c == '\r'; }, ' ');
    return line;
}

bool IsUndeclaredEntity(const xmlError& error) {
    return error.code == XML_ERR_UNDECLARED_ENTITY || error.code == XML_WAR_UNDECLARED_ENTITY;
}

void CollectError(void* context, xmlErrorPtr error) {
    auto* parser = static_cast<xmlParserCtxt*>(context);
    auto& errors = *static_cast<Errors*>(parser->_private);
    const std::string text = "line " + std::to_string(error->line) + ": " + MessageLine(error->message);
    if (IsUndeclaredEntity(*error)) {
        errors.undeclared.push_back(text);
    } else if (error->level == XML_ERR_FATAL && errors.first.empty()) {
        errors.first = text;
    }
}

/// Discards errors that belong to no parser context, such as a refused download, which libxml2 would print to
/// standard error.
class QuietScope {
  public:
    QuietScope() : function_(xmlStructuredError), context_(xmlStructuredErrorContext) {
        xmlSetStructuredErrorFunc(nullptr, [](void*, xmlErrorPtr) {});
    }
    ~QuietScope() { xmlSetStructuredErrorFunc(context_, function_); }
    QuietScope(const QuietScope&) = delete;
    QuietScope& operator=(const QuietScope&) = delete;

  private:
    xmlStructuredErrorFunc function_;
    void* context_;
};

class OpenFile {
  public:
    explicit OpenFile(const NativePath& path)
        // Opening a pipe that nobody writes to would block.
        : descriptor_(open(path.utf8.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK)) {}
    ~OpenFile() {
        if (descriptor_ >= 0) {
            close(descriptor_);
        }
    }
    OpenFile(const OpenFile&) = delete;
    OpenFile& operator=(const OpenFile&) = delete;
    int Descriptor() const { return descriptor_; }

  private:
    int descriptor_;
};

/// Turns an absolute path in either notation into a URI. A system id should be one already, but people write
/// plain paths, and the parser would not open one that contains spaces.
xmlParserInput* ResolveLocally(void* parser, const xmlChar* publicId, const xmlChar* systemId) {
    const std::string_view id = View(systemId);
    const bool absolute = id.starts_with('/') || platform::IsAbsoluteSystemPath(id);
    const NativePath path = absolute ? TargetOf(id, {"/"}).path : NativePath{};
    return xmlSAX2ResolveEntity(parser, publicId, path.Empty() ? systemId : Xml(FileUri(path).c_str()));
}

void Parse(const OpenFile& file, const NativePath& path, int extraOptions, LenientDocument& result) {
    const int options =
        XML_PARSE_NONET | XML_PARSE_RECOVER | XML_PARSE_NOERROR | XML_PARSE_NOWARNING | extraOptions;
    const QuietScope quiet;
    const XmlParser parser(xmlNewParserCtxt());
    Errors errors;
    parser->_private = &errors;
    parser->sax->serror = CollectError;
    parser->sax->resolveEntity = ResolveLocally;
    lseek(file.Descriptor(), 0, SEEK_SET);
    result.document.reset(
        xmlCtxtReadFd(parser.get(), file.Descriptor(), FileUri(path).c_str(), nullptr, options));
    if (result.document != nullptr && xmlDocGetRootElement(result.document.get()) == nullptr) {
        result.document.reset();
    }
    result.reason = errors.first;
    if (result.document == nullptr && result.reason.empty()) {
        result.reason = "the file contains no XML element";
    }
    result.wellFormed = result.reason.empty();
    result.undeclaredEntities = std::move(errors.undeclared);
}

bool NamesExternalDtd(const xmlDoc* document) {
    const xmlDtd* dtd = document == nullptr ? nullptr : document->intSubset;
    return dtd != nullptr && (dtd->ExternalID != nullptr || dtd->SystemID != nullptr);
}

}  // namespace

LenientDocument LoadLeniently(const NativePath& path, LoadFor purpose) {
    LenientDocument result;
    const OpenFile file(path);
    struct stat status = {};
    if (file.Descriptor() < 0 || fstat(file.Descriptor(), &status) != 0) {
        result.reason = std::strerror(errno);
        return result;
    }
    if (!S_ISREG(status.st_mode)) {
        result.reason = S_ISDIR(status.st_mode) ? "it is a folder, not a file" : "it is not a regular file";
        return result;
    }
    result.identity = {status.st_dev, status.st_ino};
    // A DTD is loaded at once only for a stylesheet. For the other purposes the document is parsed without
    // it, and a second time with it if that left entities undeclared and the document names a DTD: most
    // documents then need no DTD at all.
    const int expansion = purpose == LoadFor::kListing ? 0 : XML_PARSE_NOENT | XML_PARSE_NOCDATA;
    const int dtd = XML_PARSE_DTDLOAD | XML_PARSE_DTDATTR;
    Parse(file, path, purpose == LoadFor::kStylesheet ? expansion | dtd : expansion, result);
    if (purpose != LoadFor::kStylesheet && !result.undeclaredEntities.empty() &&
        NamesExternalDtd(result.document.get())) {
        Parse(file, path, expansion | XML_PARSE_DTDLOAD, result);
    }
    return result;
}

}  // namespace ventrix::desk
