// The table of contents of a publication: its entries in reading order, with the pages that they lead to.
// Strings are UTF-8.
#pragma once

#include <cstddef>
#include <map>
#include <string>
#include <vector>

#include "desk/toolkit/dita_library.h"
#include "desk/toolkit/dita_map.h"
#include "desk/toolkit/page_layout.h"

namespace ventrix::desk {

struct ContentsEntry {
    std::string title;    ///< May contain marker text.
    std::string label;    ///< The same without marker text, and without line breaks.
    NativePath page;      ///< The output file that it leads to; empty for a heading or a web address.
    std::string address;  ///< The web address, or what follows the page in a link: "#id" or nothing.
    std::size_t parent = 0;
    std::vector<std::size_t> children = {};
};

struct Contents {
    std::string language;
    std::vector<ContentsEntry> entries;        ///< The first stands for the start page. Parents come first.
    std::map<NativePath, std::size_t> byPage;  ///< The first entry of each page.
    std::vector<std::size_t> reading;          ///< These entries, in order; the start page first.
};

/// The contents of a publication without a map: its start page alone.
Contents ContentsOfTopic(const NativePath& startPage, const std::string& title);

/// The contents of a map. A topic that cannot be read or is left out gets no entry, nor does one that the map
/// hides; its children take its place.
Contents ContentsOfMap(const Navigation& navigation, const PageLayout& layout, const NativePath& startPage,
                       const std::string& title, DitaLibrary& library);

/// The entry's link in a page; empty for a heading.
std::string LinkTo(const ContentsEntry& entry, const NativePath& fromPage);

/// The document from which the stylesheet makes the start page of a map:
/// `<contents title="..." language="..."><item href="..." title="..."><item .../></item></contents>`.
XmlDocument ContentsDocument(const Contents& contents);

/// The text as a reader sees it: without marker text, each run of whitespace being one space.
std::string PlainText(std::string text);

}  // namespace ventrix::desk
