#include "desk/xml/stylesheet.h"

#include <libexslt/exslt.h>
#include <libxslt/extensions.h>
#include <libxslt/security.h>
#include <libxslt/transform.h>
#include <libxslt/variables.h>
#include <libxslt/xsltutils.h>

#include <algorithm>
#include <filesystem>
#include <optional>

#include "desk/xml/doctype.h"
#include "desk/xml/file_access.h"
#include "desk/xml/lenient_load.h"
#include "desk/xml/network_guard.h"
#include "desk/xml/reference_path.h"
#include "platform/files.h"

namespace ventrix::desk {
namespace {

constexpr const char* kExtensionNamespace = "urn:ventrix:desk-host";

struct FreeTransform {
    void operator()(xsltTransformContext* context) const { xsltFreeTransformContext(context); }
};

/// The input and output of the extension element, which finds this record through the context.
struct RunState {
    NativePath sourcePath;
    NativePath outputPath;
    NativePath outputFolder;
    std::optional<std::string> copiedText;
};

/// xsltTransformError alone reports the error but lets the transformation continue.
void FailTransform(xsltTransformContext* context, xmlNode* instruction, const std::string& reason) {
    xsltTransformError(context, nullptr, instruction, "%s\n", reason.c_str());
    context->state = XSLT_STATE_STOPPED;
}

void CopyDocument(xsltTransformContext* context, xmlNode*, xmlNode* instruction, xsltElemPreComp*) {
    auto& state = *static_cast<RunState*>(context->_private);
    std::string text;
    const std::string& source = state.sourcePath.utf8;
    if (platform::ReadWholeFile(source, text) != platform::kErrorNone) {
        FailTransform(context, instruction, "copy-document: " + source + " cannot be read");
        return;
    }
    state.copiedText = WithSystemId(text, Attribute(instruction, "system-id"));
    if (!state.copiedText.has_value()) {
        FailTransform(context, instruction, "copy-document: " + source + " has no root element");
    }
}

/// libxslt asks for each file and each folder that a stylesheet is about to create, and, before it starts,
/// for the output file with the folders above it.
int MayWrite(xsltSecurityPrefs*, xsltTransformContext* context, const char* path) {
    if (context == nullptr) {
        return 0;
    }
    const RunState& state = *static_cast<RunState*>(context->_private);
    const NativePath& folder = state.outputFolder;
    if (IsBelowOrEqual(state.outputPath, {path}) || (!folder.Empty() && LiesInOneOf({path}, {folder}))) {
        return 1;
    }
    FailTransform(context, context->inst,
                  "the stylesheet may not write " + std::string(path) +
                      (folder.Empty() ? "" : ", which is outside the output folder " + folder.utf8));
    return 0;
}

/// libxslt checks imported stylesheets and document() against the process's default preferences only, so they
/// cannot be set for one transformation.
void SetSecurityPreferences() {
    xsltSecurityPrefs* preferences = xsltNewSecurityPrefs();
    xsltSetSecurityPrefs(preferences, XSLT_SECPREF_READ_NETWORK, xsltSecurityForbid);
    xsltSetSecurityPrefs(preferences, XSLT_SECPREF_WRITE_NETWORK, xsltSecurityForbid);
    xsltSetSecurityPrefs(preferences, XSLT_SECPREF_WRITE_FILE, MayWrite);
    xsltSetSecurityPrefs(preferences, XSLT_SECPREF_CREATE_DIRECTORY, MayWrite);
    xsltSetDefaultSecurityPrefs(preferences);
}

void PrepareLibxslt() {
    static const bool done = [] {
        SetSecurityPreferences();
        exsltRegisterAll();
        xsltRegisterExtModuleElement(Xml("copy-document"), Xml(kExtensionNamespace), nullptr, CopyDocument);
        return true;
    }();
    static_cast<void>(done);
}

void AddFilesOf(const xsltStylesheet* stylesheet, std::vector<NativePath>& files) {
    const auto add = [&files](const xmlDoc* document) {
        if (document != nullptr) {
            files.push_back(TargetOf(View(document->URL), {"/"}).path);
        }
    };
    add(stylesheet->doc);
    for (const xsltDocument* included = stylesheet->docList; included != nullptr; included = included->next) {
        add(included->doc);
    }
    for (const xsltStylesheet* import = stylesheet->imports; import != nullptr; import = import->next) {
        AddFilesOf(import, files);
    }
}

std::string Serialised(const Stylesheet& stylesheet, xmlDoc* tree) {
    xmlChar* bytes = nullptr;
    int length = 0;
    xsltSaveResultToString(&bytes, &length, tree, stylesheet.get());
    const XmlString owner(bytes);
    return bytes == nullptr
               ? std::string()
               : std::string(reinterpret_cast<const char*>(bytes), static_cast<std::size_t>(length));
}

}  // namespace

Stylesheet LoadStylesheet(const NativePath& path, const MessageSink& messages) {
    PrepareLibxslt();
    const NetworkGuard guard(messages);
    Stylesheet stylesheet(xsltParseStylesheetFile(Xml(FileUri(path).c_str())));
    if (stylesheet != nullptr && stylesheet->errors != 0) {
        stylesheet.reset();
    }
    return stylesheet;
}

std::vector<NativePath> FilesOf(const xsltStylesheet* stylesheet) {
    std::vector<NativePath> files;
    AddFilesOf(stylesheet, files);
    std::ranges::sort(files, {}, &NativePath::utf8);
    const auto repeated = std::unique(files.begin(), files.end());
    files.erase(repeated, files.end());
    return files;
}

XmlDocument LoadForStylesheet(const NativePath& path, const MessageSink& messages) {
    LenientDocument loaded = LoadLeniently(path, LoadFor::kStylesheet);
    for (const std::string& entity : loaded.undeclaredEntities) {
        messages(path.utf8 + ": " + entity);
    }
    if (!loaded.wellFormed) {
        messages(path.utf8 + ": " + loaded.reason);
        loaded.document.reset();
    }
    return std::move(loaded.document);
}

Transformed Transform(const TransformJob& job, const MessageSink& messages) {
    PrepareLibxslt();
    const NetworkGuard guard(messages);
    const std::unique_ptr<xsltTransformContext, FreeTransform> context(
        xsltNewTransformContext(job.stylesheet.get(), job.document));
    RunState state{.sourcePath = job.sourcePath,
                   .outputPath = job.outputPath,
                   .outputFolder = job.outputFolder,
                   .copiedText = {}};
    context->_private = &state;
    xsltSetCtxtParseOptions(context.get(), XSLT_PARSE_OPTIONS | XML_PARSE_NONET);
    for (const auto& [name, value] : job.parameters) {
        xsltQuoteOneUserParam(context.get(), Xml(name.c_str()), Xml(value.c_str()));
    }
    const std::string outputUri = job.outputPath.Empty() ? std::string() : FileUri(job.outputPath);
    const XmlDocument tree(xsltApplyStylesheetUser(job.stylesheet.get(), job.document, nullptr,
                                                   outputUri.empty() ? nullptr : outputUri.c_str(), nullptr,
                                                   context.get()));
    if (tree == nullptr || context->state != XSLT_STATE_OK) {
        return {};
    }
    return {true, state.copiedText.has_value() ? *state.copiedText : Serialised(job.stylesheet, tree.get())};
}

bool WriteOutput(const NativePath& path, std::string_view output) {
    std::error_code error;
    std::filesystem::create_directories(ToFilesystem(path).parent_path(), error);
    return platform::WriteWholeFile(path.utf8, output) == platform::kErrorNone;
}

}  // namespace ventrix::desk
