// Lets libxml2 read external DTDs and entities from local files only.
#pragma once

#include <libxml/parser.h>

namespace ventrix::xml {

/// Opens a local file for a SAX handler's resolveEntity; null for anything else. `systemId` may be a path in
/// native or system notation, a file URL, or relative to the document's folder.
xmlParserInput* OpenExternalSubset(void* context, const xmlChar* publicId, const xmlChar* systemId);

/// While an object of this class exists, libxml2 opens other external entities by the same rule.
class LocalEntitiesOnly {
  public:
    LocalEntitiesOnly();
    ~LocalEntitiesOnly();
    LocalEntitiesOnly(const LocalEntitiesOnly&) = delete;
    LocalEntitiesOnly& operator=(const LocalEntitiesOnly&) = delete;

  private:
    xmlExternalEntityLoader previous_;
};

}  // namespace ventrix::xml
