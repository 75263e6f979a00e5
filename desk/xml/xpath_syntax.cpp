#include "desk/xml/xpath_syntax.h"

#include <libxml/xpath.h>

#include <memory>

#include "desk/xml/xml_handles.h"

namespace ventrix::desk {
namespace {

struct FreeXPath {
    void operator()(xmlXPathContext* context) const { xmlXPathFreeContext(context); }
    void operator()(xmlXPathCompExpr* expression) const { xmlXPathFreeCompExpr(expression); }
};

/// libxml2 gives the place of an error in an expression, as an offset in bytes, and no message.
std::string Describe(const xmlError& error) {
    return "syntax error at character " + std::to_string(error.int1 + 1);
}

}  // namespace

bool IsQualifiedName(const std::string& text) {
    return text.find('\0') == std::string::npos && xmlValidateQName(Xml(text.c_str()), 0) == 0;
}

std::string XPathProblem(const std::string& query) {
    std::string problem;
    const std::unique_ptr<xmlXPathContext, FreeXPath> context(xmlXPathNewContext(nullptr));
    context->userData = &problem;
    context->error = [](void* found, xmlErrorPtr error) {
        auto& text = *static_cast<std::string*>(found);
        text = text.empty() ? Describe(*error) : text;
    };
    const std::unique_ptr<xmlXPathCompExpr, FreeXPath> compiled(
        xmlXPathCtxtCompile(context.get(), Xml(query.c_str())));
    return compiled == nullptr && problem.empty() ? "syntax error" : problem;
}

}  // namespace ventrix::desk
