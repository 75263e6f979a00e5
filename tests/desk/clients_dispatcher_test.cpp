#include "desk/clients/dispatcher_client.h"

#include "desk/folder_fixture.h"

namespace ventrix::desk {
namespace {

class DispatcherClient : public FolderFixture {
  protected:
    DispatcherClient() {
        Write("dtds/topic ü.dtd", "<!ENTITY nbsp '&#160;'>");
        Write("dtds/acme.dtd", "<!ENTITY product 'P40'>");
        Write("dtds/db44.dtd", "");
        Write("catalog.xml",
              "<catalog xmlns='urn:oasis:names:tc:entity:xmlns:xml:catalog'>"
              "<public publicId='-//OASIS//DTD DITA Topic//EN' uri='dtds/topic%20%C3%BC.dtd'/>"
              "<public publicId='-//ACME//DTD Machine//EN' uri='dtds/acme.dtd'/>"
              "<public publicId='-//OASIS//DTD DocBook XML V4.4//EN' uri='dtds/db44.dtd'/>"
              "<public publicId='-//OASIS//DTD DITA Task//EN' uri='dtds/absent.dtd'/>"
              "<system systemId='http://acme.example/machine.dtd' uri='dtds/acme.dtd'/></catalog>");
        client_ = MakeDispatcherClient({.catalog = {Native("catalog.xml")}});
    }
    /// The one string of the answer, or else the number of its values.
    std::string Ask(const std::string& command) {
        const ClientAnswer answer = client_(command, {});
        return answer.values.size() == 1 ? std::get<std::string>(answer.values[0])
                                         : std::to_string(answer.values.size());
    }
    Client client_;
};

TEST_F(DispatcherClient, DocumentLeadsToItsDtd) {
    Write("local.dtd", "");
    const struct {
        const char *content, *application;
        const char* dtd;  // "0": no answer
    } rows[] = {
        {"<!DOCTYPE topic PUBLIC '-//OASIS//DTD DITA Topic//EN' 'topic.dtd'><topic>&nbsp;</topic>",
         "DITA Topic", "dtds/topic ü.dtd"},
        {"<topic>&nbsp;</topic>", "DITA Topic", "dtds/topic ü.dtd"},
        {"<!DOCTYPE t SYSTEM 'http://elsewhere.example/dtd/topic.dtd'><t/>", "DITA Topic",
         "dtds/topic ü.dtd"},
        {"<!DOCTYPE m PUBLIC '-//ACME//DTD Machine//EN' 'm.dtd'><m a='&product;'/>",
         "-//ACME//DTD Machine//EN", "dtds/acme.dtd"},
        {"<!DOCTYPE m SYSTEM 'http://acme.example/machine.dtd'><m/>", "http://acme.example/machine.dtd",
         "dtds/acme.dtd"},
        {"<!DOCTYPE article PUBLIC '-//OASIS//DTD DocBook XML V4.4//EN' 'x.dtd'><article/>",
         "-//OASIS//DTD DocBook XML V4.4//EN", "dtds/db44.dtd"},
        {"<article/>", "DocBook", "dtds/db44.dtd"},
        {"<task/>", "DITA Task", "0"},  // the catalog names a file that is missing
        {"<!DOCTYPE x PUBLIC '-//NO//ONE//EN' 'x.dtd'><x/>", "-//NO//ONE//EN", "0"},
        {"<nothing/>", "0", "0"},
        {"no XML", "0", "0"},
    };
    for (const auto& row : rows) {
        Write("a document.xml", row.content);
        const std::string application = Ask("ChooseAppForFile " + System("a document.xml"));
        EXPECT_EQ(application, row.application) << row.content;
        const std::string dtd =
            Ask("StructAppInfo -appName " + (application == "0" ? "" : application) + " -info DTDPath");
        EXPECT_EQ(dtd, std::string(row.dtd) == "0" ? "0" : Native(row.dtd)) << row.content;
    }
    Write("d.xml", "<!DOCTYPE x SYSTEM 'local.dtd'><x>&product;</x>");
    EXPECT_EQ(Ask("ChooseAppForFile " + System("d.xml")), Native("local.dtd"));
    EXPECT_EQ(Ask("StructAppInfo -appName " + Native("local.dtd") + " -info DTDPath"), Native("local.dtd"));
}

TEST_F(DispatcherClient, UnknownCommandsAreRefused) {
    EXPECT_EQ(Ask("ChooseAppForFile " + System("absent.xml")), "0");
    EXPECT_EQ(client_("StructAppInfo -appName x -info Other", {}).status, 1);
    EXPECT_EQ(client_("StructAppInfo -appName -info DTDPath", {}).status, 1);
    EXPECT_EQ(client_("", {}).status, 1);
    EXPECT_TRUE(
        MakeDispatcherClient({.catalog = {Native("absent.xml")}})("ChooseAppForFile x", {}).values.empty());
}

}  // namespace
}  // namespace ventrix::desk
