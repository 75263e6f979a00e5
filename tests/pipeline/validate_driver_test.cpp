#include "pipeline/validate_driver.h"

#include "support/module_test.h"

namespace ventrix::test {
namespace {

using ValidateDriver = ModuleTest;

TEST_F(ValidateDriver, ReportsTheStateOfTheReferences) {
    for (const char* path : {R"(C:\a.xml)", R"(C:\b.xml)", R"(D:\d.xml)", R"(D:\p.png)", R"(C:\p.png)",
                             R"(\\server\one\s.xml)", R"(\\server\two\t.xml)"}) {
        drives.Write(path, "");
    }
    const Lines tried = {kTriedLine};
    const Lines rootsError = {"Fehler:" + kRootsText};
    const Lines rootsWarning = {"Achtung:" + kRootsText};
    const auto valid = [](const Lines& paths) { return Section(kValidLine, paths); };
    const struct {
        const char* name;
        std::vector<HostValue> files;
        int mask;
        Lines log;
    } rows[] = {
        {"clean",
         {Document(R"(C:\a.xml)"), Graphic(R"(C:\p.png)")},
         0,
         tried + valid({R"(C:\a.xml)", R"(C:\p.png)"})},
        {"missing graphic",
         {Document(R"(C:\a.xml)"), Graphic(R"(C:\no.png)")},
         1,
         tried + valid({R"(C:\a.xml)"}) + Section(kBrokenLine, {R"(C:\no.png)"})},
        {"unsaved files are listed last",
         {Document(R"(C:\a.xml)", 1), Document(R"(C:\no.xml)"), Document(R"(C:\b.xml)")},
         3,
         tried + valid({R"(C:\b.xml)"}) + Section(kBrokenLine, {R"(C:\no.xml)"}) +
             Section(kUnsavedLine, {R"(C:\a.xml)"})},
        {"documents on two drives",
         {Document(R"(C:\a.xml)"), Document(R"(D:\d.xml)"), Graphic(R"(D:\p.png)")},
         8,
         tried + valid({R"(C:\a.xml)", R"(D:\d.xml)", R"(D:\p.png)"}) + rootsError + rootsWarning},
        {"a broken document counts for the roots",
         {Document(R"(C:\a.xml)"), Document(R"(Q:\no.xml)")},
         9,
         tried + valid({R"(C:\a.xml)"}) + Section(kBrokenLine, {R"(Q:\no.xml)"}) + rootsError},
        {"keys that resemble that of graphics are documents",
         {Document(R"(C:\a.xml)"), Fields({Text("graphicsTypes"), Text(R"(D:\p.png)"), Number(0)})},
         8,
         tried + valid({R"(C:\a.xml)", R"(D:\p.png)"}) + rootsError},
        {"the same, shorter",
         {Document(R"(C:\a.xml)"), Fields({Text("graphics"), Text(R"(D:\p.png)"), Number(0)})},
         8,
         tried + valid({R"(C:\a.xml)", R"(D:\p.png)"}) + rootsError},
        {"graphic on another drive",
         {Document(R"(C:\a.xml)"), Graphic(R"(D:\p.png)")},
         0,
         tried + valid({R"(C:\a.xml)", R"(D:\p.png)"}) + rootsWarning},
        {"two shares of one server",
         {Document(R"(\\server\one\s.xml)"), Document(R"(\\server\two\t.xml)")},
         0,
         tried + valid({R"(\\server\one\s.xml)", R"(\\server\two\t.xml)"})},
        {"graphics without a document",
         {Graphic(R"(C:\p.png)"), Graphic(R"(D:\p.png)")},
         0,
         tried + valid({R"(C:\p.png)", R"(D:\p.png)"})},
        {"a web address is not a file", {Document("http://example.org/a.xml")}, 0, tried},
        {"no references", {}, 0, tried},
    };
    for (const auto& row : rows) {
        host.documents[7].files = row.files;
        std::filesystem::remove(drives.Native(R"(C:\log.txt)"));
        EXPECT_EQ(ValidateDocument(7, R"(C:\log.txt)"), row.mask) << row.name;
        EXPECT_EQ(LogLines(), row.log) << row.name;
    }
}

TEST_F(ValidateDriver, AppendsASecondRunToTheLog) {
    drives.Write(R"(C:\a.xml)", "");
    host.documents[7].files = {Document(R"(C:\a.xml)")};
    ValidateDocument(7, R"(C:\log.txt)");
    std::filesystem::remove(drives.Native(R"(C:\a.xml)"));
    EXPECT_EQ(ValidateDocument(7, R"(C:\log.txt)"), kValidateBroken);
    EXPECT_EQ(LogLines(), Lines{kTriedLine} + Section(kValidLine, {R"(C:\a.xml)"}) + Lines{kTriedLine} +
                              Section(kBrokenLine, {R"(C:\a.xml)"}));
}

TEST_F(ValidateDriver, DoesNotScanWithoutALog) {
    referenceCache = {5, {{"t", ReferenceKind::kValid, "kept"}}};
    host.log.clear();
    EXPECT_EQ(ValidateDocument(7, ""), kValidateWithoutLog);
    EXPECT_EQ(ValidateDocument(7, R"(C:\no\folder\log.txt)"), kValidateWithoutLog);
    EXPECT_TRUE(host.log.empty());
    EXPECT_EQ(referenceCache.documentId, 5u);
    EXPECT_EQ(referenceCache.list.size(), 1u);
}

}  // namespace
}  // namespace ventrix::test
