#include "desk/pages/tagged_elements.h"

#include <algorithm>
#include <set>
#include <string_view>

#include "desk/xml/lenient_load.h"

namespace ventrix::desk {
namespace {

constexpr std::string_view kSeparator = "QL_SEP";
constexpr std::string_view kXpathName = "data-qlxpath";
constexpr std::string_view kSourceName = "data-qlsource";

/// The parts of a tags value, each of which ends with the separator.
std::vector<std::string> Parts(std::string_view value) {
    std::vector<std::string> parts;
    for (std::size_t end = 0; (end = value.find(kSeparator)) != std::string_view::npos;) {
        parts.emplace_back(value.substr(0, end));
        value.remove_prefix(end + kSeparator.size());
    }
    return parts;
}

std::string FirstWord(const std::string& text) {
    return text.substr(0, text.find(' '));
}

/// An element that carries nothing has an empty id.
TaggedElement ReadElement(const xmlNode* node, const CarryingAttributes& names) {
    TaggedElement element;
    element.node = node;
    const std::vector<std::string> parts = Parts(Attribute(node, names.tags.c_str()));
    for (std::size_t i = 0; i + 1 < parts.size(); i += 2) {
        if (parts[i] == kXpathName) {
            element.queries.push_back(parts[i + 1]);
        } else if (parts[i] == kSourceName) {
            element.sourcePath = parts[i + 1];
        } else {
            element.attributes.emplace_back(parts[i], parts[i + 1]);
        }
    }
    if (names.tagsHaveXPath && !element.queries.empty()) {
        element.xpath = element.queries.back();
        element.queries.pop_back();
    }
    // Of several texts in one element each adds its own; the first one is where the element begins.
    if (!names.xpath.empty()) {
        element.xpath = FirstWord(Attribute(node, names.xpath.c_str()));
    }
    if (!names.sourcePath.empty()) {
        element.sourcePath = FirstWord(Attribute(node, names.sourcePath.c_str()));
    }
    std::ranges::replace(element.sourcePath, '\\', '/');
    element.name = View(node->name);
    return element;
}

bool CarriesNothing(const TaggedElement& element) {
    return element.xpath.empty() && element.sourcePath.empty() && element.queries.empty() &&
           element.attributes.empty();
}

/// Numbers the elements on the way to the current one.
class Position {
  public:
    void Enter() { numbers_.push_back(0); }
    void Count() { ++numbers_.back(); }
    void Leave() { numbers_.pop_back(); }
    std::string Text() const {
        std::string text;
        for (const int number : numbers_) {
            text += '/' + std::to_string(number);
        }
        return text;
    }

  private:
    std::vector<int> numbers_;
};

}  // namespace

TaggedPage ReadTaggedElements(const NativePath& page, const CarryingAttributes& names) {
    TaggedPage result;
    result.loaded = LoadLeniently(page);
    const LenientDocument& loaded = result.loaded;
    if (!loaded.wellFormed) {
        result.problem = loaded.reason;
        return result;
    }
    const xmlNode* const root = xmlDocGetRootElement(loaded.document.get());
    std::set<std::string> ids;
    Position position;
    const xmlNode* node = FirstElement(root);
    position.Enter();
    while (node != nullptr) {
        position.Count();
        TaggedElement element = ReadElement(node, names);
        const std::string id = Attribute(node, "id");
        const bool isFirst = !id.empty() && ids.insert(id).second;
        if (!CarriesNothing(element)) {
            element.id = isFirst ? id : position.Text();
            result.elements.push_back(std::move(element));
        }
        if (const xmlNode* const child = FirstElement(node)) {
            node = child;
            position.Enter();
            continue;
        }
        while (node != root && NextElement(node) == nullptr) {
            node = node->parent;
            position.Leave();
        }
        node = node == root ? nullptr : NextElement(node);
    }
    return result;
}

}  // namespace ventrix::desk
