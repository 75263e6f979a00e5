// Whether the links between the pages of a publication lead somewhere. Strings are UTF-8.
#pragma once

#include <map>
#include <set>
#include <string>
#include <unordered_set>
#include <vector>

#include "desk/toolkit/dita_document.h"

namespace ventrix::desk {

/// A link as it is made.
struct PageLink {
    NativePath topic;  ///< Contains the link.
    int line = 0;
    NativePath page;     ///< Its target.
    std::string anchor;  ///< The id in the target; empty for the page itself.
    DitaTarget target;   ///< Of which the page is made.
    Subject reference;   ///< As the topic writes it.
};

struct DeadLink {
    PageLink link;
    std::string problem;
};

class LinkCheck {
  public:
    void Add(PageLink link) { links_.push_back(std::move(link)); }

    /// Notes the ids in the text of a page.
    void AddPage(const NativePath& page, const std::string& content);

    /// The links whose target does not exist, in the order in which they were added.
    std::vector<DeadLink> DeadLinks(const std::set<NativePath>& written) const;

  private:
    std::vector<PageLink> links_;
    std::map<NativePath, std::unordered_set<std::string>> ids_;
};

}  // namespace ventrix::desk
