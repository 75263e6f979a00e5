// Runs the client "Dita OT" on documents in a test's folder.
#pragma once

#include "desk/clients/dita_ot_client.h"
#include "desk/folder_fixture.h"
#include "support/page_query.h"

namespace ventrix::desk {

class DitaClient : public FolderFixture {
  protected:
    /// Publishes a document of the folder to "out". Returns the status.
    std::int32_t Run(const std::string& document, const std::string& ditaval = {}) {
        record_ = {};
        HostServices host;
        host.documentPath = [&](std::uint32_t id) { return SystemPath{id == 7 ? System(document) : ""}; };
        const std::string filter = ditaval.empty() ? "" : " -filter \"" + System(ditaval) + "\"";
        settings_.dataFolder = {VENTRIX_DATA_FOLDER};
        return MakeDitaOtClient(settings_, access_, record_)(
                   "Save -docId 7 -transtype xhtml" + filter + " -outFilePath \"" + System("out/") + "\"",
                   host)
            .status;
    }
    /// Writes t.dita, a topic with the id t and this content of its body.
    void WriteTopic(const std::string& body) const {
        Write("t.dita", "<topic id='t'><title>T</title><body>" + body + "</body></topic>");
    }
    std::string Page(const std::string& name) const { return Read("out/xhtml/" + name); }
    std::string Log() const { return Read("out/buildlog-xhtml.txt"); }

    /// The value of an XPath expression on a page: a string, or that of the first node. The body has the
    /// content of "main" only.
    std::string Query(const std::string& page, const std::string& xpath) const {
        std::string text = Page(page);
        const auto cut = [&text](const char* from, const char* to) {
            const std::size_t start = text.find(from) + std::string(from).size();
            text.erase(start, std::min(text.find(to, start), text.size()) - start);
        };
        if (text.find("<main") != std::string::npos) {
            cut("<body", "<main");
            text.insert(text.find("<main"), ">");
            cut("</main>", "</body>");
        }
        return QueryIn(text, xpath);
    }
    /// The same with the whole body.
    std::string QueryFrame(const std::string& page, const std::string& xpath) const {
        return QueryIn(Page(page), xpath);
    }
    static std::string QueryIn(std::string text, const std::string& xpath) {
        const std::string space = " xmlns=\"http://www.w3.org/1999/xhtml\"";
        if (const std::size_t at = text.find(space); at != std::string::npos) {
            text.erase(at, space.size());
        }
        const test::Texts found = test::Found(text, xpath);
        return found.empty() ? "" : found.front();
    }
    FileAccess access_;
    TransformationRecord record_;
    DitaOtSettings settings_;
};

}  // namespace ventrix::desk
