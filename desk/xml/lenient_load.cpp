#include "desk/xml/lenient_load.h"

#include <fcntl.h>
#include <libxml/SAX2.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

#include "desk/xml/reference_path.h"
#include "platform/drives.h"

namespace ventrix::desk {
namespace {

struct Faults {
    std::string first;
    std::vector<std::string> undeclared;
};

std::string OneLine(const char* message) {
    std::string text = message == nullptr ? "unknown fault" : message;
    while (!text.empty() && (text.back() == '\n' || text.back() == '\r')) {
        text.pop_back();
    }
    for (char& c : text) {
        if (c == '\n' || c == '\r') {
            c = ' ';
        }
    }
    return text;
}

bool IsUndeclaredEntity(const xmlError& error) {
    return error.code == XML_ERR_UNDECLARED_ENTITY || error.code == XML_WAR_UNDECLARED_ENTITY;
}

void CollectFault(void* context, xmlErrorPtr error) {
    auto* parser = static_cast<xmlParserCtxt*>(context);
    auto& faults = *static_cast<Faults*>(parser->_private);
    const std::string text = "line " + std::to_string(error->line) + ": " + OneLine(error->message);
    if (IsUndeclaredEntity(*error)) {
        faults.undeclared.push_back(text);
    } else if (error->level == XML_ERR_FATAL && faults.first.empty()) {
        faults.first = text;
    }
}

/// Reasons that belong to no parser, such as a refused download, would go to standard error.
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
        : descriptor_(open(path.utf8.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK)) {}
    ~OpenFile() {
        if (descriptor_ >= 0) {
            close(descriptor_);
        }
    }
    OpenFile(const OpenFile&) = delete;
    OpenFile& operator=(const OpenFile&) = delete;
    int descriptor() const { return descriptor_; }

  private:
    int descriptor_;
};

/// An absolute path in either notation, which may hold blanks, is no URI; the parser would not take it.
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
    Faults faults;
    parser->_private = &faults;
    parser->sax->serror = CollectFault;
    parser->sax->resolveEntity = ResolveLocally;
    lseek(file.descriptor(), 0, SEEK_SET);
    result.document.reset(
        xmlCtxtReadFd(parser.get(), file.descriptor(), FileUri(path).c_str(), nullptr, options));
    if (result.document != nullptr && xmlDocGetRootElement(result.document.get()) == nullptr) {
        result.document.reset();
    }
    result.reason = faults.first;
    if (result.document == nullptr && result.reason.empty()) {
        result.reason = "the file holds no XML element";
    }
    result.wellFormed = result.reason.empty();
    result.undeclaredEntities = std::move(faults.undeclared);
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
    if (file.descriptor() < 0 || fstat(file.descriptor(), &status) != 0) {
        result.reason = std::strerror(errno);
        return result;
    }
    if (!S_ISREG(status.st_mode)) {
        result.reason = S_ISDIR(status.st_mode) ? "a folder, not a file" : "no regular file";
        return result;
    }
    result.identity = {status.st_dev, status.st_ino};
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
