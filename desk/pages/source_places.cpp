#include "desk/pages/source_places.h"

#include <algorithm>
#include <charconv>
#include <string_view>

#include "desk/xml/reference_path.h"

namespace ventrix::desk {
namespace {

std::string QualifiedName(const xmlNode* node) {
    const std::string prefix = node->ns == nullptr ? std::string() : std::string(View(node->ns->prefix));
    return (prefix.empty() ? "" : prefix + ':') + std::string(View(node->name));
}

/// One step of a path as Ventrix writes it: a name, and a number where it is not the first of its name.
struct Step {
    std::string_view name;
    int number = 1;
};

Step ReadStep(std::string_view text) {
    const std::size_t bracket = text.find('[');
    Step step{text.substr(0, bracket)};
    if (bracket != std::string_view::npos) {
        std::from_chars(text.data() + bracket + 1, text.data() + text.size(), step.number);
    }
    return step;
}

xmlNode* FollowStep(xmlNode* first, const Step& step) {
    int left = step.number;
    for (xmlNode* node = first; node != nullptr; node = NextElement(node)) {
        if (QualifiedName(node) == step.name && --left == 0) {
            return node;
        }
    }
    return nullptr;
}

/// The element at an absolute path of names and numbers; null if there is none.
xmlNode* Follow(const xmlDoc* document, std::string_view path) {
    xmlNode* node = xmlDocGetRootElement(document);
    xmlNode* found = nullptr;
    while (path.starts_with('/')) {
        path.remove_prefix(1);
        const std::size_t end = std::min(path.find('/'), path.size());
        found = FollowStep(node, ReadStep(path.substr(0, end)));
        if (found == nullptr) {
            return nullptr;
        }
        node = FirstElement(found);
        path.remove_prefix(end);
    }
    return found;
}

bool HasValue(const xmlNode* node, const std::string& name, const std::string& value) {
    for (; node != nullptr && node->type == XML_ELEMENT_NODE; node = node->parent) {
        if (xmlHasProp(node, Xml(name.c_str())) != nullptr) {
            return Attribute(node, name.c_str()) == value;
        }
    }
    return false;
}

bool Matches(const xmlNode* node, const TaggedElement& element) {
    return node != nullptr && std::ranges::all_of(element.attributes, [node](const auto& attribute) {
               return HasValue(node, attribute.first, attribute.second);
           });
}

/// The id at the end of a reference such as "lib.dita#topic/id"; empty if it names none.
std::string_view ElementId(std::string_view reference) {
    const std::size_t hash = reference.find('#');
    const std::size_t slash = reference.rfind('/');
    return hash == std::string_view::npos || slash == std::string_view::npos || slash < hash
               ? std::string_view()
               : reference.substr(slash + 1);
}

bool IsInside(const xmlNode* node, std::string_view id) {
    for (; node != nullptr && node->type == XML_ELEMENT_NODE; node = node->parent) {
        if (Attribute(node, "id") == id) {
            return true;
        }
    }
    return false;
}

}  // namespace

SourcePlaces::SourcePlaces(std::vector<NativePath> files, const NativePath& document)
    : files_(std::move(files)), folder_(FolderOf(document)) {}

NativePath SourcePlaces::FileOf(const std::string& sourcePath) const {
    const NativePath path = sourcePath.empty() ? NativePath{} : NormalPath({folder_.utf8 + sourcePath});
    return std::ranges::find(files_, path) == files_.end() ? NativePath{} : path;
}

ElementSource SourcePlaces::PlaceOf(const TaggedElement& element, const std::vector<NativePath>& likely) {
    if (const NativePath own = FileOf(element.sourcePath); !own.Empty()) {
        const xmlNode* const node = Find(own, element.xpath);
        return {own, element.xpath, node == nullptr ? 0 : static_cast<int>(xmlGetLineNo(node))};
    }
    if (element.xpath.empty()) {
        return {};
    }
    for (const std::vector<NativePath>* files : {&likely, &std::as_const(files_)}) {
        for (const NativePath& file : *files) {
            const xmlNode* const node = file.Empty() ? nullptr : Find(file, element.xpath);
            if (Matches(node, element)) {
                return {file, element.xpath, static_cast<int>(xmlGetLineNo(node))};
            }
        }
    }
    return {{}, element.xpath, 0};
}

ElementSource SourcePlaces::ReferenceTo(const ElementSource& place, const NativePath& file) {
    const xmlNode* const target = Find(place.file, place.xpath);
    const xmlDoc* const document = target == nullptr ? nullptr : Load(file);
    const xmlNode* const root = document == nullptr ? nullptr : xmlDocGetRootElement(document);
    for (const xmlNode* node = root; node != nullptr; node = NextNode(const_cast<xmlNode*>(node), root)) {
        const std::string reference =
            node->type == XML_ELEMENT_NODE ? Attribute(node, "conref") : std::string();
        const std::string_view id = ElementId(reference);
        if (!id.empty() && TargetOf(reference, FolderOf(file)).path == place.file && IsInside(target, id)) {
            const XmlString path(xmlGetNodePath(node));
            return {file, std::string(View(path.get())), static_cast<int>(xmlGetLineNo(node))};
        }
    }
    return {};
}

xmlNode* SourcePlaces::Find(const NativePath& file, const std::string& xpath) {
    const xmlDoc* const document = Load(file);
    return document == nullptr || xpath.empty() ? nullptr : Follow(document, xpath);
}

const xmlDoc* SourcePlaces::Load(const NativePath& file) {
    const auto [entry, isNew] = loaded_.try_emplace(file);
    if (isNew) {
        entry->second = LoadLeniently(file, LoadFor::kDita);
    }
    return entry->second.document.get();
}

}  // namespace ventrix::desk
