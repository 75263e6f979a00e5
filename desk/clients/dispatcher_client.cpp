#include "desk/clients/dispatcher_client.h"

#include <libxml/catalog.h>

#include <filesystem>
#include <memory>

#include "desk/clients/applications.h"
#include "desk/xml/lenient_load.h"
#include "desk/xml/reference_path.h"

namespace ventrix::desk {
namespace {

struct FreeCatalog {
    void operator()(xmlCatalog* catalog) const { xmlFreeCatalog(catalog); }
};
using Catalog = std::shared_ptr<xmlCatalog>;

/// The path if a file is there; else empty.
NativePath ExistingFile(const NativePath& path) {
    std::error_code error;
    return std::filesystem::is_regular_file(ToFilesystem(path), error) ? path : NativePath{};
}

/// The file that a catalog's answer names; empty if there is no answer or the file is missing.
NativePath FileOf(const XmlString& uri) {
    return uri == nullptr ? NativePath{} : ExistingFile(TargetOf(View(uri.get()), {"/"}).path);
}

/// The DTD with this public or system id: from the user's catalog, else from the machine's own.
NativePath Resolve(const Catalog& catalog, const std::string& id) {
    if (catalog != nullptr) {
        for (auto* resolve : {xmlACatalogResolvePublic, xmlACatalogResolveSystem}) {
            const XmlString uri(resolve(catalog.get(), Xml(id.c_str())));
            if (NativePath file = FileOf(uri); !file.Empty()) {
                return file;
            }
        }
    }
    const NativePath file = FileOf(XmlString(xmlCatalogResolvePublic(Xml(id.c_str()))));
    return file.Empty() ? FileOf(XmlString(xmlCatalogResolveSystem(Xml(id.c_str())))) : file;
}

/// The first file that the internal subset pulls in. A document without a DTD that can be found, whose
/// entities come from such files, is repaired with the file as its DTD: whoever loads the DTD then loads all
/// of them.
std::string FirstSubsetFile(const xmlDtd& dtd) {
    for (const xmlNode* node = dtd.children; node != nullptr; node = node->next) {
        const auto* entity =
            node->type == XML_ENTITY_DECL ? reinterpret_cast<const xmlEntity*>(node) : nullptr;
        if (entity != nullptr && entity->etype == XML_EXTERNAL_PARAMETER_ENTITY) {
            return std::string(View(entity->SystemID));
        }
    }
    return {};
}

struct Doctype {
    DocumentType type;
    std::string subsetFile;
};

Doctype DoctypeOf(const NativePath& path) {
    const LenientDocument loaded = LoadLeniently(path);
    Doctype doctype;
    if (loaded.document == nullptr) {
        return doctype;
    }
    doctype.type.root = View(xmlDocGetRootElement(loaded.document.get())->name);
    if (const xmlDtd* dtd = loaded.document->intSubset) {
        doctype.type.publicId = View(dtd->ExternalID);
        doctype.type.systemId = View(dtd->SystemID);
        doctype.subsetFile = FirstSubsetFile(*dtd);
    }
    return doctype;
}

/// The DTD at the location that an id in the document names; empty if there is none.
NativePath LocalDtd(const std::string& systemId, const NativePath& document) {
    return ExistingFile(TargetOf(systemId, FolderOf(document)).path);
}

NativePath DtdOf(const Catalog& catalog, const std::string& application) {
    for (const std::string& id : PublicIdsOf(application)) {
        if (NativePath file = Resolve(catalog, id); !file.Empty()) {
            return file;
        }
    }
    return IsAbsolute({application}) ? ExistingFile({application}) : NativePath{};
}

/// StructAppInfo receives nothing but the name that is returned here. A DTD that is in no catalog is
/// therefore named by its path, and one that the catalogs list by system id only is named by that.
std::string ChooseApplication(const Catalog& catalog, const SystemPath& path) {
    const NativePath document = ToNative(path);
    const auto [type, subsetFile] = DoctypeOf(document);
    std::string application = ApplicationOf(type);
    const bool isKnown = !DtdOf(catalog, application).Empty();
    if (!type.publicId.empty() && isKnown) {
        return application;
    }
    if (const NativePath local = LocalDtd(type.systemId, document); !local.Empty()) {
        return local.utf8;
    }
    if (!type.systemId.empty() && !Resolve(catalog, type.systemId).Empty()) {
        return type.systemId;
    }
    const bool namesDtd = !type.publicId.empty() || !type.systemId.empty();
    const NativePath subset = namesDtd && isKnown ? NativePath{} : LocalDtd(subsetFile, document);
    return subset.Empty() ? application : subset.utf8;
}

ClientAnswer AnswerOf(const std::string& text) {
    ClientAnswer answer;
    if (!text.empty()) {
        answer.values.emplace_back(text);
    }
    return answer;
}

ClientAnswer RunCommand(const Catalog& catalog, EntityDtds& entityDtds, const std::string& command) {
    constexpr std::string_view kChoose = "ChooseAppForFile ";
    constexpr std::string_view kDescribe = "StructAppInfo -appName ";
    constexpr std::string_view kWhat = " -info DTDPath";
    if (command.starts_with(kChoose)) {
        const SystemPath path{command.substr(kChoose.size())};
        const std::string application = ChooseApplication(catalog, path);
        const NativePath dtd = entityDtds.DtdFor(ToNative(path), DtdOf(catalog, application));
        return AnswerOf(dtd.Empty() ? application : dtd.utf8);
    }
    if (command.starts_with(kDescribe) && command.ends_with(kWhat) &&
        command.size() >= kDescribe.size() + kWhat.size()) {
        const std::string application =
            command.substr(kDescribe.size(), command.size() - kDescribe.size() - kWhat.size());
        return AnswerOf(DtdOf(catalog, application).utf8);
    }
    return {.status = 1, .number = 0, .values = {}};
}

}  // namespace

Client MakeDispatcherClient(DispatcherSettings settings) {
    Catalog catalog;
    if (!settings.catalog.Empty()) {
        catalog = Catalog(xmlLoadACatalog(settings.catalog.utf8.c_str()), FreeCatalog());
        // A parser that loads a document's DTD asks only the catalogs of the process.
        xmlLoadCatalog(settings.catalog.utf8.c_str());
    }
    const auto entityDtds = std::make_shared<EntityDtds>(std::move(settings.declaringDocument));
    return [catalog, entityDtds](const std::string& command, const HostServices&) {
        return RunCommand(catalog, *entityDtds, command);
    };
}

}  // namespace ventrix::desk
