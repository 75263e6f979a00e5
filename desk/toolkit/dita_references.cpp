#include "desk/toolkit/dita_references.h"

#include <algorithm>
#include <cstdlib>
#include <optional>

#include "desk/toolkit/dita_classes.h"
#include "desk/toolkit/dita_run.h"
#include "desk/xml/file_access.h"
#include "desk/xml/limits.h"
#include "platform/native_files.h"

namespace ventrix::desk {
namespace {

constexpr std::size_t kKeptDocuments = 8;
constexpr int kMaxConrefs = 20'000;  ///< In one document: content that doubles with each level has to end.

/// The number of an item in an ordered list, as a page shows it at the first level.
std::string NumberOf(const xmlNode* item) {
    int number = 1;
    for (const xmlNode* node = item->prev; node != nullptr; node = node->prev) {
        number += HasType(node, "topic/li") && !HasType(node, "task/stepsection") ? 1 : 0;
    }
    return std::to_string(number);
}

/// What a link to the element says: its title, the term that it defines, or its number.
std::string WordsFor(const xmlNode* node) {
    if (const xmlNode* title = ChildOfType(node, "topic/title")) {
        return ShownText(title);
    }
    if (HasType(node, "topic/dlentry")) {
        return ShownText(ChildOfType(node, "topic/dt"));
    }
    return HasType(node, "topic/li") && HasType(node->parent, "topic/ol") ? NumberOf(node) : std::string();
}

void CollectTitles(const xmlDoc* document, TopicSummary& summary) {
    xmlNode* root = xmlDocGetRootElement(document);
    std::string topic;
    for (xmlNode* node = root; node != nullptr; node = NextNode(node, root)) {
        if (node->type != XML_ELEMENT_NODE || node->properties == nullptr) {
            continue;
        }
        const std::string id = Attribute(node, "id");
        const bool isTopic = HasType(node, "topic/topic");
        topic = isTopic ? id : topic;
        if (const std::string words = id.empty() ? std::string() : WordsFor(node); !words.empty()) {
            summary.titles.insert({isTopic ? id : topic + "/" + id, words});
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

/// Attributes of the referring element override those of the target. The copy has no id, as the target keeps
/// it.
void OverrideAttributes(const xmlNode* referring, xmlNode* copy) {
    xmlUnsetProp(copy, Xml("id"));
    for (const xmlAttr* attribute = referring->properties; attribute != nullptr;
         attribute = attribute->next) {
        const std::string name(View(attribute->name));
        const std::string value = Attribute(referring, name.c_str());
        if (attribute->ns == nullptr && name != "conref" && name != "conkeyref" && name != "conrefend" &&
            name != "class" && value != "-dita-use-conref-target") {
            xmlSetProp(copy, Xml(name.c_str()), Xml(value.c_str()));
        }
    }
}

/// Adds copies of the elements after the target, up to the one that ends the range. False if there is no such
/// element.
bool CopyRange(const xmlNode* original, xmlNode* copy, const std::string& end) {
    if (end.empty()) {
        return true;
    }
    const auto target = DitaTargetOf(end);
    const std::string last = target.has_value() ? target->element : std::string();
    const auto isLast = [&last](const xmlNode* node) { return Attribute(node, "id") == last; };
    const xmlNode* found = original;
    while (found != nullptr && !isLast(found)) {
        found = NextElement(found);
    }
    if (found == nullptr) {
        return false;
    }
    for (const xmlNode* node = original; node != found;) {
        node = NextElement(node);
        xmlNode* next = xmlDocCopyNode(const_cast<xmlNode*>(node), copy->doc, 1);
        xmlUnsetProp(next, Xml("id"));
        copy = xmlAddNextSibling(copy, next);
    }
    return true;
}

/// Replaces the referring element with a copy of its target; null, with the element unchanged, if there is no
/// target.
xmlNode* ReplaceWithTarget(xmlNode* referring, const std::string& conref, DitaLibrary& library,
                           const RemarkSink& remarks) {
    const auto target = DitaTargetOf(conref);
    const xmlDoc* document = target.has_value() ? library.Document(target->path) : nullptr;
    xmlNode* original = document == nullptr ? nullptr : FindTarget(document, *target);
    if (original == nullptr) {
        return nullptr;
    }
    const std::string end = Attribute(referring, "conrefend");
    xmlNode* copy = xmlDocCopyNode(original, referring->doc, 1);
    OverrideAttributes(referring, copy);
    xmlReplaceNode(referring, copy);
    xmlFreeNode(referring);
    if (!CopyRange(original, copy, end)) {
        remarks(xmlGetLineNo(copy), kDeadReference,
                "conrefend=\"" + AsWritten(copy->doc, end) +
                    "\" is no element after the target; only the target is reused");
    }
    return copy;
}

/// A copy may contain references of its own, which are resolved in turn: the walk goes on in the copy, not
/// after it. Two things could keep it from ending. A target that contains a reference to itself is recognised
/// because its reference is still open; targets that each contain the next one twice are stopped by a limit.
struct ConrefRun {
    const DitaKeys& keys;
    DitaLibrary& library;
    const RemarkSink& remarks;
    std::vector<std::string> open;  ///< The references whose copies enclose the current element.
    int copies = 0;
};

xmlNode* Resolve(ConrefRun& run, xmlNode* element);

void ResolveChildren(ConrefRun& run, xmlNode* parent) {
    for (xmlNode* child = FirstElement(parent); child != nullptr; child = NextElement(child)) {
        child = Resolve(run, child);
    }
}

/// The reference that `conkeyref` stands for, else `conref`. Content that is pushed to another topic is not
/// pulled.
std::string ReferenceOf(const ConrefRun& run, const xmlNode* element) {
    if (element->properties == nullptr || xmlHasProp(element, Xml("conaction")) != nullptr) {
        return {};
    }
    const std::string reference = Attribute(element, "conkeyref");
    const std::size_t slash = std::min(reference.find('/'), reference.size());
    const auto key = run.keys.find(reference.substr(0, slash));
    if (reference.empty() || key == run.keys.end() || key->second.href.empty()) {
        return Attribute(element, "conref");
    }
    const std::string& href = key->second.href;
    if (slash == reference.size()) {
        return href;
    }
    return href + (href.find('#') == std::string::npos ? "#" : "") + reference.substr(slash);
}

void KeepOwnContent(const ConrefRun& run, xmlNode* element, const std::string& conref) {
    const std::string key = Attribute(element, "conkeyref");
    if (run.keys.empty() && conref.empty()) {
        return;
    }
    if (!conref.empty()) {
        run.remarks(xmlGetLineNo(element), kDeadReference,
                    "conref=\"" + AsWritten(element->doc, conref) +
                        "\" has no usable target; the element keeps its own content");
    } else if (!key.empty()) {
        run.remarks(xmlGetLineNo(element), kUnknownKey,
                    "conkeyref=\"" + key +
                        "\": the map does not define this key with a target; the element "
                        "keeps its own content");
    }
    xmlUnsetProp(element, Xml("conref"));
    xmlUnsetProp(element, Xml("conkeyref"));
}

/// Resolves the element and its descendants. Returns the element that is now in its place.
xmlNode* Resolve(ConrefRun& run, xmlNode* element) {
    const std::string conref = ReferenceOf(run, element);
    const bool cycle = std::find(run.open.begin(), run.open.end(), conref) != run.open.end();
    const bool tooMany = !conref.empty() && ++run.copies > kMaxConrefs;
    xmlNode* copy = conref.empty() || cycle || tooMany
                        ? nullptr
                        : ReplaceWithTarget(element, conref, run.library, run.remarks);
    if (copy == nullptr) {
        KeepOwnContent(run, element, conref);
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

/// Phrases and terms become links if their key has a target.
bool IsPhrase(const xmlNode* node) {
    return HasType(node, "topic/keyword") || HasType(node, "topic/term") || HasType(node, "topic/ph") ||
           HasType(node, "topic/cite");
}

void SetIfAbsent(xmlNode* element, const char* name, const std::string& value) {
    if (!value.empty() && Attribute(element, name).empty()) {
        xmlSetProp(element, Xml(name), Xml(value.c_str()));
    }
}

std::string WithElement(const std::string& href, const std::string& elementId) {
    if (elementId.empty()) {
        return href;
    }
    return href + (href.find('#') == std::string::npos ? "#/" : "/") + elementId;
}

void ApplyKey(xmlNode* element, const DitaKey& key, const std::string& elementId, DitaLibrary& library) {
    const bool isTopicref = HasType(element, "map/topicref");
    const bool isImage = HasType(element, "topic/image");
    const std::string href = key.href.empty() ? std::string() : WithElement(key.href, elementId);
    if (!href.empty() && (IsLink(element) || IsPhrase(element) || isImage || isTopicref)) {
        xmlSetProp(element, Xml("href"), Xml(href.c_str()));
        SetIfAbsent(element, "format", key.format);
        SetIfAbsent(element, "scope", key.scope);
    }
    if (isTopicref || isImage || !TextOf(element).empty() || FirstElement(element) != nullptr) {
        return;
    }
    std::string text = key.text;
    if (text.empty() && IsPhrase(element) && !href.empty()) {
        text = TitleOf(href, library);
    }
    if (HasType(element, "topic/link")) {
        SetIfAbsent(element, "page-title", text);
    } else {
        xmlNodeAddContent(element, Xml(text.c_str()));
    }
}

struct LineRange {
    std::size_t first = 1;
    std::size_t last = static_cast<std::size_t>(-1);
};

/// "#line-range(5,10)"; everything if there is none.
LineRange RangeIn(const std::string& fragment) {
    LineRange range;
    const std::size_t open = fragment.find("line-range(");
    if (open != std::string::npos) {
        char* end = nullptr;
        range.first = std::strtoul(fragment.c_str() + open + 11, &end, 10);
        range.last = *end == ',' ? std::strtoul(end + 1, nullptr, 10) : range.last;
    }
    return range;
}

std::string Lines(const std::string& content, const LineRange& range) {
    std::string lines;
    std::size_t number = 1;
    for (std::size_t at = 0; at < content.size(); ++number) {
        const std::size_t end = std::min(content.find('\n', at), content.size());
        if (number >= range.first && number <= range.last) {
            lines.append(lines.empty() ? "" : "\n").append(content, at, end - at);
        }
        at = end + 1;
    }
    std::erase(lines, '\r');
    return lines;
}

/// The text that the element stands for; nothing, with a warning, if its file cannot be read.
std::optional<std::string> CodeOf(const xmlNode* element, const RemarkSink& remarks) {
    const std::string href = Attribute(element, "href");
    const auto target = DitaTargetOf(href);
    ReadScope* scope = ReadScope::Current();
    std::string content;
    if (!target.has_value() || (scope != nullptr && !scope->Permits(target->path, nullptr)) ||
        platform::ReadRegularFile(ToFilesystem(target->path), kMaxFileBytes, content) ||
        xmlCheckUTF8(Xml(content.c_str())) == 0) {
        remarks(xmlGetLineNo(element), kDeadReference,
                "coderef \"" + AsWritten(element->doc, href) +
                    "\" is not a readable UTF-8 file; its lines are missing");
        return std::nullopt;
    }
    return Lines(content, RangeIn(href.substr(std::min(href.find('#'), href.size()))));
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
    summary.readable = loaded.document != nullptr;
    return summaries_.insert({path, std::move(summary)}).first->second;
}

void ResolveConrefs(xmlDoc* document, const DitaKeys& keys, DitaLibrary& library, const RemarkSink& remarks) {
    ConrefRun run{.keys = keys, .library = library, .remarks = remarks, .open = {}};
    Resolve(run, xmlDocGetRootElement(document));
}

void ResolveKeyrefs(xmlDoc* document, const DitaKeys& keys, DitaLibrary& library, const RemarkSink& remarks) {
    xmlNode* root = xmlDocGetRootElement(document);
    for (xmlNode* node = root; node != nullptr; node = NextNode(node, root)) {
        const std::string reference = node->type == XML_ELEMENT_NODE && node->properties != nullptr
                                          ? Attribute(node, "keyref")
                                          : std::string();
        if (reference.empty() || HasType(node, "subjectScheme/subjectdef")) {
            continue;
        }
        const std::size_t slash = std::min(reference.find('/'), reference.size());
        const auto key = keys.find(reference.substr(0, slash));
        if (key == keys.end()) {
            remarks(xmlGetLineNo(node), kUnknownKey,
                    "keyref=\"" + reference + "\": the map does not define this key");
            continue;
        }
        ApplyKey(node, key->second, slash < reference.size() ? reference.substr(slash + 1) : std::string(),
                 library);
    }
}

void ResolveCoderefs(xmlDoc* document, const RemarkSink& remarks) {
    xmlNode* root = xmlDocGetRootElement(document);
    for (xmlNode* node = root; node != nullptr;) {
        if (!HasType(node, "pr-d/coderef")) {
            node = NextNode(node, root);
            continue;
        }
        const auto code = CodeOf(node, remarks);
        xmlNode* text = xmlNewDocText(document, Xml(code.value_or("").c_str()));
        xmlReplaceNode(node, text);
        xmlFreeNode(node);
        node = NextNode(text, root);
    }
}

std::string TitleOf(const std::string& absoluteReference, DitaLibrary& library) {
    const auto target = DitaTargetOf(absoluteReference);
    if (!target.has_value()) {
        return {};
    }
    const TopicSummary& summary = library.Summary(target->path);
    if (target->topic.empty() && target->element.empty()) {
        return summary.title;
    }
    if (target->topic.empty()) {
        return summary.topicId.empty() ? std::string()
                                       : TitleOf(absoluteReference.substr(0, absoluteReference.find('#')) +
                                                     "#" + summary.topicId + "/" + target->element,
                                                 library);
    }
    const auto title =
        summary.titles.find(target->element.empty() ? target->topic : target->topic + "/" + target->element);
    return title == summary.titles.end() ? std::string() : title->second;
}

}  // namespace ventrix::desk
