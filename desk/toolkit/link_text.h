// What links without a text of their own say. Strings are UTF-8.
#pragma once

#include <map>
#include <optional>
#include <string>
#include <unordered_map>

#include "desk/toolkit/dita_library.h"

namespace ventrix::desk {

struct LinkText {
    std::string type;  ///< "figure", "table" or "footnote" if the text is its number; else empty.
    std::string text;  ///< Empty if there is nothing to name the target by.
};

/// Finds the texts for the elements of a publication. The library and the keys must outlive it.
class LinkTexts {
  public:
    LinkTexts(DitaLibrary& library, const DitaKeys& keys) : library_(library), keys_(keys) {}

    /// The text for an absolute reference: the title of a topic or section, the term of a definition, or a
    /// number. Nothing if the target does not exist.
    std::optional<LinkText> For(const std::string& absoluteReference);

  private:
    using ByElement = std::unordered_map<std::string, LinkText>;  ///< By "topic/element".
    const ByElement& TextsIn(const NativePath& path);

    DitaLibrary& library_;
    const DitaKeys& keys_;
    std::map<NativePath, ByElement> documents_;
};

}  // namespace ventrix::desk
