#include <gtest/gtest.h>

#include <filesystem>
#include <optional>
#include <sstream>
#include <string>

#include "platform/DialogBackend.h"
#include "platform/Terminal.h"
#include "tests/ScopedVariable.h"
#include "tests/TempFolder.h"

namespace {

// A failed check's alert.
const AlertDescription kAssertion = {kAlertStopAlert,
                                     "A bug has been detected.",
                                     "Failure at line 3",
                                     {{"Continue", 1}, {"Debug", 2}, {"More Options", 3}}};

std::string Repeated(const std::string& text, int times) {
  std::string all;
  for (int i = 0; i < times; ++i) all += text;
  return all;
}

TEST(TextDialogBackendTest, AnswerPicksAButton) {
  struct Case {
    const char* label;
    std::string input;
    DialogItemIndex item;
  };
  const Case cases[] = {
      {"label in other case", "  more OPTIONS \r\n", 3},
      {"empty line is the default", "\n", 1},
      {"end of input is the default", "", 1},
      {"unknown, then a letter", "maybe\nd\n", 2},
      // Whatever feeds the terminal, the question ends: ten wrong answers in a row take the
      // default, and no line is kept whole, however long.
      {"endless yes", Repeated("y\n", 100000), 1},
      {"a line too long to be one, then one", std::string(5000, 'd') + "\nd\n", 2},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.label);
    std::istringstream in(c.input);
    std::ostringstream out, err;
    EXPECT_EQ(c.item, TextDialogBackend(in, out, err).RunAlert(kAssertion));
    EXPECT_EQ("", out.str());  // a stop alert reports a failed check: standard error only
    EXPECT_EQ(0u, err.str().find("\nA bug has been detected.\nFailure at line 3\n"
                                 "Answer Continue, Debug or More Options [Continue]: "));
    EXPECT_GT(2000u, err.str().size());
  }
}

TEST(TextDialogBackendTest, ControlCharactersAreShownAsEscapesAndSharedLettersAskedAgain) {
  const std::pair<std::string, std::string> cases[] = {
      {"\x1b]0;title\x07\x1b[2J", "\\x1b]0;title\\x07\\x1b[2J"},
      {"tab\tline\nDEL\x7f", "tab\\x09line\\x0aDEL\\x7f"},
      {"C1 \xC2\x9B", "C1 \\u009b"},
      {"not UTF-8 \xFF\xC3", "not UTF-8 \\xff\\xc3"},
      {"caf\xC3\xA9 \xF0\x9F\x98\x80", "caf\xC3\xA9 \xF0\x9F\x98\x80"},
  };
  for (const auto& [text, shown] : cases) EXPECT_EQ(shown, TerminalText(text)) << shown;
  // A caution alert talks on standard output; a letter that two labels share picks neither.
  const AlertDescription alert = {
      kAlertCautionAlert, "\x1b[2Jset", "", {{"OK\x07", 1}, {"No", 2}, {"Not now", 3}}};
  std::istringstream in("n\n");
  std::ostringstream out, err;
  EXPECT_EQ(1, TextDialogBackend(in, out, err).RunAlert(alert));
  EXPECT_EQ(
      "\n\\x1b[2Jset\nAnswer OK\\x07, No or Not now [OK\\x07]: Please answer OK\\x07, No or "
      "Not now (a label or its first letter); an empty line means OK\\x07: \n",
      out.str());
  EXPECT_EQ("", err.str());
}

TEST(TextDialogBackendTest, FolderQuestionReadsAPath) {
  TempFolder temp;
  std::filesystem::create_directory(temp.Path("sub"));
  temp.Write("file", "");
  ScopedVariable home("HOME", temp.Path().c_str());
  const std::string prompt = "Folder (an empty line cancels): ";
  struct Case {
    const char* label;
    std::string input;
    std::optional<std::string> folder;
    std::string said;  // after the first prompt
  };
  const Case cases[] = {
      {"path, blanks around it", "  " + temp.Path("sub") + " \r\n", temp.Path("sub"), ""},
      {"inside home", "~/sub\n", temp.Path() + "/sub", ""},
      {"empty line cancels", "\n" + temp.Path() + "\n", std::nullopt, ""},
      {"end of input cancels", "", std::nullopt, "\n"},
      {"a file, then a folder", temp.Path("file") + "\n~\n", temp.Path(),
       temp.Path("file") + ": Not a directory\n" + prompt},
      {"nothing there, ten times", Repeated("~/gone\n", 10) + "~\n", std::nullopt,
       Repeated(temp.Path("gone") + ": No such file or directory\n" + prompt, 9) +
           temp.Path("gone") +
           ": No such file or directory\nNo folder after 10 tries; cancelled.\n"},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.label);
    std::istringstream in(c.input);
    std::ostringstream out, err;
    TextDialogBackend backend(in, out, err);
    EXPECT_EQ(c.folder, backend.ChooseFolder("Please choose your Glimmerbox folder."));
    EXPECT_EQ("\nPlease choose your Glimmerbox folder.\n" + prompt + c.said, out.str());
    EXPECT_EQ("", err.str());
  }
}

}  // namespace
