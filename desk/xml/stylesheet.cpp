#include "desk/xml/stylesheet.h"

#include <libexslt/exslt.h>
#include <libxslt/extensions.h>
#include <libxslt/transform.h>
#include <libxslt/variables.h>
#include <libxslt/xsltutils.h>

#include <filesystem>
#include <optional>

#include "desk/xml/doctype.h"
#include "desk/xml/lenient_load.h"
#include "desk/xml/network_guard.h"
#include "platform/files.h"

namespace ventrix::desk {
namespace {

constexpr const char* kExtensionNamespace = "urn:ventrix:desk-host";

struct FreeTransform {
    void operator()(xsltTransformContext* context) const { xsltFreeTransformContext(context); }
};

/// What the extension element needs to know and leaves behind; it finds this through the context.
struct RunState {
    NativePath sourcePath;
    std::optional<std::string> copiedText;
};

/// xsltTransformError alone reports the error but lets the transformation go on.
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

void RegisterExtensions() {
    static const bool done = [] {
        exsltRegisterAll();
        xsltRegisterExtModuleElement(Xml("copy-document"), Xml(kExtensionNamespace), nullptr, CopyDocument);
        return true;
    }();
    static_cast<void>(done);
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
    RegisterExtensions();
    const NetworkGuard guard(messages);
    Stylesheet stylesheet(xsltParseStylesheetFile(Xml(FileUri(path).c_str())));
    if (stylesheet != nullptr && stylesheet->errors != 0) {
        stylesheet.reset();
    }
    return stylesheet;
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
    RegisterExtensions();
    const NetworkGuard guard(messages);
    const std::unique_ptr<xsltTransformContext, FreeTransform> context(
        xsltNewTransformContext(job.stylesheet.get(), job.document));
    RunState state{.sourcePath = job.sourcePath, .copiedText = {}};
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
