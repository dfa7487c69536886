#include <gtest/gtest.h>

#include <filesystem>
#include <optional>
#include <sstream>
#include <string>

#include "platform/DialogBackend.h"
#include "tests/ScopedVariable.h"
#include "tests/TempFolder.h"

namespace {

// A failed check's alert.
const AlertDescription kAssertion = {kAlertStopAlert,
                                     "A bug has been detected.",
                                     "Failure at line 3",
                                     {{"Continue", 1}, {"Debug", 2}, {"More Options", 3}}};

TEST(TextDialogBackendTest, AnswerPicksAButton) {
  struct Case {
    const char* label;
    std::string input;
    DialogItemIndex item;
  };
  const Case cases[] = {
      {"label", "Debug\n", 2},
      {"label in other case", "  more OPTIONS \r\n", 3},
      {"first letter", "m\n", 3},
      {"empty line is the default", "\n", 1},
      {"end of input is the default", "", 1},
      {"unknown, then a letter", "maybe\nd\n", 2},
      {"unknown, then end of input", "x\n", 1},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.label);
    std::istringstream in(c.input);
    std::ostringstream out, err;
    TextDialogBackend backend(in, out, err);
    EXPECT_EQ(c.item, backend.RunAlert(kAssertion));
    EXPECT_EQ("", out.str());  // a stop alert reports a failed check: standard error only
    EXPECT_EQ(0u, err.str().find("\nA bug has been detected.\nFailure at line 3\n"
                                 "Answer Continue, Debug or More Options [Continue]: "));
  }
}

TEST(TextDialogBackendTest, SharedFirstLetterIsAskedAgain) {
  const AlertDescription alert = {
      kAlertCautionAlert, "Replace it?", "", {{"No", 1}, {"Not now", 2}, {"Yes", 3}}};
  std::istringstream in("n\ny\n");
  std::ostringstream out, err;
  TextDialogBackend backend(in, out, err);
  EXPECT_EQ(3, backend.RunAlert(alert));
  EXPECT_NE(std::string::npos, out.str().find("Please answer No, Not now or Yes"));
  EXPECT_EQ("", err.str());
}

TEST(TextDialogBackendTest, FolderQuestionReadsAPath) {
  TempFolder temp;
  ASSERT_FALSE(temp.Path().empty());
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
      {"home", "~\n", temp.Path(), ""},
      {"inside home", "~/sub\n", temp.Path() + "/sub", ""},
      {"empty line cancels", "\n" + temp.Path() + "\n", std::nullopt, ""},
      {"end of input cancels", "", std::nullopt, "\n"},
      {"a file, then a folder", temp.Path("file") + "\n~\n", temp.Path(),
       temp.Path("file") + ": Not a directory\n" + prompt},
      {"nothing there, then end of input", "~/gone\n", std::nullopt,
       temp.Path("gone") + ": No such file or directory\n" + prompt + "\n"},
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
