// Keeps libxml2 and libxslt off the network for a scope, and takes their messages. Scopes may nest. The
// settings of libxml2 are the process's, so the former ones come back at the end.
#pragma once

#include <libxml/parser.h>
#include <libxml/xmlerror.h>

#include "desk/xml/stylesheet.h"

namespace ventrix::desk {

class NetworkGuard {
  public:
    explicit NetworkGuard(const MessageSink& messages);
    ~NetworkGuard();
    NetworkGuard(const NetworkGuard&) = delete;
    NetworkGuard& operator=(const NetworkGuard&) = delete;

    /// Hands a piece of a generic message on, whole lines at a time.
    void Append(const char* piece);

  private:
    void Emit(const std::string& line);

    const MessageSink& messages_;
    std::string line_;
    std::string place_;  ///< libxslt tells the place of an error in a line before the message.
    xmlExternalEntityLoader loader_;
    xmlStructuredErrorFunc structured_;
    void* structuredContext_;
    xmlGenericErrorFunc generic_;
    void* genericContext_;
    xmlGenericErrorFunc xsltGeneric_;
    void* xsltContext_;
};

}  // namespace ventrix::desk
