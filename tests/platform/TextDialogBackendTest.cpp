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
  const std::string asked =
      "\nA bug has been detected.\nFailure at line 3\n"
      "Answer Continue, Debug or More Options [Continue]: ";
  const std::string again =
      "Please answer Continue, Debug or More Options (a label or its first letter); an empty "
      "line means Continue: ";
  const std::string tooLong = "No line end in 4096 bytes; taking Continue.\n";
  struct Case {
    const char* label;
    std::string input;
    DialogItemIndex item;
    std::size_t read;    // bytes of the input
    std::string ending;  // what is said after the question
  };
  const Case cases[] = {
      {"label in other case", "  more OPTIONS \r\nc\n", 3, 17, ""},
      {"empty line is the default", "\nd\n", 1, 1, ""},
      {"end of input is the default", "", 1, 0, "\n"},
      {"unknown, then a letter", "maybe\nd\n", 2, 8, again},
      {"the longest line, then a letter", std::string(4095, 'x') + "\nd\n", 2, 4098, again},
      // Whatever feeds the terminal, the question ends, having read little: ten wrong answers in
      // a row take the default, and so do 4 KiB without a line end.
      {"endless yes", Repeated("y\n", 100000), 1, 20,
       Repeated(again, 9) + "No answer after 10 tries; taking Continue.\n"},
      {"endless y without a line end", std::string(100000, 'y'), 1, 4096, tooLong},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.label);
    std::istringstream in(c.input);
    std::ostringstream out, err;
    EXPECT_EQ(c.item, TextDialogBackend(in, out, err).RunAlert(kAssertion));
    EXPECT_EQ(c.input.size() - c.read, static_cast<std::size_t>(in.rdbuf()->in_avail()));
    EXPECT_EQ("", out.str());  // a stop alert reports a failed check: standard error only
    EXPECT_EQ(asked + c.ending, err.str());
  }
}

TEST(TextDialogBackendTest, ControlAndFormatCharactersShowAsEscapes) {
  const std::pair<std::string, std::string> cases[] = {
      {"\x1b]0;title\x07\x1b[2J", "\\x1b]0;title\\x07\\x1b[2J"},
      {"tab\tline\nDEL\x7f", "tab\\x09line\\x0aDEL\\x7f"},
      {"C1 \u0085\u009b", "C1 \\u0085\\u009b"},
      {"not UTF-8 \xFF\xC3", "not UTF-8 \\xff\\xc3"},
      {"zero\u200bwidth, \u2066isolate, \ufeffmark, soft\u00adhyphen",
       "zero\\u200bwidth, \\u2066isolate, \\ufeffmark, soft\\u00adhyphen"},
      {"line\u2028separator, txt.\u202eexe", "line\\u2028separator, txt.\\u202eexe"},
      {"tag \U000E0001\U000E0041", "tag \\U000e0001\\U000e0041"},
      // Letters of other scripts, combining marks and emoji are text to show.
      {"caf\u00e9 \u05e9\u05dc\u05d5\u05dd \u0645\u0631\u062d\u0628\u0627 \u65e5\u672c e\u0301 "
       "\U0001F44D\U0001F3FD",
       "caf\u00e9 \u05e9\u05dc\u05d5\u05dd \u0645\u0631\u062d\u0628\u0627 \u65e5\u672c e\u0301 "
       "\U0001F44D\U0001F3FD"},
  };
  for (const auto& [text, shown] : cases) EXPECT_EQ(shown, TerminalText(text)) << shown;
  // A caution alert talks on standard output; the marks that isolate a name in a window are left
  // out, and a letter that two labels share picks neither.
  const AlertDescription alert = {kAlertCautionAlert,
                                  "\x1b[2J\"\u2068set\u202e\u2069\"",
                                  "\u2068a\u2069 \u2068b\u2069",
                                  {{"OK\x07", 1}, {"No", 2}, {"Not now", 3}}};
  std::istringstream in("n\n");
  std::ostringstream out, err;
  EXPECT_EQ(1, TextDialogBackend(in, out, err).RunAlert(alert));
  EXPECT_EQ(
      "\n\\x1b[2J\"set\\u202e\"\na b\nAnswer OK\\x07, No or Not now [OK\\x07]: Please answer "
      "OK\\x07, No or Not now (a label or its first letter); an empty line means OK\\x07: \n",
      out.str());
  EXPECT_EQ("", err.str());
}

// Labels that begin alike answer to the first letter of the word that sets them apart, shown after
// them; a + after the answer ticks the check box.
TEST(TextDialogBackendTest, LabelsThatBeginAlikeAndTheCheckBox) {
  const std::string asked =
      "\nReplace?\nTo choose \"Apply to all\" too, put + after your answer.\n"
      "Answer Keep Existing (E), Replace or Keep Both (B) [Keep Existing]: ";
  struct Case {
    std::string input;
    DialogItemIndex item;
    bool checked;
  };
  const Case cases[] = {
      {"b\n", 3, false}, {"e\n", 1, false},         {"R +\n", 2, true},
      {"+\n", 1, true},  {"keep both+\n", 3, true}, {"k\nb\n", 3, false},  // k is both Keeps'
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.input);
    const AlertDescription alert = {kAlertCautionAlert,
                                    "Replace?",
                                    "",
                                    {{"Keep Existing", 1}, {"Replace", 2}, {"Keep Both", 3}},
                                    1,
                                    1,
                                    "Apply to all"};
    std::istringstream in(c.input);
    std::ostringstream out, err;
    EXPECT_EQ(c.item, TextDialogBackend(in, out, err).RunAlert(alert));
    EXPECT_EQ(c.checked, alert.m_bChecked);
    EXPECT_EQ(0u, out.str().rfind(asked, 0));
  }
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
      // 4 KiB without a line end cancel at once; the rest is left unread.
      {"a megabyte of zero bytes", std::string(1 << 20, '\0'), std::nullopt,
       "No line end in 4096 bytes; cancelled.\n"},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.label);
    std::istringstream in(c.input);
    std::ostringstream out, err;
    TextDialogBackend backend(in, out, err);
    EXPECT_EQ(c.folder, backend.ChooseFolder("Please choose your \u2068Glimmerbox\u2069 folder."));
    EXPECT_EQ("\nPlease choose your Glimmerbox folder.\n" + prompt + c.said, out.str());
    EXPECT_EQ("", err.str());
    EXPECT_LE(c.input.size() - in.rdbuf()->in_avail(), 4096u);
  }
}

}  // namespace
