// Runs the client "Dita OT" over documents in a test's folder.
#pragma once

#include <libxml/xpath.h>

#include "desk/clients/dita_ot_client.h"
#include "desk/documents/xml_handles.h"
#include "desk/folder_fixture.h"

namespace ventrix::desk {

class DitaClient : public FolderFixture {
  protected:
    /// Publishes a document of the folder into "out".
    std::int32_t Run(const std::string& document, const std::string& ditaval = {}) {
        record_ = {};
        HostServices host;
        host.documentPath = [this, &document](std::uint32_t id) { return id == 7 ? System(document) : ""; };
        const std::string filter = ditaval.empty() ? "" : " -filter \"" + System(ditaval) + "\"";
        return MakeDitaOtClient({.toolkit = toolkit_, .dataFolder = VENTRIX_DATA_FOLDER}, record_)(
                   "Save -docId 7 -transtype xhtml" + filter + " -outFilePath \"" + System("out/") + "\"",
                   host)
            .status;
    }
    std::string Page(const std::string& name) const { return Read("out/xhtml/" + name); }
    std::string Log() const { return Read("out/buildlog-xhtml.txt"); }

    /// The string value of an XPath over a page, which must be well-formed.
    std::string Query(const std::string& page, const std::string& xpath) const {
        std::string text = Page(page);
        const std::string space = " xmlns=\"http://www.w3.org/1999/xhtml\"";
        if (const std::size_t at = text.find(space); at != std::string::npos) {
            text.erase(at, space.size());
        }
        const XmlDocument document(xmlReadMemory(text.data(), static_cast<int>(text.size()), "page", nullptr,
                                                 XML_PARSE_NONET | XML_PARSE_NOERROR));
        if (document == nullptr) {
            return "no page " + page;
        }
        xmlXPathContext* context = xmlXPathNewContext(document.get());
        xmlXPathObject* value = xmlXPathEvalExpression(Xml(xpath.c_str()), context);
        const XmlText result(xmlXPathCastToString(value));
        xmlXPathFreeObject(value);
        xmlXPathFreeContext(context);
        return std::string(View(result.get()));
    }
    TransformationRecord record_;
    std::string toolkit_ = "builtin";
};

}  // namespace ventrix::desk
