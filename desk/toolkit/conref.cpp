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

/// Adds copies of the elements after the first of a range, up to its last.
void CopyRange(const xmlNode* first, const xmlNode* last, xmlNode* copy) {
    for (const xmlNode* node = first; node != last;) {
        node = NextElement(node);
        xmlNode* next = xmlDocCopyNode(const_cast<xmlNode*>(node), copy->doc, 1);
        xmlUnsetProp(next, Xml("id"));
        SetSource(next, SourceOf(copy));
        copy = xmlAddNextSibling(copy, next);
    }
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

/// A reference as its author wrote it.
Subject SubjectOf(const xmlNode* element, const std::string& conref) {
    const std::string key = Attribute(element, "conkeyref");
    Subject subject = ReferenceIn("conref", element, conref);
    if (!key.empty() && conref != Attribute(element, "conref")) {
        subject.attribute = "conkeyref";
        subject.value = key;
    }
    return subject;
}

/// By key with the file that the key leads to.
std::string Quoted(const Subject& subject, const xmlNode* element, const std::string& conref) {
    const bool isKey = subject.attribute == "conkeyref";
    return subject.attribute + "=\"" + subject.value + "\"" +
           (isKey ? " (" + AsWritten(element, conref.substr(0, conref.find('#'))) + ")" : "");
}

std::string ExcludedBy(const ConrefRun& run) {
    return "is excluded by the filter (" + run.library.Sources().filterNames + ")";
}

void ReportTarget(const ConrefRun& run, const xmlNode* element, const std::string& conref,
                  const std::string& problem) {
    const Subject subject = SubjectOf(element, conref);
    run.remarks(element, kDeadReference,
                Quoted(subject, element, conref) + " " + problem + "; the element keeps its own content",
                subject);
}

/// The element that the reference names. Null, with a remark, if there is none, or none that could be in the
/// place of the referring element.
xmlNode* Reused(const ConrefRun& run, const xmlNode* element, const std::string& conref) {
    const auto target = DitaTargetOf(conref);
    const xmlDoc* document = target.has_value() ? run.library.Document(target->path) : nullptr;
    xmlNode* reused = document == nullptr ? nullptr : FindTarget(document, *target);
    const std::string base = BaseName(element);
    if (reused == nullptr) {
        const bool excluded = target.has_value() && run.library.IsExcluded(*target);
        ReportTarget(run, element, conref, excluded ? ExcludedBy(run) : "has no usable target");
    } else if (!base.empty() && base != BaseName(reused)) {
        ReportTarget(
            run, element, conref,
            "names a <" + std::string(View(reused->name)) + ">, which is not a kind of <" + base + ">");
        return nullptr;
    }
    return reused;
}

/// The last element of the range that begins with the first, which it is itself without `conrefend`, or with
/// one that names no element after it.
const xmlNode* RangeEnd(const ConrefRun& run, const xmlNode* element, const xmlNode* first) {
    const std::string end = Attribute(element, "conrefend");
    const auto target = DitaTargetOf(end);
    if (end.empty()) {
        return first;
    }
    const xmlNode* last = target.has_value() ? first : nullptr;
    while (last != nullptr && Attribute(last, "id") != target->element) {
        last = NextElement(last);
    }
    if (last != nullptr) {
        return last;
    }
    const bool excluded = target.has_value() && run.library.IsExcluded(*target);
    const Subject subject = ReferenceIn("conrefend", element, end);
    run.remarks(element, kDeadReference,
                "conrefend=\"" + subject.value + "\" " +
                    (excluded ? ExcludedBy(run) : "is no element after the target") +
                    "; only the target is reused",
                subject);
    return first;
}

/// Replaces the referring element with a copy of its target; null, with the element unchanged, if there is
/// none.
xmlNode* ReplaceWithTarget(const ConrefRun& run, xmlNode* element, const std::string& conref) {
    xmlNode* reused = Reused(run, element, conref);
    if (reused == nullptr) {
        return nullptr;
    }
    const xmlNode* last = RangeEnd(run, element, reused);
    xmlNode* copy = xmlDocCopyNode(reused, element->doc, 1);
    OverrideAttributes(element, copy);
    SetSource(copy, DitaTargetOf(conref)->path);
    xmlReplaceNode(element, copy);
    xmlFreeNode(element);
    CopyRange(reused, last, copy);
    return copy;
}

/// A reference by key waits until the keys are known.
void DropReferences(const ConrefRun& run, xmlNode* element) {
    xmlUnsetProp(element, Xml("conref"));
    if (run.keys != nullptr) {
        xmlUnsetProp(element, Xml("conkeyref"));
    }
}

void ReportKey(const ConrefRun& run, const xmlNode* element, const DitaKeys& keys) {
    const std::string reference = Attribute(element, "conkeyref");
    if (!reference.empty()) {
        const bool excluded = IsExcludedKey(keys, reference.substr(0, reference.find('/')));
        run.remarks(
            element, kUnknownKey,
            "conkeyref=\"" + reference + "\": " +
                (excluded ? run.library.ExcludedKey() : "the map does not define this key with a target") +
                "; the element keeps its own content",
            {.attribute = "conkeyref", .value = reference});
    }
}

/// Null, with a remark where the element has a reference, if nothing is in its place.
xmlNode* Replace(ConrefRun& run, xmlNode* element, const std::string& conref) {
    if (conref.empty()) {
        if (run.keys != nullptr) {
            ReportKey(run, element, *run.keys);
        }
        return nullptr;
    }
    if (std::ranges::find(run.open, conref) != run.open.end()) {
        ReportTarget(run, element, conref, "leads back to itself");
        return nullptr;
    }
    if (++run.copies > kMaxConrefs) {
        ReportTarget(run, element, conref, "is one of more than " + std::to_string(kMaxConrefs));
        return nullptr;
    }
    return ReplaceWithTarget(run, element, conref);
}

/// Resolves the element and its descendants. Returns the element that is now in its place.
xmlNode* Resolve(ConrefRun& run, xmlNode* element) {
    const std::string conref = ReferenceOf(run, element);
    xmlNode* copy = Replace(run, element, conref);
    if (copy == nullptr) {
        DropReferences(run, element);
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
