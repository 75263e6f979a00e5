#include "desk/toolkit/page_references.h"

#include "desk/toolkit/dita_classes.h"
#include "desk/toolkit/dita_run.h"
#include "desk/toolkit/image_scale.h"

namespace ventrix::desk {
namespace {

struct Page {
    const NativePath& topic;
    const ReferenceTargets& targets;
};

/// The fragment that leads to the target in its page.
std::string Anchor(DitaLibrary& library, const DitaTarget& target) {
    const std::string topic =
        target.topic.empty() && !target.element.empty() ? library.Summary(target.path).topicId : target.topic;
    if (topic.empty()) {
        return {};
    }
    return topic + (target.element.empty() ? "" : "__" + target.element);
}

/// Whether the link has a text. The description of a target is not one.
bool HasText(const xmlNode* link) {
    if (HasType(link, "topic/link")) {
        return !TextOf(ChildOfType(link, "topic/linktext")).empty();
    }
    for (const xmlNode* child = link->children; child != nullptr; child = child->next) {
        if (!HasType(child, "topic/desc") && (!TextOf(child).empty() || HasType(child, "topic/image"))) {
            return true;
        }
    }
    return false;
}

/// The title of the topic that contains the target.
std::string TitleAround(const Page& page, const std::string& absolute) {
    return TitlesOf(absolute.substr(0, absolute.find('/', absolute.find('#'))), page.targets.library).title;
}

/// The title of the target's topic, or else the address, stands in for a text that the target does not have.
/// A target that does not exist is reported as a dead link.
void AddLinkText(const Page& page, xmlNode* link, const std::string& absolute, const std::string& href) {
    const std::optional<LinkText> found = page.targets.texts.For(absolute);
    LinkText text = found.value_or(LinkText());
    if (text.text.empty()) {
        text = {{}, TitleAround(page, absolute)};
    }
    if (found.has_value() && found->text.empty()) {
        page.targets.remarks(link, kNotHandled,
                             "the link \"" + AsWritten(link, absolute) +
                                 "\" has no text and its target no title, so that it shows the " +
                                 (text.text.empty() ? "address" : "title of the topic") +
                                 "; write a text into the link",
                             ReferenceIn("href", link, absolute));
    }
    xmlSetProp(link, Xml("page-title"), Xml((text.text.empty() ? href : text.text).c_str()));
    if (!text.type.empty()) {
        xmlSetProp(link, Xml("page-title-type"), Xml(text.type.c_str()));
    }
}

/// A link to an excluded topic keeps its text only.
void RemoveTarget(const Page& page, xmlNode* link) {
    if (!HasType(link, "topic/link") && !HasText(link)) {
        page.targets.remarks(
            link, kToolkitRule,
            "the link \"" + AsWritten(link, Attribute(link, "href")) +
                "\" leads to a topic that the filter (" + page.targets.library.Sources().filterNames +
                ") excludes, and has no text, so that it is missing on the page; exclude the "
                "link too, or write a text into it",
            ReferenceIn("href", link, Attribute(link, "href")));
    }
    xmlUnsetProp(link, Xml("href"));
}

/// Makes a link to a topic lead to its page.
void LinkToTopic(const Page& page, xmlNode* link, const DitaTarget& target) {
    const ReferenceTargets& targets = page.targets;
    if (targets.library.Summary(target.path).excluded) {
        RemoveTarget(page, link);
        return;
    }
    const std::string absolute = Attribute(link, "href");
    if (targets.excludedTopics.contains(target.path)) {
        targets.remarks(
            link, kToolkitRule,
            "the link \"" + AsWritten(link, absolute) +
                "\" leads to a topic whose topic reference the filter (" +
                targets.library.Sources().filterNames +
                ") excludes; the topic is published because of the link; exclude the link too, or the "
                "topic itself",
            ReferenceIn("href", link, absolute));
    }
    targets.needPage(target.path);
    const NativePath ownPage = PageOf(targets.layout, page.topic);
    const NativePath targetPage = PageOf(targets.layout, target.path);
    const std::string anchor = Anchor(targets.library, target);
    const std::string fragment = anchor.empty() ? "" : "#" + anchor;
    const bool isOwn = targetPage == ownPage && !fragment.empty();
    const std::string href = (isOwn ? "" : RelativeReference(ownPage, targetPage)) + fragment;
    targets.check.Add({SourceOf(link), static_cast<int>(xmlGetLineNo(link)), targetPage, anchor, target,
                       ReferenceIn("href", link, absolute)});
    xmlSetProp(link, Xml("href"), Xml(href.c_str()));
    if (!HasText(link) && xmlHasProp(link, Xml("page-title")) == nullptr) {
        AddLinkText(page, link, absolute, href);
    }
}

/// Phrases with a key link to its target too.
bool IsLink(const xmlNode* element) {
    return HasType(element, "topic/xref") || HasType(element, "topic/link") ||
           (xmlHasProp(element, Xml("keyref")) != nullptr && !HasType(element, "topic/image"));
}

/// Whether no page shows the element.
bool IsMetadata(const xmlNode* element) {
    for (; element != nullptr && element->type == XML_ELEMENT_NODE; element = element->parent) {
        if (HasType(element, "topic/prolog") || HasType(element, "topic/data") ||
            HasType(element, "topic/data-about")) {
            return true;
        }
    }
    return false;
}

/// A topic is published as a page only: its file may contain what a filter excludes.
void LeaveOutTopic(const Page& page, xmlNode* element) {
    const bool isReported = HasType(element, "topic/lq") || HasType(element, "topic/longdescref") ||
                            HasType(element, "topic/longquoteref");
    if (!isReported && (!IsMetadata(element) || HasType(element, "topic/source"))) {
        page.targets.remarks(element, kNotHandled,
                             "the link \"" + AsWritten(element, Attribute(element, "href")) + "\" of <" +
                                 std::string(View(element->name)) +
                                 "> to a topic is not handled: it is left out",
                             ReferenceIn("href", element, Attribute(element, "href")));
    }
    xmlUnsetProp(element, Xml("href"));
}

void DirectReference(const Page& page, xmlNode* element, const char* name) {
    const auto target = DitaTargetOf(Attribute(element, name));
    const std::string scope = Attribute(element, "scope");
    if (!target.has_value() || scope == "external" || scope == "peer") {
        return;
    }
    const PageLayout& layout = page.targets.layout;
    const bool toTopic = IsTopicFormat(Attribute(element, "format"), target->path);
    const NativePath output = OutputOf(layout, target->path);
    if (output.Empty()) {
        page.targets.remarks(element, kToolkitRule,
                             target->path.utf8 + " is outside the folders of the document and is left out",
                             ReferenceIn(name, element, Attribute(element, name)));
    } else if (IsLink(element) && toTopic) {
        LinkToTopic(page, element, *target);
    } else if (std::string_view(name) == "href" && toTopic) {
        LeaveOutTopic(page, element);
    } else {
        page.targets.copy(target->path, output);
        xmlSetProp(element, Xml(name), Xml(RelativeReference(PageOf(layout, page.topic), output).c_str()));
    }
}

}  // namespace

void DirectReferences(xmlDoc* document, const NativePath& topic, const ReferenceTargets& targets) {
    const Page page{topic, targets};
    xmlNode* root = xmlDocGetRootElement(document);
    for (xmlNode* node = root; node != nullptr; node = NextNode(node, root)) {
        if (node->type == XML_ELEMENT_NODE && node->properties != nullptr) {
            if (xmlHasProp(node, Xml("scale")) != nullptr && HasType(node, "topic/image")) {
                ScaleImage(node, targets.remarks);
            }
            DirectReference(page, node, "href");
            DirectReference(page, node, "data");
        }
    }
}

}  // namespace ventrix::desk
