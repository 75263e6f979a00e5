// The program as a person runs it: command lines, with the exit status and a piece of what it says.
#include <gtest/gtest.h>
#include <sys/wait.h>

#include <array>
#include <cstdio>

#include "support/temp_folder.h"

namespace ventrix::desk {
namespace {

struct Said {
    int status = -1;
    std::string out, err;
};

class Program : public testing::Test {
  protected:
    void SetUp() override {
        folder_.Write("a.xml", "<a href='b.xml'>one</a>");
        folder_.Write("b.xml", "<b/>");
        folder_.Write("lost.xml", "<a href='gone.xml'/>");
        folder_.Write("bad.xml", "<a>&undef;</a>");
        folder_.Write("text.xml", "no xml");
        folder_.Write("full/keep.txt", "x");
        folder_.Write(
            "page.xsl",
            "<xsl:stylesheet version='1.0' xmlns:xsl='http://www.w3.org/1999/XSL/Transform'>"
            "<xsl:output method='xml'/><xsl:template match='/'><html><p><xsl:value-of select='.'/></p></html>"
            "</xsl:template></xsl:stylesheet>");
    }

    /// Runs `ventrix ARGUMENTS` in the folder, through a shell.
    Said Run(const std::string& arguments, const std::string& program = VENTRIX_PROGRAM) {
        const std::string errors = folder_.Path("errors.txt");
        const std::string command =
            "cd '" + folder_.Path() + "' && '" + program + "' " + arguments + " 2>'" + errors + "'";
        Said said;
        FILE* pipe = popen(command.c_str(), "r");
        std::array<char, 4096> buffer;
        for (std::size_t read = 0; (read = fread(buffer.data(), 1, buffer.size(), pipe)) > 0;) {
            said.out.append(buffer.data(), read);
        }
        const int ended = pclose(pipe);
        said.status = WIFEXITED(ended) ? WEXITSTATUS(ended) : -1;
        said.err = test::ReadFile(errors);
        return said;
    }

    test::TempFolder folder_;
};

TEST_F(Program, AnswersEachCommandLineWithItsStatus) {
    const struct {
        const char* arguments;
        int status;
        const char *out, *err;  ///< Pieces of what must be said.
    } rows[] = {
        {"", 2, "", "subcommand"},
        {"--version", 0, "ventrix 1.0.0.1", ""},
        {"publish --help", 0, "--scoped-attributes", ""},
        {"publish a.xml", 2, "", "--output"},
        {"publish a.xml -o o", 2, "", "say how to transform it"},
        {"publish a.xml -o o --xslt no.xsl", 2, "", "no.xsl is no file"},
        {"publish a.xml -o o --xslt page.xsl --target-attr \"a'b\\\"c\"", 2, "", "quotation marks"},
        {"publish a.xml -o o --xslt page.xsl --drive C", 2, "", "--drive takes X=FOLDER"},
        {"publish no.xml -o o --xslt page.xsl", 3, "", "no.xml does not exist"},
        {"publish . -o o --xslt page.xsl", 3, "", "is a folder"},
        {"publish text.xml -o o --xslt page.xsl", 3, "", "text.xml cannot be read"},
        {"publish a.xml -o . --xslt page.xsl --force", 5, "", "would be deleted"},
        {"publish a.xml -o full --xslt page.xsl", 5, "", "--force"},
        {"publish a.xml -o o5 --xslt page.xsl --log /no/such/log.txt", 4, "", "/no/such/log.txt"},
        {"publish a.xml -o o1 --xslt page.xsl --attributes href", 0, "o1.log", ""},
        {"publish a.xml -o o1 --xslt page.xsl --json", 0, "\"failed\":[]", ""},
        {"publish lost.xml -o o2 --xslt page.xsl", 1, "", "gone.xml is missing"},
        {"publish bad.xml -o o3 --xslt page.xsl --json", 1, "undefined entity", "bad.xml could not be read"},
        {"publish a.xml -o o4 --xslt text.xml", 6, "", "the transformation failed"},
        {"validate a.xml", 0, "can be published", ""},
        {"validate lost.xml --json", 1, "\"mask\":1", ""},
        {"validate a.xml --unsaved b.xml", 1, "unsaved (1)", ""},
        {"request --document a.xml Nonsense", 4, "status: -43", ""},
        {"request --document a.xml 'Validate -docId {docId}'", 1, "status: 16", ""},
    };
    for (const auto& row : rows) {
        const Said said = Run(row.arguments);
        EXPECT_EQ(said.status, row.status) << row.arguments << said.err;
        EXPECT_NE(said.out.find(row.out), std::string::npos) << row.arguments << said.out;
        EXPECT_NE(said.err.find(row.err), std::string::npos) << row.arguments << said.err;
    }
    EXPECT_EQ(test::ReadFile(folder_.Path("full/keep.txt")), "x");
    EXPECT_EQ(test::ReadFile(folder_.Path("o1/a.html")).find("QL_START"), std::string::npos);
    EXPECT_FALSE(std::filesystem::exists(folder_.Path("o"))) << "a refused run touches nothing";
}

TEST_F(Program, AProgramWithoutItsModuleSaysSo) {
    std::filesystem::create_directory(folder_.Path("bin"));
    std::filesystem::copy_file(VENTRIX_PROGRAM, folder_.Path("bin/ventrix"));
    const Said said = Run("validate a.xml", folder_.Path("bin/ventrix"));
    EXPECT_EQ(said.status, 7);
    EXPECT_EQ(said.err, "error: the module is missing: " + folder_.Path("src/Ventrix.so") + "\n");
}

TEST_F(Program, AnInterruptedRunEndsAndItsFolderMayBeUsedAgain) {
    std::filesystem::permissions(folder_.Write("slow.sh", "#!/bin/sh\nkill -INT $PPID\nsleep 5\n"),
                                 std::filesystem::perms::owner_all);
    const std::string before = test::ReadFile(folder_.Path("a.xml"));
    EXPECT_EQ(Run("publish a.xml -o o --pre-script slow.sh").status, 130);
    EXPECT_EQ(test::ReadFile(folder_.Path("a.xml")), before);
    EXPECT_EQ(Run("publish a.xml -o o --xslt page.xsl").status, 0);
}

}  // namespace
}  // namespace ventrix::desk
