// Has libxml2 judge a text: whether it is a document, and what its DTD declares.
#pragma once

#include <string>

#include "markers/xml/document_store.h"

namespace ventrix::xml {

struct Judgement {
    std::string reason;  ///< One line; empty for a well-formed document.
    XmlDocument dtd;     ///< The declarations, without content; null if there are none or the document is not
                         ///< well-formed.
};

/// `text` is UTF-8, whatever its XML declaration says, with a NUL behind it. `nativePath` is where relative
/// system ids start from; it may be empty. The external DTD is read only with `resolveExternals`, and only
/// from local files. A reference to an entity that nothing declares gives a reason with the words "undefined
/// entity".
Judgement JudgeDocument(std::string_view text, const std::string& nativePath, bool resolveExternals);

}  // namespace ventrix::xml
