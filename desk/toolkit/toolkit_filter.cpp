#include "desk/toolkit/toolkit_filter.h"

#include <filesystem>

#include "desk/xml/lenient_load.h"
#include "desk/xml/reference_path.h"
#include "desk/xml/stylesheet.h"
#include "desk/xml/xml_handles.h"

namespace ventrix::desk {
namespace {

namespace fs = std::filesystem;

constexpr char kProbe[] = "ventrix-filter";

void AddProbe(xmlNode* root) {
    for (int i = 0; i < 2; ++i) {
        xmlNode* rule = xmlNewChild(root, nullptr, Xml("prop"), nullptr);
        xmlNewProp(rule, Xml("att"), Xml(kProbe));
        xmlNewProp(rule, Xml("val"), Xml("read"));
        xmlNewProp(rule, Xml("action"), Xml("include"));
    }
}

/// Copies the image of a flag and makes the rule refer to the copy. The name is a number, because the
/// original name may be one that a toolkit misreads.
void CopyImage(xmlNode* element, const NativePath& filter, const NativePath& folder, int& images) {
    for (const char* name : {"imageref", "img"}) {
        const NativePath image = TargetOf(Attribute(element, name), FolderOf(filter)).path;
        std::error_code error;
        if (image.Empty() || !fs::is_regular_file(ToFilesystem(image), error)) {
            continue;
        }
        const std::string copy =
            "flag-" + std::to_string(++images) + ToFilesystem(image).extension().string();
        fs::copy_file(ToFilesystem(image), ToFilesystem(folder) / copy, error);
        xmlSetProp(element, Xml(name), Xml(copy.c_str()));
    }
}

void AppendRules(xmlNode* root, const xmlDoc* rules, const NativePath& filter, const NativePath& folder,
                 int& images) {
    const xmlNode* source = xmlDocGetRootElement(rules);
    for (xmlNode* rule = FirstElement(source); rule != nullptr; rule = NextElement(rule)) {
        xmlNode* copy = xmlAddChild(root, xmlDocCopyNode(rule, root->doc, 1));
        for (xmlNode* node = copy; node != nullptr; node = NextNode(node, copy)) {
            if (node->type == XML_ELEMENT_NODE) {
                CopyImage(node, filter, folder, images);
            }
        }
    }
}

}  // namespace

NativePath WriteToolkitFilter(const std::vector<NativePath>& filters, const NativePath& folder,
                              std::string& reason) {
    const XmlDocument merged(xmlNewDoc(Xml("1.0")));
    xmlNode* root = xmlNewDocNode(merged.get(), nullptr, Xml("val"), nullptr);
    xmlDocSetRootElement(merged.get(), root);
    int images = 0;
    for (const NativePath& filter : filters) {
        const LenientDocument loaded = LoadLeniently(filter);
        if (!loaded.wellFormed) {
            reason = "the filter cannot be read: " + filter.utf8 + ": " + loaded.reason;
            return {};
        }
        AppendRules(root, loaded.document.get(), filter, folder, images);
    }
    AddProbe(root);
    xmlChar* bytes = nullptr;
    int length = 0;
    xmlDocDumpMemoryEnc(merged.get(), &bytes, &length, "UTF-8");
    const XmlString owner(bytes);
    NativePath file{folder.utf8 + "/filter.ditaval"};
    if (!WriteOutput(file, View(owner.get()))) {
        reason = file.utf8 + " cannot be written; check the free space";
        return {};
    }
    return file;
}

bool ShowsFilterWasRead(std::string_view line) {
    return line.find(kProbe) != std::string_view::npos && line.find("DOTJ007") != std::string_view::npos;
}

}  // namespace ventrix::desk
