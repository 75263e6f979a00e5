#include <gtest/gtest.h>

#include "desk/clients/client_command.h"

namespace ventrix::desk {
namespace {

TEST(ClientCommand, VerbAndOptionsAreParsed) {
    using Options = std::map<std::string, std::string>;
    const struct {
        const char *text, *verb;
        Options options;
    } rows[] = {
        {"Save -docId 7 -transtype xhtml -filter \"C:\\a b\\x.ditaval\" -outFilePath \"C:\\out\\\"",
         "Save",
         {{"-docId", "7"},
          {"-transtype", "xhtml"},
          {"-filter", "C:\\a b\\x.ditaval"},
          {"-outFilePath", "C:\\out\\"}}},
        {"Run -flag -file \"-x y\"", "Run", {{"-flag", ""}, {"-file", "-x y"}}},
        {"Run -a 1 stray -a 2", "Run", {{"-a", "2"}}},
        {"Run -open \"to the end", "Run", {{"-open", "to the end"}}},
        {"Run -file \"a\"b\" -to \"c\"d\"", "Run", {{"-file", "a\"b"}, {"-to", "c\"d"}}},
        {"  Run  ", "Run", {}},
        {"", "", {}},
    };
    for (const auto& row : rows) {
        const ClientCommand command = ParseClientCommand(row.text);
        EXPECT_EQ(command.verb, row.verb) << row.text;
        EXPECT_EQ(command.options, row.options) << row.text;
    }
}

}  // namespace
}  // namespace ventrix::desk
