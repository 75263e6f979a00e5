#include "desk/pages/source_places.h"

#include <algorithm>
#include <optional>
#include <tuple>
#include <utility>

#include "desk/xml/qualified_names.h"
#include "desk/xml/reference_path.h"

namespace ventrix::desk {
namespace {

constexpr std::size_t kMostElements = 100'000;  // About 50 MB.
constexpr std::size_t kMostNested = 50;         // References in each other's targets.

/// The walk leaves each element's XPath in the field for the application's own data.
const std::string& XPathOf(const xmlNode* element) {
    return *static_cast<const std::string*>(element->_private);
}

bool IsReference(const xmlNode* element) {
    return element->properties != nullptr && (xmlHasProp(element, Xml("conref")) != nullptr ||
                                              xmlHasProp(element, Xml("conkeyref")) != nullptr);
}

bool HasText(const xmlNode* element) {
    const xmlNode* child = element->children;
    while (child != nullptr &&
           (child->type != XML_TEXT_NODE || std::ranges::all_of(View(child->content), IsXmlWhitespace))) {
        child = child->next;
    }
    return child != nullptr;
}

/// An element on the way down, with the numbers of its children so far.
struct Level {
    const xmlNode* element;
    std::size_t pathLength;
    std::unordered_map<std::string, int> counts;
};

/// Composes the XPaths of the elements in document order, in which a number stands where an element is not
/// the first of its name, and lists the ids.
class PathWalk {
  public:
    explicit PathWalk(SourceFile& file) : file_(file) { levels_.push_back({nullptr, 0, {}}); }

    void Run(xmlNode* root) {
        xmlNode* node = root;
        while (node != nullptr) {
            Enter(node);
            xmlNode* next = FirstElement(node);
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
    void Enter(xmlNode* element) {
        const std::string name = QualifiedName(*element);
        const int number = ++levels_.back().counts[name];
        path_ += '/' + name + (number > 1 ? '[' + std::to_string(number) + ']' : std::string());
        element->_private = const_cast<std::string*>(&file_.elements.emplace(path_, element).first->first);
        std::string id = element->properties == nullptr ? std::string() : Attribute(element, "id");
        if (!id.empty()) {
            file_.ids[std::move(id)].push_back(element);
        }
        file_.hasReferences = file_.hasReferences || IsReference(element);
        levels_.push_back({element, path_.size(), {}});
    }

    SourceFile& file_;
    std::vector<Level> levels_;
    std::string path_;
};

/// What a content reference names.
struct ContentTarget {
    NativePath file;
    std::string topic;    ///< An id; empty if the reference does not say it.
    std::string element;  ///< The id of an element in the topic; empty for the topic itself.
};

ContentTarget TargetIn(const std::string& reference, const NativePath& from) {
    const std::size_t hash = std::min(reference.find('#'), reference.size());
    ContentTarget target;
    target.file = hash == 0 ? from : TargetOf(reference, FolderOf(from)).path;
    const std::string fragment = reference.substr(std::min(hash + 1, reference.size()));
    const std::size_t slash = std::min(fragment.find('/'), fragment.size());
    target.topic = fragment.substr(0, slash);
    target.topic = target.topic == "." ? std::string() : target.topic;
    target.element = fragment.substr(std::min(slash + 1, fragment.size()));
    return target;
}

bool IsInside(const xmlNode* element, const std::string& id) {
    while (element != nullptr && element->type == XML_ELEMENT_NODE && Attribute(element, "id") != id) {
        element = element->parent;
    }
    return element != nullptr && element->type == XML_ELEMENT_NODE;
}

/// Null if there is no such element, or if it is not clear which of several is meant.
const xmlNode* Find(const SourceFile& source, const ContentTarget& target) {
    const std::string& id = target.element.empty() ? target.topic : target.element;
    if (id.empty()) {
        return xmlDocGetRootElement(source.loaded.document.get());
    }
    const auto found = source.ids.find(id);
    if (found == source.ids.end() || (target.topic.empty() && found->second.size() > 1)) {
        return nullptr;
    }
    const auto& elements = found->second;
    const auto element = std::ranges::find_if(elements, [&target](const xmlNode* node) {
        return target.topic.empty() || target.element.empty() || IsInside(node->parent, target.topic);
    });
    return element == elements.end() ? nullptr : *element;
}

/// The reference that a key and an element id, "key/id", stand for; empty if the key is not known.
std::string ByKey(const std::string& keyAndId, const KeyTargets& keys) {
    const std::size_t slash = std::min(keyAndId.find('/'), keyAndId.size());
    const auto key = keys.find(keyAndId.substr(0, slash));
    if (key == keys.end()) {
        return {};
    }
    const bool needsHash = slash < keyAndId.size() && key->second.find('#') == std::string::npos;
    return key->second + (needsHash ? "#" : "") + keyAndId.substr(slash);
}

/// The files to which the elements of a file push content.
void AddPushTargets(const NativePath& file, const KeyTargets& keys, std::set<NativePath>& targets) {
    const LenientDocument loaded = LoadLeniently(file, LoadFor::kDita);
    xmlNode* const root = loaded.document == nullptr ? nullptr : xmlDocGetRootElement(loaded.document.get());
    for (xmlNode* node = root; node != nullptr; node = NextNode(node, root)) {
        if (node->type == XML_ELEMENT_NODE && IsReference(node) &&
            xmlHasProp(node, Xml("conaction")) != nullptr) {
            const std::string byKey = ByKey(Attribute(node, "conkeyref"), keys);
            targets.insert(TargetIn(byKey.empty() ? Attribute(node, "conref") : byKey, file).file);
        }
    }
}

}  // namespace

/// Lists the occurrences in a topic in the order in which its page has them: those of a target where the
/// reference is.
class ContentWalk {
  public:
    ContentWalk(SourcePlaces& places, const NativePath& topic, TopicContent& content)
        : places_(places), topic_(topic), content_(content) {}

    /// Returns the number of the occurrences.
    std::size_t Run(const xmlNode* root) {
        content_.isPushTarget = places_.PushTargets().contains(topic_);
        Add(root, topic_, nullptr);
        if (count_ > kMostElements) {
            content_ = {{}, false, content_.isPushTarget};
        }
        return std::min(count_, kMostElements);
    }

  private:
    /// The elements of a file that take the place of a reference.
    struct Range {
        const NativePath* file;
        const xmlNode* first;
        const xmlNode* last;
    };

    void Add(const xmlNode* element, const NativePath& file, const xmlNode* reference) {
        if (++count_ > kMostElements) {
            return;
        }
        const auto range = RangeOf(element, file);
        if (range.has_value()) {
            open_.push_back(element);
            for (const xmlNode* node = range->first; node != nullptr;) {
                Add(node, *range->file, reference == nullptr ? element : reference);
                node = node == range->last ? nullptr : NextElement(node);
            }
            open_.pop_back();
            return;
        }
        if (HasText(element)) {
            content_.byXPath[XPathOf(element)].push_back({&file, element, reference});
        }
        for (const xmlNode* child = FirstElement(element); child != nullptr; child = NextElement(child)) {
            Add(child, file, reference);
        }
    }

    /// Nothing if the element is not a reference, or one that cannot be followed: it keeps its own content
    /// then.
    std::optional<Range> RangeOf(const xmlNode* element, const NativePath& file) {
        if (!IsReference(element)) {
            return std::nullopt;
        }
        // Which definition of a key counts depends on filters and scopes, so that its target is not certain.
        const std::string key = Attribute(element, "conkeyref");
        const std::string byKey = key.empty() ? std::string() : ByKey(key, places_.Keys());
        const std::string reference = byKey.empty() ? Attribute(element, "conref") : byKey;
        const bool isPushed = xmlHasProp(element, Xml("conaction")) != nullptr;
        const bool isCycle = std::ranges::find(open_, element) != open_.end();
        const auto range = isPushed || isCycle || open_.size() > kMostNested
                               ? std::nullopt
                               : Resolve(reference, Attribute(element, "conrefend"), file);
        content_.isComplete = content_.isComplete && range.has_value() && key.empty();
        content_.isPushTarget =
            content_.isPushTarget || (range.has_value() && places_.PushTargets().contains(*range->file));
        return range;
    }

    std::optional<Range> Resolve(const std::string& reference, const std::string& end,
                                 const NativePath& file) const {
        const ContentTarget target = TargetIn(reference, file);
        if (reference.empty() || !places_.IsDocuments(target.file)) {
            return std::nullopt;
        }
        const SourceFile& source = places_.Load(target.file);
        const xmlNode* const first = Find(source, target);
        if (first == nullptr) {
            return std::nullopt;
        }
        const std::string lastId = TargetIn(end, file).element;
        const xmlNode* last = lastId.empty() ? nullptr : first;
        while (last != nullptr && Attribute(last, "id") != lastId) {
            last = NextElement(last);
        }
        return Range{&places_.loaded_.find(target.file)->first, first, last == nullptr ? first : last};
    }

    SourcePlaces& places_;
    const NativePath& topic_;
    TopicContent& content_;
    std::vector<const xmlNode*> open_;  ///< The references that the current element comes through.
    std::size_t count_ = 0;
};

SourcePlaces::SourcePlaces(std::vector<NativePath> files, const NativePath& document,
                           std::function<KeyTargets()> readKeys, bool hasPushes)
    : files_(std::move(files)),
      folder_(FolderOf(document)),
      readKeys_(std::move(readKeys)),
      hasPushes_(hasPushes) {
    std::sort(files_.begin(), files_.end());
}

NativePath SourcePlaces::FileOf(const std::string& sourcePath) const {
    const NativePath path = sourcePath.empty() ? NativePath{} : NormalPath({folder_.utf8 + sourcePath});
    return IsDocuments(path) ? path : NativePath{};
}

std::vector<Occurrence> SourcePlaces::OccurrencesIn(const NativePath& file, const std::string& xpath) {
    if (file.Empty()) {
        return {};
    }
    const SourceFile& source = Load(file);
    if (source.hasReferences) {
        const TopicContent& content = ContentOf(file);
        const auto found = content.byXPath.find(xpath);
        return found == content.byXPath.end() ? std::vector<Occurrence>{} : found->second;
    }
    const auto found = source.elements.find(xpath);
    if (found == source.elements.end() || !HasText(found->second)) {
        return {};
    }
    return {{&loaded_.find(file)->first, found->second, nullptr}};
}

bool SourcePlaces::IsComplete(const NativePath& file) {
    return file.Empty() || !Load(file).hasReferences || ContentOf(file).isComplete;
}

bool SourcePlaces::IsPushTarget(const NativePath& file) {
    return hasPushes_ && !file.Empty() &&
           (Load(file).hasReferences ? ContentOf(file).isPushTarget : PushTargets().contains(file));
}

ElementSource SourcePlaces::PlaceOf(const NativePath& file, const std::string& xpath) {
    const SourceFile& source = Load(file);
    const auto found = source.elements.find(xpath);
    return found == source.elements.end() ? ElementSource{file, xpath, 0} : PlaceOf(file, found->second);
}

ElementSource SourcePlaces::PlaceOf(const NativePath& file, const xmlNode* element) {
    return {file, XPathOf(element), static_cast<int>(xmlGetLineNo(element))};
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

const KeyTargets& SourcePlaces::Keys() {
    if (!keys_.has_value()) {
        keys_ = readKeys_();
    }
    return *keys_;
}

const std::set<NativePath>& SourcePlaces::PushTargets() {
    if (!pushTargets_.has_value()) {
        pushTargets_.emplace();
        for (const NativePath& file : hasPushes_ ? files_ : std::vector<NativePath>()) {
            AddPushTargets(file, Keys(), *pushTargets_);
        }
    }
    return *pushTargets_;
}

SourceFile& SourcePlaces::Load(const NativePath& file) {
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
            elements_ += source.elements.size();
        }
    }
    return source;
}

const TopicContent& SourcePlaces::ContentOf(const NativePath& file) {
    SourceFile& source = Load(file);
    if (!source.isExpanded) {
        source.isExpanded = true;
        const NativePath& topic = loaded_.find(file)->first;
        elements_ +=
            ContentWalk(*this, topic, source.content).Run(xmlDocGetRootElement(source.loaded.document.get()));
    }
    return source.content;
}

}  // namespace ventrix::desk
