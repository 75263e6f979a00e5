#include "pipeline/reference_scan.h"

#include "support/module_test.h"

namespace ventrix::test {
namespace {

class ReferenceScan : public ModuleTest {
  protected:
    void SetUp() override {
        drives.Write(R"(C:\a.xml)", "");
        drives.MakeFolder(R"(C:\folder)");
    }

    /// The entries of the cache as "kind key path", in order.
    static std::vector<std::string> Cached() {
        std::vector<std::string> rows;
        for (const ReferenceEntry& entry : referenceCache.list) {
            rows.push_back(std::to_string(static_cast<int>(entry.kind)) + " " + entry.key + " " + entry.path);
        }
        return rows;
    }
};

TEST_F(ReferenceScan, TakesOnlyFilesFromTheHostsValues) {
    const HostValue key = Text("t"), path = Text(R"(C:\a.xml)");
    const struct {
        const char* name;
        HostValue value;
        int bits;
        std::vector<std::string> entries;
    } rows[] = {
        {"valid", Fields({key, path, Number(0)}), 0, {R"(1 t C:\a.xml)"}},
        {"flagged", Fields({key, path, Number(-1)}), kValidateUnsaved, {R"(3 t C:\a.xml)"}},
        {"more than three fields",
         Fields({key, path, Number(1), key}),
         kValidateUnsaved,
         {R"(3 t C:\a.xml)"}},
        {"the flag is a string", Fields({key, path, Text("1")}), 0, {R"(1 t C:\a.xml)"}},
        {"missing", Document(R"(C:\no.xml)"), kValidateBroken, {R"(2 documentType C:\no.xml)"}},
        {"missing and flagged",
         Document(R"(C:\no.xml)", 1),
         kValidateBroken,
         {R"(2 documentType C:\no.xml)"}},
        {"a folder", Graphic(R"(C:\folder)"), kValidateBroken, {R"(2 graphicsType C:\folder)"}},
        {"a missing drive", Graphic(R"(Q:\a.xml)"), kValidateBroken, {R"(2 graphicsType Q:\a.xml)"}},
        {"a web address in capitals is a file name",
         Document("HTTP://a"),
         kValidateBroken,
         {"2 documentType HTTP://a"}},
        {"a web address", Document("https://example.org/a.xml"), 0, {}},
        {"two fields", Fields({key, path}), 0, {}},
        {"no fields", Fields({}), 0, {}},
        {"the key is a number", Fields({Number(1), path, Number(0)}), 0, {}},
        {"the path is a number", Fields({key, Number(1), Number(0)}), 0, {}},
        {"a string", path, 0, {}},
        {"a number", Number(3), 0, {}},
    };
    for (const auto& row : rows) {
        host.documents[7].files = {row.value};
        EXPECT_EQ(RenewReferences(7), row.bits) << row.name;
        EXPECT_EQ(Cached(), row.entries) << row.name;
    }
}

TEST_F(ReferenceScan, AppendsEntriesInTheHostsOrder) {
    host.documents[7].files = {Document(R"(C:\no.xml)"), Text("noise"), Graphic(R"(C:\a.xml)"),
                               Document(R"(C:\a.xml)", 1)};
    EXPECT_EQ(ScanReferences(7, referenceCache.list), kValidateBroken | kValidateUnsaved);
    EXPECT_EQ(ScanReferences(8, referenceCache.list), 0) << "without an answer nothing is appended";
    EXPECT_EQ(Cached(), (std::vector<std::string>{R"(2 documentType C:\no.xml)", R"(1 graphicsType C:\a.xml)",
                                                  R"(3 documentType C:\a.xml)"}));
    EXPECT_EQ(host.log.back(), "ListDocumentFiles 8 16 0");
}

TEST_F(ReferenceScan, RenewsTheCacheOnlyForAnotherDocumentOrAValidate) {
    for (const std::uint32_t id : {7u, 8u}) {
        host.documents[id] = {R"(C:\a.xml)", {Document(R"(C:\a.xml)")}};
    }
    const std::string validate7 = R"(Validate -docId 7 -logFile C:\log.txt)";
    const std::string validateWithoutLog7 = R"(Validate -docId 7 -logFile C:\no\folder\log.txt)";
    const std::string publish7 = R"(Publish -docId 7 -outputFolder C:\out\ -useDITAOT -logFile C:\log.txt)";
    const std::string publish8 = R"(Publish -docId 8 -outputFolder C:\out\ -useDITAOT -logFile C:\log.txt)";
    const struct {
        const char* name;
        std::vector<std::string> requests;
        std::vector<std::string> scans;
    } rows[] = {
        {"publish after publish", {publish7, publish7}, {"ListDocumentFiles 7 16 0"}},
        {"publish after validate", {validate7, publish7, publish7}, {"ListDocumentFiles 7 16 0"}},
        {"validate always scans",
         {publish7, validate7, validate7},
         {"ListDocumentFiles 7 16 0", "ListDocumentFiles 7 16 0", "ListDocumentFiles 7 16 0"}},
        {"another document between two requests",
         {validate7, publish8, publish7},
         {"ListDocumentFiles 7 16 0", "ListDocumentFiles 8 16 0", "ListDocumentFiles 7 16 0"}},
        {"validate without a log keeps the cache",
         {publish8, validateWithoutLog7, publish8},
         {"ListDocumentFiles 8 16 0"}},
    };
    for (const auto& row : rows) {
        referenceCache = {};
        host.log.clear();
        for (const std::string& request : row.requests) {
            host.Request(request);
        }
        std::erase_if(host.log,
                      [](const std::string& call) { return !call.starts_with("ListDocumentFiles "); });
        EXPECT_EQ(host.log, row.scans) << row.name;
    }
}

}  // namespace
}  // namespace ventrix::test
