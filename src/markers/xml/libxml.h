// What the sources that use libxml2 share: its strings, an owner for its documents, and silence.
#pragma once

#include <libxml/globals.h>
#include <libxml/tree.h>
#include <libxml/xmlerror.h>

#include <memory>
#include <string>
#include <string_view>

namespace ventrix::xml {

struct FreeXmlDoc {
    void operator()(xmlDoc* document) const { xmlFreeDoc(document); }
};
using XmlDocument = std::unique_ptr<xmlDoc, FreeXmlDoc>;

inline const xmlChar* Chars(const std::string& text) {
    return reinterpret_cast<const xmlChar*>(text.c_str());
}

/// Empty for null.
inline std::string_view View(const xmlChar* text) {
    return text == nullptr ? std::string_view() : std::string_view(reinterpret_cast<const char*>(text));
}

/// Errors outside of a parser, such as a failed conversion, go to handlers of the whole thread, which print
/// them. While an object of this class exists, they are ignored; its destructor restores the earlier
/// handlers.
class QuietErrors {
  public:
    QuietErrors()
        : generic_(xmlGenericError),
          genericContext_(xmlGenericErrorContext),
          structured_(xmlStructuredError),
          structuredContext_(xmlStructuredErrorContext) {
        xmlSetGenericErrorFunc(nullptr, IgnoreMessage);
        xmlSetStructuredErrorFunc(nullptr, IgnoreError);
    }
    ~QuietErrors() {
        xmlSetGenericErrorFunc(genericContext_, generic_);
        xmlSetStructuredErrorFunc(structuredContext_, structured_);
    }
    QuietErrors(const QuietErrors&) = delete;
    QuietErrors& operator=(const QuietErrors&) = delete;

  private:
    static void IgnoreMessage(void*, const char*, ...) {}
    static void IgnoreError(void*, xmlError*) {}

    xmlGenericErrorFunc generic_;
    void* genericContext_;
    xmlStructuredErrorFunc structured_;
    void* structuredContext_;
};

}  // namespace ventrix::xml
