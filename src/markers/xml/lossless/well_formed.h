// Has libxml2 judge a text: whether it is a document, and what its DTD declares.
#pragma once

#include <string>

#include "markers/xml/lossless/document_store.h"

namespace ventrix::xml {

struct Judgement {
    std::string reason;  ///< One line; empty for a well-formed document.
    XmlDocument dtd;     ///< The declarations, without content; null if there are none or the document is not
                         ///< well-formed.
};

/// `text` is UTF-8; `transcoded` tells that its XML declaration names another encoding. `nativePath` is where
/// relative system ids start from; it may be empty. The external DTD is read only with `resolveExternals`,
/// and only from local files.
Judgement JudgeDocument(const std::string& text, bool transcoded, const std::string& nativePath,
                        bool resolveExternals);

}  // namespace ventrix::xml
