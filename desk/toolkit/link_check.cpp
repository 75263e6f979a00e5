#include "desk/toolkit/link_check.h"

#include <string_view>

namespace ventrix::desk {

void LinkCheck::AddPage(const NativePath& page, const std::string& content) {
    constexpr std::string_view kStart = " id=\"";
    std::unordered_set<std::string>& ids = ids_[page];
    for (std::size_t at = content.find(kStart); at != std::string::npos; at = content.find(kStart, at)) {
        at += kStart.size();
        ids.insert(content.substr(at, content.find('"', at) - at));
    }
}

std::vector<DeadLink> LinkCheck::DeadLinks(const std::set<NativePath>& written) const {
    std::vector<DeadLink> dead;
    for (const PageLink& link : links_) {
        const std::string name = FromFilesystem(ToFilesystem(link.page).filename()).utf8;
        const std::string start = "the link \"" + link.reference.value + "\" leads to ";
        const auto ids = ids_.find(link.page);
        if (!written.contains(link.page)) {
            dead.push_back({link, start + name + ", which is not written"});
        } else if (!link.anchor.empty() && (ids == ids_.end() || !ids->second.contains(link.anchor))) {
            dead.push_back({link, start + "nothing in " + name});
        }
    }
    return dead;
}

}  // namespace ventrix::desk
