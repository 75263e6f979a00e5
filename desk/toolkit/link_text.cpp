#include "desk/toolkit/link_text.h"

#include "desk/toolkit/conref.h"
#include "desk/toolkit/dita_classes.h"
#include "desk/toolkit/page_numbers.h"

namespace ventrix::desk {
namespace {

LinkText TextFor(const xmlNode* node) {
    if (HasType(node, "topic/fn")) {
        const std::string callout = Attribute(node, "callout");
        return {"footnote", callout.empty() ? Attribute(node, "page-number") : callout};
    }
    if (HasType(node, "topic/fig") || HasType(node, "topic/table")) {
        return {HasType(node, "topic/fig") ? "figure" : "table", Attribute(node, "page-number")};
    }
    if (HasType(node, "topic/dlentry")) {
        return {{}, ShownText(ChildOfType(node, "topic/dt"))};
    }
    if (HasType(node, "topic/li")) {
        return {{}, ItemNumber(node)};
    }
    return {{}, ShownText(ChildOfType(node, "topic/title"))};
}

}  // namespace

/// Reused content counts too, so that numbers are those of the page.
const LinkTexts::ByElement& LinkTexts::TextsIn(const NativePath& path) {
    const auto [place, isNew] = documents_.insert({path, {}});
    const xmlDoc* document = isNew ? library_.Document(path) : nullptr;
    if (document == nullptr) {
        return place->second;
    }
    const XmlDocument resolved(xmlCopyDoc(const_cast<xmlDoc*>(document), 1));
    ResolveConrefs(resolved.get(), &keys_, library_,
                   [](const xmlNode*, const char*, const std::string&, const Subject&) {});
    AddPageNumbers(resolved.get());
    xmlNode* root = xmlDocGetRootElement(resolved.get());
    std::string topic;
    for (xmlNode* node = root; node != nullptr; node = NextNode(node, root)) {
        const std::string id = node->type == XML_ELEMENT_NODE ? Attribute(node, "id") : std::string();
        if (HasType(node, "topic/topic")) {
            topic = id;
        } else if (!id.empty()) {
            place->second.insert({topic + "/" + id, TextFor(node)});
        }
    }
    return place->second;
}

std::optional<LinkText> LinkTexts::For(const std::string& absoluteReference) {
    const auto target = DitaTargetOf(absoluteReference);
    if (!target.has_value()) {
        return std::nullopt;
    }
    const TopicSummary& summary = library_.Summary(target->path);
    const std::string topic = target->topic.empty() ? summary.topicId : target->topic;
    if (target->element.empty()) {
        const auto titles = summary.topics.find(topic);
        return titles == summary.topics.end() ? std::nullopt
                                              : std::optional(LinkText{{}, titles->second.title});
    }
    const ByElement& texts = TextsIn(target->path);
    const auto text = texts.find(topic + "/" + target->element);
    return text == texts.end() ? std::nullopt : std::optional(text->second);
}

}  // namespace ventrix::desk
