#include "pipeline/packaging.h"

#include "support/module_test.h"

namespace ventrix::test {
namespace {

class Packaging : public ModuleTest {
  protected:
    void SetUp() override {
        drives.Write(R"(C:\out\old.txt)", "from an earlier run");
        for (const char* path :
             {R"(C:\src\maps\guide.ditamap)", R"(C:\src\topics\a.dita)", R"(C:\src\images\p.png)",
              R"(D:\images\far.png)", R"(D:\b.dita)", R"(C:\out\inside.dita)"}) {
            drives.Write(path, path);
        }
    }

    /// Runs PackageFiles for document 7 into C:\out\, with the cache empty.
    int Package(const std::string& documentPath, std::vector<HostValue> files) {
        referenceCache = {};
        host.documents[7] = {documentPath, std::move(files)};
        packagedFiles.clear();
        packagedDocument.clear();
        return PackageFiles(7, R"(C:\out\)", R"(C:\log.txt)", packagedFiles, packagedDocument);
    }

    const std::string guide = R"(C:\src\maps\guide.ditamap)";
    FileList packagedFiles;
    Path packagedDocument;
};

TEST_F(Packaging, RebasesFilesOnTheirCommonFolder) {
    EXPECT_EQ(Package(guide, {Graphic(R"(C:\src\images\p.png)"), Document(guide),
                              Document(R"(C:\src\topics\a.dita)")}),
              0);
    EXPECT_THAT(packagedFiles, ElementsAre(R"(C:\out\maps\guide.ditamap)", R"(C:\out\topics\a.dita)",
                                           R"(C:\out\images\p.png)"))
        << "documents first";
    EXPECT_EQ(packagedDocument, R"(C:\out\maps\guide.ditamap)");
    EXPECT_THAT(drives.Tree(R"(C:\out\)"), ElementsAre("images\\", "images\\p.png", "maps\\",
                                                       "maps\\guide.ditamap", "topics\\", "topics\\a.dita"));
    EXPECT_EQ(drives.Read(R"(C:\out\topics\a.dita)"), R"(C:\src\topics\a.dita)");
    EXPECT_THAT(LogLines(), IsEmpty());
}

TEST_F(Packaging, CountsMissingFilesForTheCommonFolderOnly) {
    EXPECT_EQ(Package(guide, {Document(guide), Document(R"(C:\elsewhere\missing.dita)")}), 0);
    EXPECT_THAT(packagedFiles, ElementsAre(R"(C:\out\src\maps\guide.ditamap)"));
    EXPECT_THAT(LogLines(), IsEmpty());
}

TEST_F(Packaging, LeavesOutGraphicsOnAnotherRootWithOneWarning) {
    EXPECT_EQ(
        Package(guide, {Document(guide), Graphic(R"(D:\images\far.png)"), Graphic(R"(D:\images\far2.png)")}),
        0);
    EXPECT_THAT(packagedFiles, ElementsAre(R"(C:\out\guide.ditamap)"));
    EXPECT_EQ(LogLines(), Lines{"Achtung:" + kRootsText});
}

TEST_F(Packaging, OpenLogInOutputFolderSurvivesClearing) {
    drives.Write(R"(C:\out\log.txt)", "earlier\r\n");
    host.documents[7] = {guide, {Document(guide), Graphic(R"(D:\images\far.png)")}};
    EXPECT_EQ(PackageFiles(7, R"(C:\out\)", R"(C:\out\log.txt)", packagedFiles, packagedDocument), 0);
    EXPECT_EQ(LinesOf(drives.Read(R"(C:\out\log.txt)")), (Lines{"earlier", "Achtung:" + kRootsText}));
    EXPECT_FALSE(drives.Exists(R"(C:\out\old.txt)"));
}

TEST_F(Packaging, LeavesTheOutputFolderUnchangedIfTheRunIsRefused) {
    const auto refused = [](const Lines& paths) {
        return Section("Fehler:Liste der beschädigten Links", paths);
    };
    const struct {
        const char* name;
        std::string document;
        std::vector<HostValue> files;
        int status;
        Lines log;
    } rows[] = {
        {"documents on two drives",
         guide,
         {Document(guide), Document(R"(D:\b.dita)")},
         kPackageOnSeveralRoots,
         {"Fehler:" + kRootsText}},
        {"no references", guide, {}, kPackageUnsafe, refused({guide})},
        {"graphics alone",
         guide,
         {Graphic(R"(C:\src\images\p.png)")},
         kPackageUnsafe,
         Lines{"Achtung:" + kRootsText} + refused({guide})},
        {"names without a folder",
         "a.dita",
         {Document("a.dita"), Document("b.dita")},
         kPackageUnsafe,
         refused({"a.dita"})},
        {"the document is not among its references",
         guide,
         {Document(R"(C:\src\topics\a.dita)")},
         kPackageUnsafe,
         refused({guide})},
        {"the host gives the document's folder in another case",
         R"(C:\SRC\maps\guide.ditamap)",
         {Document(guide)},
         kPackageUnsafe,
         refused({R"(C:\SRC\maps\guide.ditamap)"})},
        {"the host does not know the document's path", "", {Document(guide)}, kPackageUnsafe, refused({""})},
        {"sources in the output folder",
         R"(C:\out\inside.dita)",
         {Document(R"(C:\out\inside.dita)"), Document(guide)},
         kPackageUnsafe,
         refused({R"(C:\out\inside.dita)"})},
    };
    const auto before = drives.Tree(R"(C:\out\)");
    for (const auto& row : rows) {
        std::filesystem::remove(drives.Native(R"(C:\log.txt)"));
        EXPECT_EQ(Package(row.document, row.files), row.status) << row.name;
        EXPECT_EQ(LogLines(), row.log) << row.name;
        EXPECT_EQ(drives.Tree(R"(C:\out\)"), before) << row.name;
        EXPECT_THAT(packagedFiles, IsEmpty()) << row.name;
        EXPECT_EQ(packagedDocument, "") << row.name;
    }
}

TEST_F(Packaging, DoesNotScanWithoutALog) {
    host.log.clear();
    EXPECT_EQ(PackageFiles(7, R"(C:\out\)", R"(C:\no\log.txt)", packagedFiles, packagedDocument),
              kPackageWithoutLog);
    EXPECT_THAT(host.log, IsEmpty());
    EXPECT_TRUE(drives.Exists(R"(C:\out\old.txt)"));
}

TEST_F(Packaging, PlacesGraphicsRelativeToTheFirstDocument) {
    drives.Write(R"(C:\src\maps\beside.png)", "new");
    drives.Write(R"(C:\res\pages\beside.png)", "kept");
    host.documents[7] = {guide,
                         {Graphic(R"(C:\src\images\p.png)"), Document(guide),
                          Document(R"(C:\src\topics\a.dita)"), Graphic(R"(D:\images\far.png)"),
                          Graphic(R"(C:\src\maps\beside.png)"), Graphic(R"(C:\src\images\missing.png)")}};
    EXPECT_EQ(PlaceGraphics(7, R"(C:\res\pages\)"), 0);
    EXPECT_THAT(drives.Tree(R"(C:\res\)"),
                ElementsAre("images\\", "images\\p.png", "pages\\", "pages\\beside.png"));
    EXPECT_EQ(drives.Read(R"(C:\res\pages\beside.png)"), "kept");
    EXPECT_EQ(drives.Read(R"(D:\images\far.png)"), R"(D:\images\far.png)");
}

}  // namespace
}  // namespace ventrix::test
