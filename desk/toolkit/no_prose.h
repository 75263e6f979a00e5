// Elements whose text is not prose: toolkits and stylesheets make file names and shapes of it, sort by it,
// compare it or compute with it. Marker text in them breaks that, or reaches a reader through an attribute.
#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <string_view>

namespace ventrix::desk {

/// Whose elements a package contains.
enum class Vocabulary {
    kDita,
    kDocBook,
    kDocBookGlossary,  ///< DocBook for a stylesheet that sorts a glossary or links terms to it.
    kOther
};

/// Receives a preserved element of which only the text is left, as XML, and its position in the document.
using ElementSink = std::function<void(std::string_view element, std::size_t position)>;

/// The document without marker text in such elements. Works on the bytes of any encoding that contains ASCII;
/// everything else stays as it is.
std::string WithoutMarkersOutsideProse(
    const std::string& document, Vocabulary vocabulary,
    const ElementSink& sink = [](std::string_view, std::size_t) {});

}  // namespace ventrix::desk
