// Where the references of a page lead: to other pages, or to files that are copied. Strings are UTF-8.
#pragma once

#include <functional>
#include <set>

#include "desk/toolkit/link_check.h"
#include "desk/toolkit/link_text.h"
#include "desk/toolkit/page_layout.h"

namespace ventrix::desk {

/// What references need of the publication.
struct ReferenceTargets {
    const PageLayout& layout;
    DitaLibrary& library;
    LinkTexts& texts;
    LinkCheck& check;                            ///< Receives each link to a page.
    const std::set<NativePath>& excludedTopics;  ///< The filter excludes all topic references to them.
    RemarkSink remarks;
    std::function<void(const NativePath& topic)> needPage;  ///< Assigns a page to a topic, if it has none.
    std::function<void(const NativePath& source, const NativePath& target)> copy;
};

/// Turns absolute references to local files into relative ones of the topic's page, scales images, and gives
/// links without a text one in the attributes "page-title" and "page-title-type" (LinkText). What cannot be
/// directed is left out and reported as a remark.
void DirectReferences(xmlDoc* document, const NativePath& topic, const ReferenceTargets& targets);

}  // namespace ventrix::desk
