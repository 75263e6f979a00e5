#include "desk/pages/source_places.h"

#include <algorithm>
#include <string_view>
#include <tuple>

#include "desk/xml/qualified_names.h"
#include "desk/xml/reference_path.h"

namespace ventrix::desk {
namespace {

constexpr std::size_t kMostElements = 100'000;  // About 50 MB.

int LineOf(const xmlNode* node) {
    return node == nullptr ? 0 : static_cast<int>(xmlGetLineNo(node));
}

/// An element on the way down, with the numbers of its children so far.
struct Level {
    const xmlNode* element;
    std::size_t pathLength;
    std::unordered_map<std::string, int> counts;
};

/// Composes the XPaths of the elements in document order, in which a number stands where an element is not
/// the first of its name.
class PathWalk {
  public:
    explicit PathWalk(SourceFile& file) : file_(file) { levels_.push_back({nullptr, 0, {}}); }

    void Run(const xmlNode* root) {
        const xmlNode* node = root;
        while (node != nullptr) {
            Enter(node);
            const xmlNode* next = FirstElement(node);
            while (next == nullptr && levels_.size() > 1) {
                const xmlNode* const left = levels_.back().element;
                levels_.pop_back();
                path_.resize(levels_.back().pathLength);
                next = left == root ? nullptr : NextElement(left);
            }
            node = next;
        }
    }

  private:
    void Enter(const xmlNode* element) {
        const std::string name = QualifiedName(*element);
        const int number = ++levels_.back().counts[name];
        path_ += '/' + name + (number > 1 ? '[' + std::to_string(number) + ']' : std::string());
        file_.elements.emplace(path_, element);
        levels_.push_back({element, path_.size(), {}});
    }

    SourceFile& file_;
    std::vector<Level> levels_;
    std::string path_;
};

bool HasValue(const xmlNode* node, const std::string& name, const std::string& value) {
    for (; node != nullptr && node->type == XML_ELEMENT_NODE; node = node->parent) {
        for (const xmlAttr* attribute = node->properties; attribute != nullptr; attribute = attribute->next) {
            if (QualifiedName(*attribute) == name) {
                return ValueOf(*attribute) == value;
            }
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
std::string ElementId(const std::string& reference) {
    const std::size_t hash = reference.find('#');
    const std::size_t slash = reference.rfind('/');
    return hash == std::string::npos || slash == std::string::npos || slash < hash
               ? std::string()
               : reference.substr(slash + 1);
}

void CollectReferences(const NativePath& file, SourceFile& source) {
    for (const auto& [path, element] : source.elements) {
        const std::string reference = Attribute(element, "conref");
        const std::string id = ElementId(reference);
        if (id.empty()) {
            continue;
        }
        const ElementSource place{file, path, LineOf(element)};
        const auto [known, isNew] =
            source.references.try_emplace({TargetOf(reference, FolderOf(file)).path, id}, place);
        if (!isNew && place.line < known->second.line) {
            known->second = place;
        }
    }
}

}  // namespace

SourcePlaces::SourcePlaces(std::vector<NativePath> files, const NativePath& document)
    : files_(std::move(files)), folder_(FolderOf(document)) {
    std::sort(files_.begin(), files_.end());
}

NativePath SourcePlaces::FileOf(const std::string& sourcePath) const {
    const NativePath path = sourcePath.empty() ? NativePath{} : NormalPath({folder_.utf8 + sourcePath});
    return IsDocuments(path) ? path : NativePath{};
}

ElementSource SourcePlaces::PlaceOf(const TaggedElement& element, const std::vector<NativePath>& likely) {
    if (const NativePath own = FileOf(element.sourcePath); !own.Empty()) {
        return {own, element.xpath, LineOf(Find(own, element.xpath))};
    }
    if (element.xpath.empty()) {
        return {};
    }
    const auto placeIn = [&](const std::vector<NativePath>& files) {
        for (const NativePath& file : files) {
            const xmlNode* const node = file.Empty() ? nullptr : Find(file, element.xpath);
            if (Matches(node, element)) {
                return ElementSource{file, element.xpath, LineOf(node)};
            }
        }
        return ElementSource{{}, element.xpath, 0};
    };
    ElementSource place = placeIn(likely);
    for (auto file = likely.begin(); place.file.Empty() && file != likely.end(); ++file) {
        place = file->Empty() ? place : placeIn(Load(*file).reused);
    }
    return place;
}

ElementSource SourcePlaces::ReferenceTo(const ElementSource& place, const NativePath& file) {
    const xmlNode* node = Find(place.file, place.xpath);
    for (; node != nullptr && node->type == XML_ELEMENT_NODE; node = node->parent) {
        const auto& references = Load(file).references;
        const auto found = references.find({place.file, Attribute(node, "id")});
        if (found != references.end()) {
            return found->second;
        }
    }
    return {};
}

void SourcePlaces::LimitMemory() {
    if (elements_ > kMostElements) {
        loaded_.clear();
        latest_ = loaded_.end();
        elements_ = 0;
    }
}

bool SourcePlaces::IsDocuments(const NativePath& file) const {
    return std::binary_search(files_.begin(), files_.end(), file);
}

const xmlNode* SourcePlaces::Find(const NativePath& file, const std::string& xpath) {
    const SourceFile& source = Load(file);
    const auto found = source.elements.find(xpath);
    return found == source.elements.end() ? nullptr : found->second;
}

const SourceFile& SourcePlaces::Load(const NativePath& file) {
    if (latest_ != loaded_.end() && latest_->first == file) {
        return latest_->second;
    }
    bool isNew = false;
    std::tie(latest_, isNew) = loaded_.try_emplace(file);
    SourceFile& source = latest_->second;
    if (isNew) {
        source.loaded = LoadLeniently(file, LoadFor::kDita);
        if (source.loaded.document != nullptr) {
            PathWalk(source).Run(xmlDocGetRootElement(source.loaded.document.get()));
            CollectReferences(file, source);
            elements_ += source.elements.size();
        }
        // The references are in the order of their files.
        for (const auto& [target, place] : source.references) {
            if (IsDocuments(target.first) &&
                (source.reused.empty() || source.reused.back() != target.first)) {
                source.reused.push_back(target.first);
            }
        }
    }
    return source;
}

}  // namespace ventrix::desk
