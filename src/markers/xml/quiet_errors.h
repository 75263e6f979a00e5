// libxml2 reports what belongs to no parser, such as a conversion that fails, to handlers of the whole
// thread, which print it. While one of these lives they say nothing; the handlers before are back afterwards.
#pragma once

#include <libxml/globals.h>
#include <libxml/xmlerror.h>

namespace ventrix::xml {

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
