#include "markers/xml/entity_sizes.h"

#include <algorithm>
#include <string>
#include <string_view>

#include "markers/xml/references.h"

namespace ventrix::xml {
namespace {

/// Calls `take` for the name of each entity that the text refers to.
template <typename Take>
void EachReference(std::string_view text, Take take) {
    for (std::size_t at = 0; (at = text.find('&', at)) != std::string_view::npos; ++at) {
        const std::size_t end = text.find(';', at);
        if (end != std::string_view::npos && text[at + 1] != '#') {
            take(std::string(text.substr(at + 1, end - at - 1)));
        }
    }
}

}  // namespace

std::size_t EntitySizes::SizeOf(const xmlEntity& entity, int depth) {
    if (entity.content == nullptr || entity.etype != XML_INTERNAL_GENERAL_ENTITY) {
        return 0;
    }
    if (depth > kDeepestEntity) {
        return kExpansionLimit + 1;
    }
    if (const auto known = known_.find(&entity); known != known_.end()) {
        return known->second;
    }
    const std::string_view content(reinterpret_cast<const char*>(entity.content));
    std::size_t size = content.size();
    EachReference(content, [&](const std::string& name) {
        const xmlEntity* nested = xmlGetDocEntity(entity.doc, reinterpret_cast<const xmlChar*>(name.c_str()));
        size = std::min(size + (nested == nullptr ? 0 : SizeOf(*nested, depth + 1)), kExpansionLimit + 1);
    });
    known_[&entity] = size;
    return size;
}

}  // namespace ventrix::xml
