#include "desk/toolkit/dita_references.h"

#include <algorithm>

#include "desk/toolkit/dita_classes.h"

namespace ventrix::desk {
namespace {

constexpr std::size_t kKeptDocuments = 8;
constexpr int kMaxConrefs = 20'000;  ///< In one document: content that doubles with each level has to end.

bool HasTitle(const xmlNode* node) {
    return ChildOfType(node, "topic/title") != nullptr;
}

void CollectTitles(const xmlDoc* document, TopicSummary& summary) {
    xmlNode* root = xmlDocGetRootElement(document);
    std::string topic;
    for (xmlNode* node = root; node != nullptr; node = NextNode(node, root)) {
        if (node->type != XML_ELEMENT_NODE) {
            continue;
        }
        const std::string id = Attribute(node, "id");
        const bool isTopic = HasType(node, "topic/topic");
        topic = isTopic ? id : topic;
        if (!id.empty() && HasTitle(node)) {
            summary.titles.insert(
                {isTopic ? id : topic + "/" + id, TextOf(ChildOfType(node, "topic/title"))});
        }
    }
}

TopicSummary SummaryOf(const xmlDoc* document) {
    TopicSummary summary;
    const xmlNode* topic = FirstTopic(document);
    summary.title = TextOf(ChildOfType(topic, "topic/title"));
    const xmlNode* shortDescription = ChildOfType(topic, "topic/shortdesc");
    const xmlNode* abstract = ChildOfType(topic, "topic/abstract");
    summary.shortDescription =
        TextOf(shortDescription != nullptr ? shortDescription : ChildOfType(abstract, "topic/shortdesc"));
    CollectTitles(document, summary);
    return summary;
}

/// Attributes of the referring element override those of the target. The copy has no id, as the target keeps
/// it.
void OverrideAttributes(const xmlNode* referring, xmlNode* copy) {
    xmlUnsetProp(copy, Xml("id"));
    for (const xmlAttr* attribute = referring->properties; attribute != nullptr;
         attribute = attribute->next) {
        const std::string name(View(attribute->name));
        const std::string value = Attribute(referring, name.c_str());
        if (attribute->ns == nullptr && name != "conref" && name != "class" &&
            value != "-dita-use-conref-target") {
            xmlSetProp(copy, Xml(name.c_str()), Xml(value.c_str()));
        }
    }
}

/// Replaces the referring element with a copy of its target; null, with the element unchanged, if there is no
/// target.
xmlNode* ReplaceWithTarget(xmlNode* referring, DitaLibrary& library) {
    const auto target = DitaTargetOf(Attribute(referring, "conref"));
    const xmlDoc* document = target.has_value() ? library.Document(target->path) : nullptr;
    xmlNode* original = document == nullptr ? nullptr : FindTarget(document, *target);
    if (original == nullptr) {
        return nullptr;
    }
    xmlNode* copy = xmlDocCopyNode(original, referring->doc, 1);
    OverrideAttributes(referring, copy);
    xmlReplaceNode(referring, copy);
    xmlFreeNode(referring);
    return copy;
}

/// A copy may contain references of its own, which are resolved in turn: the walk goes on in the copy, not
/// after it. Two things could keep it from ending. A target that contains a reference to itself is recognised
/// because its reference is still open; targets that each contain the next one twice are stopped by a limit.
struct ConrefRun {
    DitaLibrary& library;
    const MessageSink& warnings;
    std::vector<std::string> open;  ///< The references whose copies enclose the current element.
    int copies = 0;
};

xmlNode* Resolve(ConrefRun& run, xmlNode* element);

void ResolveChildren(ConrefRun& run, xmlNode* parent) {
    for (xmlNode* child = FirstElement(parent); child != nullptr; child = NextElement(child)) {
        child = Resolve(run, child);
    }
}

/// Resolves the element and its descendants. Returns the element that is now in its place.
xmlNode* Resolve(ConrefRun& run, xmlNode* element) {
    const std::string conref = Attribute(element, "conref");
    const bool cycle = std::find(run.open.begin(), run.open.end(), conref) != run.open.end();
    const bool tooMany = !conref.empty() && ++run.copies > kMaxConrefs;
    xmlNode* copy = conref.empty() || cycle || tooMany ? nullptr : ReplaceWithTarget(element, run.library);
    if (copy == nullptr) {
        if (!conref.empty()) {
            run.warnings("conref=\"" + conref + "\" has no usable target; the element keeps its own content");
            xmlUnsetProp(element, Xml("conref"));
        }
        ResolveChildren(run, element);
        return element;
    }
    run.open.push_back(conref);
    copy = Resolve(run, copy);
    run.open.pop_back();
    return copy;
}

bool IsLink(const xmlNode* node) {
    return HasType(node, "topic/xref") || HasType(node, "topic/link");
}

void ApplyKey(xmlNode* element, const DitaKey& key, const std::string& elementId) {
    const bool takesReference = IsLink(element) || HasType(element, "topic/image");
    if (takesReference && !key.href.empty()) {
        const std::string href = elementId.empty() ? key.href : key.href + "#" + elementId;
        xmlSetProp(element, Xml("href"), Xml(href.c_str()));
    }
    if (TextOf(element).empty() && !key.text.empty() && !HasType(element, "topic/image")) {
        xmlNodeAddContent(element, Xml(key.text.c_str()));
    }
}

}  // namespace

const DitaDocument& DitaLibrary::Load(const NativePath& path) {
    const auto known = std::find_if(recent_.begin(), recent_.end(),
                                    [&path](const Entry& entry) { return entry.path == path; });
    if (known != recent_.end()) {
        recent_.splice(recent_.begin(), recent_, known);
        return recent_.front().loaded;
    }
    recent_.push_front({path, LoadDita(path, rules_)});
    const DitaDocument& loaded = recent_.front().loaded;
    if (loaded.document == nullptr && !loaded.excluded) {
        unread_(loaded.reason);
    }
    if (recent_.size() > kKeptDocuments) {
        recent_.pop_back();
    }
    return recent_.front().loaded;
}

const xmlDoc* DitaLibrary::Document(const NativePath& path) {
    return Load(path).document.get();
}

const TopicSummary& DitaLibrary::Summary(const NativePath& path) {
    const auto known = summaries_.find(path);
    if (known != summaries_.end()) {
        return known->second;
    }
    const DitaDocument& loaded = Load(path);
    TopicSummary summary;
    if (loaded.document != nullptr) {
        summary = SummaryOf(loaded.document.get());
    }
    summary.excluded = loaded.excluded;
    return summaries_.insert({path, std::move(summary)}).first->second;
}

void ResolveConrefs(xmlDoc* document, DitaLibrary& library, const MessageSink& warnings) {
    ConrefRun run{.library = library, .warnings = warnings, .open = {}};
    Resolve(run, xmlDocGetRootElement(document));
}

void ResolveKeyrefs(xmlDoc* document, const std::map<std::string, DitaKey>& keys,
                    const MessageSink& warnings) {
    xmlNode* root = xmlDocGetRootElement(document);
    for (xmlNode* node = root; node != nullptr; node = NextNode(node, root)) {
        const std::string reference =
            node->type == XML_ELEMENT_NODE ? Attribute(node, "keyref") : std::string();
        if (reference.empty()) {
            continue;
        }
        const std::size_t slash = std::min(reference.find('/'), reference.size());
        const auto key = keys.find(reference.substr(0, slash));
        if (key == keys.end()) {
            warnings("keyref=\"" + reference + "\": the map does not define this key");
            continue;
        }
        ApplyKey(node, key->second, slash < reference.size() ? reference.substr(slash + 1) : std::string());
    }
}

std::string TitleOf(const std::string& absoluteReference, DitaLibrary& library) {
    const auto target = DitaTargetOf(absoluteReference);
    if (!target.has_value()) {
        return {};
    }
    const TopicSummary& summary = library.Summary(target->path);
    if (target->topic.empty()) {
        return summary.title;
    }
    const auto title =
        summary.titles.find(target->element.empty() ? target->topic : target->topic + "/" + target->element);
    return title == summary.titles.end() ? std::string() : title->second;
}

}  // namespace ventrix::desk
