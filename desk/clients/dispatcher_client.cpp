#include "desk/clients/dispatcher_client.h"

#include <libxml/catalog.h>

#include <filesystem>
#include <memory>

#include "desk/clients/applications.h"
#include "desk/xml/lenient_load.h"
#include "desk/xml/reference_path.h"
#include "platform/drives.h"

namespace ventrix::desk {
namespace {

struct FreeCatalog {
    void operator()(xmlCatalog* catalog) const { xmlFreeCatalog(catalog); }
};
using Catalog = std::shared_ptr<xmlCatalog>;

/// The file behind a catalog's answer; empty if there is none or it is missing.
std::string FileOf(const XmlText& uri) {
    const std::string path = uri == nullptr ? std::string() : TargetOf(View(uri.get()), "/").path;
    std::error_code error;
    return std::filesystem::is_regular_file(path, error) ? path : std::string();
}

/// The DTD under a public or system id: the user's catalog first, then the machine's own.
std::string Resolve(const Catalog& catalog, const std::string& id) {
    if (catalog != nullptr) {
        for (xmlChar* uri : {xmlACatalogResolvePublic(catalog.get(), Xml(id.c_str())),
                             xmlACatalogResolveSystem(catalog.get(), Xml(id.c_str()))}) {
            const XmlText owner(uri);
            if (std::string file = FileOf(owner); !file.empty()) {
                return file;
            }
        }
    }
    const std::string file = FileOf(XmlText(xmlCatalogResolvePublic(Xml(id.c_str()))));
    return file.empty() ? FileOf(XmlText(xmlCatalogResolveSystem(Xml(id.c_str())))) : file;
}

DocumentType TypeOf(const std::string& path) {
    const LenientDocument loaded = LoadLeniently(path);
    DocumentType type;
    if (loaded.document == nullptr) {
        return type;
    }
    type.root = View(xmlDocGetRootElement(loaded.document.get())->name);
    if (const xmlDtd* dtd = loaded.document->intSubset) {
        type.publicId = View(dtd->ExternalID);
        type.systemId = View(dtd->SystemID);
    }
    return type;
}

/// A DTD that lies where the document says; empty without one.
std::string LocalDtd(const DocumentType& type, const std::string& document) {
    const std::string path = TargetOf(type.systemId, FolderOf(document)).path;
    std::error_code error;
    return !path.empty() && std::filesystem::is_regular_file(path, error) ? path : std::string();
}

std::string DtdOf(const Catalog& catalog, const std::string& application) {
    for (const std::string& id : PublicIdsOf(application)) {
        if (std::string file = Resolve(catalog, id); !file.empty()) {
            return file;
        }
    }
    std::error_code error;
    const bool isFile = application.starts_with('/') && std::filesystem::is_regular_file(application, error);
    return isFile ? application : std::string();
}

/// The second question knows nothing but the name, so a DTD that no catalog knows is named by its path, and
/// one that the catalogs know by its system id only, by that.
std::string ChooseApplication(const Catalog& catalog, const std::string& systemPath) {
    const std::string document = platform::ToNative(systemPath);
    const DocumentType type = TypeOf(document);
    std::string application = ApplicationOf(type);
    if (!type.publicId.empty() && !DtdOf(catalog, application).empty()) {
        return application;
    }
    if (std::string local = LocalDtd(type, document); !local.empty()) {
        return local;
    }
    if (!type.systemId.empty() && !Resolve(catalog, type.systemId).empty()) {
        return type.systemId;
    }
    return application;
}

ClientAnswer AnswerOf(const std::string& text) {
    ClientAnswer answer;
    if (!text.empty()) {
        answer.values.emplace_back(text);
    }
    return answer;
}

ClientAnswer RunCommand(const Catalog& catalog, const std::string& command) {
    constexpr std::string_view kChoose = "ChooseAppForFile ";
    constexpr std::string_view kTell = "StructAppInfo -appName ";
    constexpr std::string_view kWhat = " -info DTDPath";
    if (command.starts_with(kChoose)) {
        return AnswerOf(ChooseApplication(catalog, command.substr(kChoose.size())));
    }
    if (command.starts_with(kTell) && command.ends_with(kWhat) &&
        command.size() >= kTell.size() + kWhat.size()) {
        return AnswerOf(
            DtdOf(catalog, command.substr(kTell.size(), command.size() - kTell.size() - kWhat.size())));
    }
    return {.status = 1, .number = 0, .values = {}};
}

}  // namespace

Client MakeDispatcherClient(DispatcherSettings settings) {
    Catalog catalog;
    if (!settings.catalog.empty()) {
        catalog = Catalog(xmlLoadACatalog(settings.catalog.c_str()), FreeCatalog());
        // The parsers that load a document's DTD ask the process's catalogs only.
        xmlLoadCatalog(settings.catalog.c_str());
    }
    return
        [catalog](const std::string& command, const HostServices&) { return RunCommand(catalog, command); };
}

}  // namespace ventrix::desk
