#include "desk/toolkit/subject_scheme.h"

#include <algorithm>
#include <iterator>
#include <set>
#include <sstream>
#include <vector>

#include "desk/toolkit/dita_classes.h"
#include "desk/xml/lenient_load.h"
#include "desk/xml/reference_path.h"
#include "desk/xml/xml_handles.h"

namespace ventrix::desk {
namespace {

/// An attribute and the subject whose values it takes.
struct Binding {
    std::string attribute;
    std::string subject;
};

struct SchemeReader {
    std::map<std::string, std::vector<std::string>> children;    ///< By subject.
    std::map<std::string, std::vector<std::string>> otherNames;  ///< Of subjects with several names, by name.
    std::vector<Binding> bindings;
    std::vector<NativePath> waiting;
    std::set<NativePath> known;
};

bool Is(const xmlNode* node, const char* name) {
    return node->type == XML_ELEMENT_NODE &&
           (View(node->name) == name || HasType(node, std::string("subjectScheme/") + name));
}

/// The names of a subject: those that it defines, or the one that it refers to.
std::vector<std::string> NamesOf(const xmlNode* subject) {
    std::vector<std::string> names;
    for (const char* attribute : {"keys", "keyref"}) {
        std::istringstream words(Attribute(subject, attribute));
        for (std::string word; words >> word;) {
            names.push_back(word);
        }
        if (!names.empty()) {
            break;
        }
    }
    return names;
}

void ReadSubject(SchemeReader& reader, const xmlNode* subject) {
    const std::vector<std::string> names = NamesOf(subject);
    for (const std::string& name : names) {
        std::ranges::copy(names, std::back_inserter(reader.otherNames[name]));
    }
    // Subjects may be grouped by elements that are none.
    const xmlNode* above = subject->parent;
    while (above != nullptr && above->type == XML_ELEMENT_NODE && !Is(above, "subjectdef")) {
        above = above->parent;
    }
    if (above == nullptr || above->type != XML_ELEMENT_NODE) {
        return;
    }
    for (const std::string& parent : NamesOf(above)) {
        std::ranges::copy(names, std::back_inserter(reader.children[parent]));
    }
}

void ReadBinding(SchemeReader& reader, const xmlNode* definition) {
    std::string attribute;
    for (const xmlNode* child = FirstElement(definition); child != nullptr; child = NextElement(child)) {
        if (Is(child, "attributedef")) {
            attribute = Attribute(child, "name");
        } else if (Is(child, "subjectdef") && !attribute.empty()) {
            for (const std::string& subject : NamesOf(child)) {
                reader.bindings.push_back({attribute, subject});
            }
        }
    }
}

void WaitFor(SchemeReader& reader, const xmlNode* element, const NativePath& map) {
    const std::string href = Attribute(element, "href");
    const bool isMap = Attribute(element, "format") == "ditamap" ||
                       href.substr(0, href.find('#')).ends_with(".ditamap") ||
                       Attribute(element, "type") == "subjectScheme" || Is(element, "schemeref");
    const NativePath target = isMap ? TargetOf(href, FolderOf(map)).path : NativePath{};
    if (!target.Empty() && reader.known.insert(target).second) {
        reader.waiting.push_back(target);
    }
}

void ReadMap(SchemeReader& reader, const NativePath& map) {
    const LenientDocument loaded = LoadLeniently(map, LoadFor::kDita);
    xmlNode* root = loaded.document == nullptr ? nullptr : xmlDocGetRootElement(loaded.document.get());
    for (xmlNode* node = root; node != nullptr; node = NextNode(node, root)) {
        if (node->type != XML_ELEMENT_NODE) {
            continue;
        }
        WaitFor(reader, node, map);
        if (Is(node, "enumerationdef")) {
            ReadBinding(reader, node);
        } else if (Is(node, "subjectdef") && !Is(node->parent, "enumerationdef")) {
            ReadSubject(reader, node);
        }
    }
}

void Bind(const SchemeReader& reader, const Binding& binding, SubjectScheme& scheme) {
    auto& parents = scheme[binding.attribute];
    std::vector<std::string> waiting{binding.subject};
    std::set<std::string> known{binding.subject};
    while (!waiting.empty()) {
        const std::string parent = waiting.back();
        waiting.pop_back();
        const auto below = reader.children.find(parent);
        if (below == reader.children.end()) {
            continue;
        }
        for (const std::string& child : below->second) {
            for (const std::string& name : reader.otherNames.at(child)) {
                parents[name].insert(parent);
                if (known.insert(name).second) {
                    waiting.push_back(name);
                }
            }
        }
    }
}

}  // namespace

SubjectScheme ReadSubjectScheme(const NativePath& map) {
    SchemeReader reader;
    reader.known.insert(map);
    reader.waiting.push_back(map);
    while (!reader.waiting.empty()) {
        const NativePath next = reader.waiting.back();
        reader.waiting.pop_back();
        ReadMap(reader, next);
    }
    SubjectScheme scheme;
    for (const Binding& binding : reader.bindings) {
        Bind(reader, binding, scheme);
    }
    return scheme;
}

}  // namespace ventrix::desk
