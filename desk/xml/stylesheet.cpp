#include "desk/xml/stylesheet.h"

#include <libexslt/exslt.h>
#include <libxml/HTMLtree.h>
#include <libxml/uri.h>
#include <libxslt/extensions.h>
#include <libxslt/imports.h>
#include <libxslt/security.h>
#include <libxslt/templates.h>
#include <libxslt/transform.h>
#include <libxslt/variables.h>
#include <libxslt/xsltutils.h>

#include <algorithm>
#include <filesystem>
#include <optional>
#include <utility>

#include "desk/xml/doctype.h"
#include "desk/xml/file_access.h"
#include "desk/xml/lenient_load.h"
#include "desk/xml/network_guard.h"
#include "desk/xml/reference_path.h"
#include "desk/xml/xhtml.h"
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
    int furtherFiles = 0;
    std::string failure;
};

/// xsltTransformError alone reports the error but lets the transformation continue.
void FailTransform(xsltTransformContext* context, xmlNode* instruction, const std::string& reason) {
    xsltTransformError(context, nullptr, instruction, "%s\n", reason.c_str());
    context->state = XSLT_STATE_STOPPED;
    std::string& failure = static_cast<RunState*>(context->_private)->failure;
    failure = failure.empty() ? reason : failure;
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

/// The value of an attribute of an instruction, with the expressions in braces evaluated.
std::string Evaluated(xsltTransformContext* context, xmlNode* instruction, const char* name) {
    const XmlString value(xsltEvalAttrValueTemplate(context, instruction, Xml(name), nullptr));
    return std::string(View(value.get()));
}

xmlChar* CopyOf(const std::string& text) {
    return text.empty() ? nullptr : xmlStrdup(Xml(text.c_str()));
}

/// How exsl:document wants its file serialised: as a stylesheet with these settings would. What it does not
/// say is as in the stylesheet that contains it.
Stylesheet OutputSettings(xsltTransformContext* context, xmlNode* instruction) {
    Stylesheet settings(xsltNewStylesheet());
    const auto value = [&](const char* name) { return Evaluated(context, instruction, name); };
    const std::string method = value("method");
    const xmlChar* inherited = nullptr;
    XSLT_GET_IMPORT_PTR(inherited, context->style, method)
    settings->method = method.empty() ? xmlStrdup(inherited) : CopyOf(method);
    settings->encoding = CopyOf(value("encoding"));
    settings->doctypePublic = CopyOf(value("doctype-public"));
    settings->doctypeSystem = CopyOf(value("doctype-system"));
    settings->omitXmlDeclaration = value("omit-xml-declaration") == "yes" ? 1 : 0;
    settings->indent = value("indent") == "yes" ? 1 : 0;
    return settings;
}

/// The content of an instruction, built as a document of its own.
XmlDocument ContentOf(xsltTransformContext* context, xmlNode* node, xmlNode* instruction, bool html) {
    XmlDocument content(html ? htmlNewDocNoDtD(nullptr, nullptr) : xmlNewDoc(Xml("1.0")));
    content->dict = context->dict;
    xmlDictReference(context->dict);
    xmlDoc* output = std::exchange(context->output, content.get());
    xmlNode* insert = std::exchange(context->insert, reinterpret_cast<xmlNode*>(content.get()));
    xsltApplyOneTemplate(context, node, instruction->children, nullptr, nullptr);
    context->output = output;
    context->insert = insert;
    return content;
}

void AddDoctype(xmlDoc* document, const xsltStylesheet& settings) {
    const xmlNode* root = xmlDocGetRootElement(document);
    if (root != nullptr && (settings.doctypePublic != nullptr || settings.doctypeSystem != nullptr)) {
        xmlCreateIntSubset(document, root->name, settings.doctypePublic, settings.doctypeSystem);
    }
}

std::string Serialised(const Stylesheet& stylesheet, xmlDoc* tree) {
    if (tree->children == nullptr) {
        return {};
    }
    if (tree->type == XML_HTML_DOCUMENT_NODE) {
        return XhtmlOf(tree);
    }
    xmlChar* bytes = nullptr;
    int length = 0;
    xsltSaveResultToString(&bytes, &length, tree, stylesheet.get());
    const XmlString owner(bytes);
    return bytes == nullptr
               ? std::string()
               : std::string(reinterpret_cast<const char*>(bytes), static_cast<std::size_t>(length));
}

/// exsl:document. The library's own would write HTML that is not XML.
void WriteDocument(xsltTransformContext* context, xmlNode* node, xmlNode* instruction, xsltElemPreComp*) {
    auto& state = *static_cast<RunState*>(context->_private);
    const std::string href = Evaluated(context, instruction, "href");
    const XmlString uri(xmlBuildURI(Xml(href.c_str()), Xml(context->outputFile)));
    const NativePath path = TargetOf(View(uri.get()), FolderOf(state.outputPath)).path;
    if (href.empty() || path.Empty()) {
        FailTransform(context, instruction, "exsl:document: href=\"" + href + "\" names no file");
        return;
    }
    if (MayWrite(nullptr, context, path.utf8.c_str()) == 0) {
        return;
    }
    const Stylesheet settings = OutputSettings(context, instruction);
    const bool html = View(settings->method) == "html";
    const XmlDocument content = ContentOf(context, node, instruction, html);
    if (context->state != XSLT_STATE_OK) {
        return;
    }
    const xmlNode* root = xmlDocGetRootElement(content.get());
    if (settings->method == nullptr && root != nullptr && View(root->name) == "html" && root->ns == nullptr) {
        content->type = XML_HTML_DOCUMENT_NODE;
    }
    AddDoctype(content.get(), *settings);
    if (!WriteOutput(path, Serialised(settings, content.get()))) {
        FailTransform(context, instruction,
                      path.utf8 + " cannot be written; check its permissions and the free space");
        return;
    }
    ++state.furtherFiles;
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
        xsltRegisterExtModuleElement(Xml("document"), EXSLT_COMMON_NAMESPACE, nullptr, WriteDocument);
        xsltRegisterExtModuleElement(Xml("copy-document"), Xml(kExtensionNamespace), nullptr, CopyDocument);
        return true;
    }();
    static_cast<void>(done);
}

/// The failure if a parameter cannot be used; else empty.
std::string SetParameters(xsltTransformContext* context, const TransformJob& job) {
    for (const auto& [name, value] : job.parameters) {
        if (xsltQuoteOneUserParam(context, Xml(name.c_str()), Xml(value.c_str())) != 0) {
            return "the parameter " + name + " cannot be set; check its name";
        }
    }
    for (const auto& [name, expression] : job.expressions) {
        if (xsltEvalOneUserParam(context, Xml(name.c_str()), Xml(expression.c_str())) != 0) {
            return "the parameter " + name + " cannot be set: '" + expression +
                   "' is not an XPath expression; pass text with --string-param";
        }
    }
    return {};
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

LoadedDocument LoadForStylesheet(const NativePath& path, const MessageSink& messages) {
    LenientDocument loaded = LoadLeniently(path, LoadFor::kStylesheet);
    for (const std::string& entity : loaded.undeclaredEntities) {
        messages(path.utf8 + ": " + entity);
    }
    if (!loaded.wellFormed) {
        messages(path.utf8 + ": " + loaded.reason);
        return {};
    }
    NetworkGuard guard(messages);
    std::vector<FailedInclusion> failed = ProcessInclusions(loaded.document.get(), guard);
    return {std::move(loaded.document), std::move(failed)};
}

Transformed Transform(const TransformJob& job, const MessageSink& messages) {
    PrepareLibxslt();
    const NetworkGuard guard(messages);
    const std::unique_ptr<xsltTransformContext, FreeTransform> context(
        xsltNewTransformContext(job.stylesheet.get(), job.document));
    RunState state{.sourcePath = job.sourcePath,
                   .outputPath = job.outputPath,
                   .outputFolder = job.outputFolder,
                   .copiedText = {},
                   .failure = {}};
    context->_private = &state;
    xsltSetCtxtParseOptions(context.get(), XSLT_PARSE_OPTIONS | XML_PARSE_NONET);
    if (const std::string failure = SetParameters(context.get(), job); !failure.empty()) {
        return {.failure = failure};
    }
    const std::string outputUri = job.outputPath.Empty() ? std::string() : FileUri(job.outputPath);
    const XmlDocument tree(xsltApplyStylesheetUser(job.stylesheet.get(), job.document, nullptr,
                                                   outputUri.empty() ? nullptr : outputUri.c_str(), nullptr,
                                                   context.get()));
    if (tree == nullptr || context->state != XSLT_STATE_OK) {
        return {.failure = state.failure};
    }
    return {true,
            state.copiedText.has_value() ? *state.copiedText : Serialised(job.stylesheet, tree.get()),
            state.furtherFiles,
            {}};
}

bool WriteOutput(const NativePath& path, std::string_view output) {
    std::error_code error;
    std::filesystem::create_directories(ToFilesystem(path).parent_path(), error);
    return platform::WriteWholeFile(path.utf8, output) == platform::kErrorNone;
}

}  // namespace ventrix::desk
