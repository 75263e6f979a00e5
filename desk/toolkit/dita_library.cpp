#include "desk/toolkit/dita_library.h"

#include <algorithm>

#include "desk/toolkit/conref.h"
#include "desk/toolkit/dita_classes.h"

namespace ventrix::desk {
namespace {

constexpr std::size_t kKeptDocuments = 8;

/// Whether the element is a topic, or is in a title or a description.
bool IsSummarised(const xmlNode* element) {
    constexpr const char* kParts[] = {"topic/title", "topic/titlealts", "topic/shortdesc", "topic/abstract"};
    bool summarised = HasType(element, "topic/topic");
    for (; !summarised && element->type == XML_ELEMENT_NODE && !HasType(element, "topic/topic");
         element = element->parent) {
        summarised =
            std::ranges::any_of(kParts, [element](const char* type) { return HasType(element, type); });
    }
    return summarised;
}

/// Whether a title or a description reuses content, or a topic does as a whole.
bool ReusesTitles(const xmlDoc* document) {
    xmlNode* root = xmlDocGetRootElement(document);
    for (xmlNode* node = root; node != nullptr; node = NextNode(node, root)) {
        const bool reuses =
            node->type == XML_ELEMENT_NODE && node->properties != nullptr &&
            (xmlHasProp(node, Xml("conref")) != nullptr || xmlHasProp(node, Xml("conkeyref")) != nullptr);
        if (reuses && IsSummarised(node)) {
            return true;
        }
    }
    return false;
}

void CollectTitles(const xmlDoc* document, TopicSummary& summary) {
    xmlNode* root = xmlDocGetRootElement(document);
    for (xmlNode* node = root; node != nullptr; node = NextNode(node, root)) {
        if (HasType(node, "topic/topic")) {
            const xmlNode* alternatives = ChildOfType(node, "topic/titlealts");
            summary.topics.insert({Attribute(node, "id"),
                                   {ShownText(ChildOfType(node, "topic/title")),
                                    ShownText(ChildOfType(alternatives, "topic/navtitle"))}});
        }
    }
}

TopicSummary SummaryOf(const xmlDoc* document) {
    TopicSummary summary;
    const xmlNode* topic = FirstTopic(document);
    summary.topicId = topic == nullptr ? std::string() : Attribute(topic, "id");
    summary.title = ShownText(ChildOfType(topic, "topic/title"));
    summary.shortDescription = ShownText(ShortDescriptionOf(topic));
    CollectTitles(document, summary);
    return summary;
}

/// Gives empty phrases the text of their key.
void FillPhrases(xmlDoc* document, const DitaKeys& keys) {
    xmlNode* root = xmlDocGetRootElement(document);
    for (xmlNode* node = root; node != nullptr; node = NextNode(node, root)) {
        if (!IsPhrase(node) || node->children != nullptr) {
            continue;
        }
        const auto key = keys.find(Attribute(node, "keyref"));
        if (key != keys.end() && !key->second.text.empty()) {
            xmlNodeAddContent(node, Xml(key->second.text.c_str()));
        }
    }
}

}  // namespace

void DitaLibrary::UseKeys(const DitaKeys& keys) {
    keys_ = &keys;
    recent_.clear();
    summaries_.clear();
}

const DitaDocument& DitaLibrary::Load(const NativePath& path) {
    const auto known = std::find_if(recent_.begin(), recent_.end(),
                                    [&path](const Entry& entry) { return entry.path == path; });
    if (known != recent_.end()) {
        recent_.splice(recent_.begin(), recent_, known);
        return recent_.front().loaded;
    }
    recent_.push_front({path, LoadDita(path, sources_)});
    const DitaDocument& loaded = recent_.front().loaded;
    if (loaded.document == nullptr && !loaded.excluded) {
        unread_(loaded.reason);
    }
    if (loaded.document != nullptr && keys_ != nullptr) {
        FillPhrases(loaded.document.get(), *keys_);
    }
    if (recent_.size() > kKeptDocuments) {
        recent_.pop_back();
    }
    return recent_.front().loaded;
}

const xmlDoc* DitaLibrary::Document(const NativePath& path) {
    return Load(path).document.get();
}

bool DitaLibrary::IsExcluded(const DitaTarget& target) {
    const DitaDocument& loaded = Load(target.path);
    const std::string& id = target.element.empty() ? target.topic : target.element;
    return loaded.excluded || (!id.empty() && loaded.filtered.ids.contains(id));
}

const TopicSummary& DitaLibrary::Summary(const NativePath& path) {
    const auto known = summaries_.find(path);
    if (known != summaries_.end()) {
        return known->second;
    }
    const DitaDocument& loaded = Load(path);
    TopicSummary summary;
    const bool excluded = loaded.excluded;
    const bool readable = loaded.document != nullptr;
    if (readable && ReusesTitles(loaded.document.get())) {
        const XmlDocument resolved(xmlCopyDoc(loaded.document.get(), 1));
        ResolveConrefs(resolved.get(), keys_, *this,
                       [](const xmlNode*, const char*, const std::string&, const Subject&) {});
        summary = SummaryOf(resolved.get());
    } else if (readable) {
        summary = SummaryOf(loaded.document.get());
    }
    summary.excluded = excluded;
    summary.readable = readable;
    return summaries_.insert({path, std::move(summary)}).first->second;
}

TopicTitles TitlesOf(const std::string& absoluteReference, DitaLibrary& library) {
    const auto target = DitaTargetOf(absoluteReference);
    if (!target.has_value() || !target->element.empty()) {
        return {};
    }
    const TopicSummary& summary = library.Summary(target->path);
    const auto titles = summary.topics.find(target->topic.empty() ? summary.topicId : target->topic);
    return titles == summary.topics.end() ? TopicTitles() : titles->second;
}

}  // namespace ventrix::desk
