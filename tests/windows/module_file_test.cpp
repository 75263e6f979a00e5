// What the built module carries, and how it is loaded.
#include <gtest/gtest.h>
#include <windows.h>

#include <fstream>
#include <iterator>
#include <regex>

#include "platform/library.h"
#include "platform/module.h"
#include "platform/path_text.h"
#include "support/test_folder.h"

namespace ventrix::platform {
namespace {

using test::TestFolder;

std::string TextOf(const char* file) {
    std::ifstream stream(file, std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), {}};
}

std::string StringOf(ModuleHandle module, std::uint32_t id) {
    char16_t wide[1024];
    const int length = LoadWideString(module, id, wide, 1024);
    return Utf8FromPath(std::filesystem::path(std::u16string_view(wide, static_cast<std::size_t>(length))));
}

TEST(ModuleFile, HasTheStringsAndTheVersionBlockOfItsSources) {
    std::string problem;
    const LibraryHandle module = OpenLibraryFile(VENTRIX_MODULE, problem);
    ASSERT_NE(module, nullptr) << problem;
    int strings = 0;
    const std::regex stringLine("(^|\n)([0-9]+) ([^\n]*)");
    const std::string stringsText = TextOf(VENTRIX_STRINGS);
    for (std::sregex_iterator line(stringsText.begin(), stringsText.end(), stringLine), end; line != end;
         ++line) {
        EXPECT_EQ(StringOf(module, static_cast<std::uint32_t>(std::stoi((*line)[2]))), (*line)[3]);
        ++strings;
    }
    EXPECT_EQ(strings, 16);
    int keys = 0;
    const std::regex keyLine("(^|\n)([A-Za-z]+)=([^\n]*)");
    const std::string versionText = TextOf(VENTRIX_VERSION);
    for (std::sregex_iterator line(versionText.begin(), versionText.end(), keyLine), end; line != end;
         ++line) {
        EXPECT_EQ(VersionBlockText(module, "040904b0", (*line)[2].str()), (*line)[3].str());
        ++keys;
    }
    EXPECT_GE(keys, 10);
    EXPECT_EQ(VersionBlockText(module, "040904b0", "ClientFacet"), std::nullopt);
}

TEST(ModuleFile, CanBeUnloadedAndLoadedAgain) {
    const std::filesystem::path file = PathFromUtf8(VENTRIX_MODULE);
    const TestFolder tree;
    const std::filesystem::path copy = PathFromUtf8(tree.Native("Ventrix-copy.dll"));
    std::filesystem::copy_file(file, copy);
    for (int round = 0; round < 3; ++round) {
        const HMODULE module = ::LoadLibraryW(copy.c_str());
        ASSERT_NE(module, nullptr) << ::GetLastError();
        EXPECT_NE(::GetProcAddress(module, "Q_ApiClientInit"), nullptr);
        EXPECT_NE(::FreeLibrary(module), 0);
        EXPECT_EQ(::GetModuleHandleW(L"Ventrix-copy.dll"), nullptr);
    }
}

TEST(ModuleFile, LoadersReasonIsReported) {
    const TestFolder tree;
    std::string problem;
    EXPECT_EQ(OpenLibraryFile(tree.Native("none.dll"), problem), nullptr);
    EXPECT_NE(problem.find("error 126"), std::string::npos) << problem;
    EXPECT_EQ(OpenLibraryFile(tree.Write("garbage.dll", "no library"), problem), nullptr);
    EXPECT_NE(problem.find("error 193"), std::string::npos) << problem;

    // The same module, linked against ICU of a version that is not here.
    std::string moduleText = TextOf(VENTRIX_MODULE);
    const std::size_t icu = moduleText.find("icuuc");
    ASSERT_NE(icu, std::string::npos);
    moduleText.replace(icu, 7, "icuuc99");
    EXPECT_EQ(OpenLibraryFile(tree.Write("Ventrix.dll", moduleText), problem), nullptr);
    EXPECT_EQ(problem, "a library that it needs is missing: icuuc99.dll (error 126)");
}

}  // namespace
}  // namespace ventrix::platform
