// Changes the DOCTYPE in the bytes of an XML document without parsing the document, so that undeclared
// entities, character references, quotes and line ends stay as they are.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace ventrix::desk {

/// The document with the system id of its DOCTYPE replaced by this one in double quotes. The public id, the
/// internal subset and every other byte are kept. A DOCTYPE without a system id gets one; a document without
/// a DOCTYPE gets one on a line of its own before the root. UTF-16 is converted to UTF-8 and declared as
/// such, because the caller searches the result for the id as an ASCII string. Nothing if there is no root
/// element.
std::optional<std::string> WithSystemId(std::string_view document, std::string_view systemId);

/// Whether the document has a DOCTYPE. Its encoding contains ASCII.
bool HasDoctype(std::string_view document);

/// The document without the DOCTYPE that WithSystemId has added to it.
std::string WithoutAddedDoctype(std::string_view document);

}  // namespace ventrix::desk
