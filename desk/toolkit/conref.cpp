#include "desk/toolkit/conref.h"

#include <algorithm>

#include "desk/toolkit/dita_classes.h"
#include "desk/toolkit/dita_run.h"

namespace ventrix::desk {
namespace {

constexpr int kMaxConrefs = 20'000;  ///< In one document: content that doubles with each level has to end.

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
        SetSource(next, SourceOf(copy));
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
    const bool isBranch = HasType(referring, "map/topicref");
    if (original == nullptr || (isBranch && !HasType(original, "map/topicref"))) {
        return nullptr;
    }
    const std::string end = Attribute(referring, "conrefend");
    xmlNode* copy = xmlDocCopyNode(original, referring->doc, 1);
    OverrideAttributes(referring, copy);
    SetSource(copy, target->path);
    xmlReplaceNode(referring, copy);
    xmlFreeNode(referring);
    if (!CopyRange(original, copy, end)) {
        remarks(copy, kDeadReference,
                "conrefend=\"" + AsWritten(copy, end) +
                    "\" is no element after the target; only the target is reused");
    }
    return copy;
}

/// A copy may contain references of its own, which are resolved in turn: the walk goes on in the copy, not
/// after it. Two things could keep it from ending. A target that contains a reference to itself is recognised
/// because its reference is still open; targets that each contain the next one twice are stopped by a limit.
struct ConrefRun {
    const DitaKeys* keys;
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
    if (reference.empty() || run.keys == nullptr) {
        return Attribute(element, "conref");
    }
    const auto key = run.keys->find(reference.substr(0, slash));
    if (key == run.keys->end() || key->second.href.empty()) {
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
    if (run.keys == nullptr && conref.empty()) {
        return;
    }
    if (!conref.empty()) {
        run.remarks(element, kDeadReference,
                    "conref=\"" + AsWritten(element, conref) +
                        "\" has no usable target; the element keeps its own content");
    } else if (!key.empty()) {
        run.remarks(element, kUnknownKey,
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

}  // namespace

void ResolveConrefs(xmlDoc* document, const DitaKeys* keys, DitaLibrary& library, const RemarkSink& remarks) {
    ConrefRun run{.keys = keys, .library = library, .remarks = remarks, .open = {}};
    Resolve(run, xmlDocGetRootElement(document));
}

}  // namespace ventrix::desk
