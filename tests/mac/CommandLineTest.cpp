// The command line as both applications read it.
#include <gtest/gtest.h>

#include <sstream>

#include "mac/CommandLine.h"
#include "mac/Version.h"

namespace {

TEST(CommandLineTest, OptionsThenFiles) {
  const ProgramDescription program = {"prog", "usage: prog FILE...", "Help.\n", {"--into"}};
  const std::string usage = "usage: prog FILE...\n";
  // What the reader prints goes to standard output when it ends with 0, else to standard error.
  struct Case {
    const char* label;
    std::vector<std::string> arguments;
    int status;
    std::string printed;
    std::vector<std::string> files;
    std::string into;
  };
  const Case cases[] = {
      {"no file", {}, 2, usage, {}, ""},
      {"help wins over files", {"a", "--help"}, 0, usage + "\nHelp.\n", {"a"}, ""},
      {"version", {"--version"}, 0, std::string("prog ") + kVersion + "\n", {}, ""},
      {"unknown option", {"-x", "a"}, 2, "prog: unknown option -x\n" + usage, {}, ""},
      {"shown as a terminal may", {"-\x1b"}, 2, "prog: unknown option -\\x1b\n" + usage, {}, ""},
      {"valued option", {"--into", "out", "a", "b"}, -1, "", {"a", "b"}, "out"},
      {"no value", {"a", "--into"}, 2, "prog: option --into needs a value\n" + usage, {"a"}, ""},
      {"options end at --", {"--", "-x", "--help"}, -1, "", {"-x", "--help"}, ""},
      {"a lone dash is a file", {"-"}, -1, "", {"-"}, ""},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.label);
    std::ostringstream out, err;
    std::map<std::string, std::string> values;
    std::vector<std::string> files;
    EXPECT_EQ(c.status, ReadCommandLine(program, c.arguments, out, err, values, files));
    EXPECT_EQ(c.status == 0 ? c.printed : "", out.str());
    EXPECT_EQ(c.status == 0 ? "" : c.printed, err.str());
    EXPECT_EQ(c.files, files);
    EXPECT_EQ(c.into, values["--into"]);
  }
}

}  // namespace
