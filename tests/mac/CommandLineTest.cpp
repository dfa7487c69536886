// The command line as both applications read it.
#include <gtest/gtest.h>

#include <sstream>

#include "mac/CommandLine.h"
#include "mac/Version.h"

namespace {

TEST(CommandLineTest, OptionsThenFiles) {
  const ProgramDescription program = {"prog", "usage: prog FILE...", "Help.\n", {"--into"}};
  const std::string usage = "usage: prog FILE...\n";
  struct Case {
    const char* label;
    std::vector<std::string> arguments;
    int status;
    std::string out, err;
    std::vector<std::string> files;
    std::string into;
  };
  const Case cases[] = {
      {"no file", {}, 2, "", usage, {}, ""},
      {"help wins over files", {"a", "--help"}, 0, usage + "\nHelp.\n", "", {"a"}, ""},
      {"version", {"--version"}, 0, std::string("prog ") + kVersion + "\n", "", {}, ""},
      {"unknown option", {"-x", "a"}, 2, "", "prog: unknown option -x\n" + usage, {}, ""},
      {"option shown as the terminal may",
       {"-\x1b"},
       2,
       "",
       "prog: unknown option -\\x1b\n" + usage,
       {},
       ""},
      {"valued option", {"--into", "out", "a", "b"}, -1, "", "", {"a", "b"}, "out"},
      {"value missing",
       {"a", "--into"},
       2,
       "",
       "prog: option --into needs a value\n" + usage,
       {"a"},
       ""},
      {"options end at --", {"--", "-x", "--help"}, -1, "", "", {"-x", "--help"}, ""},
      {"a lone dash is a file", {"-"}, -1, "", "", {"-"}, ""},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.label);
    std::ostringstream out, err;
    std::map<std::string, std::string> values;
    std::vector<std::string> files;
    EXPECT_EQ(c.status, ReadCommandLine(program, c.arguments, out, err, values, files));
    EXPECT_EQ(c.out, out.str());
    EXPECT_EQ(c.err, err.str());
    EXPECT_EQ(c.files, files);
    EXPECT_EQ(c.into, values["--into"]);
  }
}

}  // namespace
