// Preserved elements that only the transformation can process. A preserved element is text while the
// transformation runs: it has neither an id that references could find, nor the text that comes from a
// reference, nor what the transformation generates for it, as a footnote or an image.
#pragma once

#include <functional>
#include <set>
#include <string>
#include <string_view>
#include <utility>

#include "desk/toolkit/no_prose.h"

namespace ventrix::desk {

using IdSet = std::set<std::string, std::less<>>;

/// Ids without the files and topics that contain them.
struct ReferencedIds {
    IdSet ids;
    std::set<std::pair<std::string, std::string>> ranges;  ///< The first and the last id of each.
};

/// Adds each id that a reference in the document, or in its marker text, names.
void AddReferencedIds(std::string_view document, ReferencedIds& referenced);

/// What decides whether an element is left to the transformation.
struct LeavingRules {
    ReferencedIds referenced;
    Vocabulary vocabulary = Vocabulary::kOther;
};

/// Receives an element that is left, as XML, its position in the document, and the reason, for a message.
using LeftElementSink =
    std::function<void(std::string_view element, std::size_t position, std::string_view why)>;

/// The document with the preserved elements put back that are left to the transformation. The CDATA sections
/// of others become text.
std::string WithLeftElements(std::string_view document, const LeavingRules& rules,
                             const LeftElementSink& sink);

}  // namespace ventrix::desk
