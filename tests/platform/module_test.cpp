#include "platform/module.h"

#include <dlfcn.h>
#include <gtest/gtest.h>

#include <filesystem>

#include "platform/drives.h"
#include "platform/library.h"
#include "support/test_folder.h"

using namespace ventrix::platform;
using ventrix::test::TestFolder;

namespace {

/// An address in this program, which is a handle of it.
int inThisProgram;

std::string Narrow(ModuleHandle module, std::uint32_t id, int size) {
    std::string buffer(static_cast<std::size_t>(size), '#');
    const int length = LoadNarrowString(module, id, buffer.data(), size);
    EXPECT_EQ(buffer[static_cast<std::size_t>(length)], '\0');
    return buffer.substr(0, static_cast<std::size_t>(length));
}

TEST(ModuleFileName, IsFoundByHandleAndByAddress) {
    const std::string program = ToSystem(std::filesystem::read_symlink("/proc/self/exe").string()).value();
    EXPECT_EQ(ModuleFileName(nullptr), program);
    EXPECT_EQ(ModuleFileName(MainModule()), program);
    EXPECT_EQ(ModuleFileName(&inThisProgram), program);

    void* library = ::dlopen("libdl.so.2", RTLD_NOW);
    ASSERT_NE(library, nullptr);
    EXPECT_EQ(std::filesystem::path(ToNative(ModuleFileName(library))).filename(), "libdl.so.2");
    ::dlclose(library);

    int local = 0;
    EXPECT_EQ(ModuleFileName(&local), "");
    EXPECT_EQ(ModuleFileName(reinterpret_cast<void*>(0x10)), "");
}

TEST(ModuleResources, BelongToTheModuleThatLinksThem) {
    EXPECT_EQ(Narrow(&inThisProgram, 0, 1023), "Logarithmus:");
    EXPECT_EQ(Narrow(MainModule(), 1, 1023), "Liste der g\xC3\xBCltigen Dateien");
    EXPECT_EQ(Narrow(MainModule(), 7, 1023), std::string(62, '*'));
    EXPECT_EQ(Narrow(MainModule(), 15, 1023), "DITAVAL-Datei:");
    EXPECT_EQ(Narrow(MainModule(), 16, 1023), "");
    EXPECT_EQ(VersionBlockText(MainModule(), "040904b0", "ClientName"),
              "ZNS QCK client for publishing different formats via Tintwick.");
    EXPECT_EQ(VersionBlockText(MainModule(), "040904B0", "clienttype"), "QCK");
    EXPECT_EQ(VersionBlockText(MainModule(), "040904b0", "FileVersion"), "1.0.0.1");
    EXPECT_EQ(VersionBlockText(MainModule(), "040904b0", "ClientFacet"), std::nullopt);
    EXPECT_EQ(VersionBlockText(MainModule(), "040704b0", "ClientName"), std::nullopt);
}

TEST(ModuleResources, OtherModulesHaveNone) {
    void* const runtime = FindSymbol(ProcessLibrary(), "getpid");
    ASSERT_NE(runtime, nullptr);
    int local = 0;
    for (void* module : {runtime, static_cast<void*>(nullptr), static_cast<void*>(&local)}) {
        EXPECT_EQ(Narrow(module, 0, 100), "");
        EXPECT_EQ(FindNamedResource(module, 10, "ICON"), std::nullopt);
    }
}

TEST(ModuleResources, StringsAreCutToTheBuffer) {
    const StringResource strings[] = {{3, u"a\u00FC\U0001F600"}};
    const NamedResource named[] = {{10, "Icon", std::string_view("\0x", 2)}};
    const ModuleResources resources = {strings, {}, named};
    int module = 0;
    BindResources(&module, &resources);
    EXPECT_EQ(Narrow(&module, 3, 100), "a\xC3\xBC\xF0\x9F\x98\x80");
    EXPECT_EQ(Narrow(&module, 3, 7), "a\xC3\xBC");
    EXPECT_EQ(Narrow(&module, 3, 3), "a");
    EXPECT_EQ(Narrow(&module, 3, 1), "");
    char16_t wide[4] = {9, 9, 9, 9};
    EXPECT_EQ(LoadWideString(&module, 3, wide, 3), 2);
    EXPECT_EQ(std::u16string_view(wide, 4), std::u16string_view(u"a\u00FC\0\t", 4));
    EXPECT_EQ(LoadWideString(&module, 3, wide, 0), 0);
    EXPECT_EQ(LoadNarrowString(&module, 3, nullptr, 0), 0);
    EXPECT_EQ(FindNamedResource(&module, 10, "ICON"), std::string_view("\0x", 2));
    EXPECT_EQ(FindNamedResource(&module, 11, "Icon"), std::nullopt);
    BindResources(&module, nullptr);
    EXPECT_EQ(Narrow(&module, 3, 100), "");
}

std::string TextOf(const std::string& file) {
    std::ifstream stream(file, std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), {}};
}

TEST(ResourceScript, HasTheModulesStringsAndVersion) {
    const std::string script = TextOf(VENTRIX_RESOURCE_SCRIPT);
    for (const char* line :
         {"#pragma code_page(65001)\n", "\n    4 L\"Liste der besch\\x00e4digten Links\"\n",
          "\nFILEVERSION 1,0,0,1\nPRODUCTVERSION 1,0,0,1\n", "\nFILETYPE 0x2\n", "BLOCK \"040904b0\"\n",
          "VALUE \"ClientType\", \"QCK\"\n", "VALUE \"Translation\", 0x0409, 0x04b0\n"}) {
        EXPECT_NE(script.find(line), std::string::npos) << line;
    }
}

TEST(ResourceGenerator, KeepsEveryCharacter) {
    const TestFolder tree;
    tree.Write("strings.txt", "# left out\n\n12 a \"b\" \\n;[c];;${PATH}  \n65535 =\n");
    const auto generate = [&](const std::string& strings) {
        const std::string command = std::string(VENTRIX_CMAKE) + " -DSTRINGS=" + tree.Native(strings) +
                                    " -DVERSION= -DTABLE=" + tree.Native("t.cpp") +
                                    " -DSCRIPT=" + tree.Native("s.rc") + " -P " + VENTRIX_RESOURCE_GENERATOR +
                                    " >/dev/null 2>&1";
        return std::system(command.c_str());
    };
    ASSERT_EQ(generate("strings.txt"), 0);
    EXPECT_NE(
        tree.Read("t.cpp").find("    {12, u\"a \\\"b\\\" \\\\n;[c];;${PATH}  \"},\n    {65535, u\"=\"},\n"),
        std::string::npos)
        << tree.Read("t.cpp");
    EXPECT_NE(tree.Read("s.rc").find("    12 L\"a \"\"b\"\" \\\\n;[c];;${PATH}  \"\n"), std::string::npos)
        << tree.Read("s.rc");
    EXPECT_EQ(tree.Read("s.rc").find("VERSIONINFO"), std::string::npos);
    tree.Write("bad.txt", "twelve text\n");
    EXPECT_NE(generate("bad.txt"), 0);
}

TEST(Libraries, AreFoundByNameOrBesideTheProgram) {
    EXPECT_NE(FindSymbol(ProcessLibrary(), "malloc"), nullptr);
    EXPECT_EQ(FindSymbol(ProcessLibrary(), "RivletIsNetFile"), nullptr);
    EXPECT_EQ(FindSymbol(ProcessLibrary(), nullptr), nullptr);
    EXPECT_EQ(FindSymbol(nullptr, "malloc"), nullptr);
    EXPECT_EQ(OpenLibrary(""), nullptr);
    EXPECT_EQ(OpenLibrary("no-such-library.dll"), nullptr);
    EXPECT_EQ(OpenLibraryBesideProgram("no-such-library"), nullptr);

    // Any library, copied to the folder of this program under a new name.
    const std::filesystem::path beside =
        std::filesystem::path(ToNative(ModuleFileName(nullptr))).replace_filename("ventrix-test-library.so");
    std::filesystem::copy_file(ToNative(ModuleFileName(OpenLibrary("libdl.so.2"))), beside,
                               std::filesystem::copy_options::overwrite_existing);
    const LibraryHandle library = OpenLibraryBesideProgram("ventrix-test-library");
    std::filesystem::remove(beside);
    EXPECT_EQ(ToNative(ModuleFileName(library)), beside.string());
}

}  // namespace
