// The DOCTYPE in the text of an XML document, read and changed without parsing the document: entities that
// nobody declares, character references, quotes and line ends stay as they are. Texts are the bytes of a
// file.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace ventrix::desk {

/// The text with the DOCTYPE's system id replaced, in double quotes. The public id, the internal subset and
/// every other byte stay. A DOCTYPE without a system id gets one; a document without a DOCTYPE gets one with
/// the root's name on a line of its own before the root. A text in UTF-16 comes back in UTF-8, and says so,
/// since an id that is written later in ASCII must be found in it. Nothing if the text has no root element.
std::optional<std::string> WithSystemId(std::string_view text, std::string_view systemId);

}  // namespace ventrix::desk
