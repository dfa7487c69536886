#include <gtest/gtest.h>

#include <sstream>
#include <string>

#include "platform/DialogBackend.h"

namespace {

AlertDescription AssertionAlert() {
  AlertDescription alert;
  alert.m_nKind = kAlertStopAlert;
  alert.m_strMessage = "A bug has been detected.";
  alert.m_strExplanation = "Failure at line 3";
  alert.m_vecButtons = {{"Continue", 1}, {"Debug", 2}, {"More Options", 3}};
  return alert;
}

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
    EXPECT_EQ(c.item, backend.RunAlert(AssertionAlert()));
    EXPECT_EQ("", out.str());  // a stop alert reports a failed check: standard error only
    EXPECT_EQ(0u, err.str().find("\nA bug has been detected.\nFailure at line 3\n"
                                 "Answer Continue, Debug or More Options [Continue]: "));
  }
}

TEST(TextDialogBackendTest, SharedFirstLetterIsAskedAgain) {
  AlertDescription alert;
  alert.m_nKind = kAlertCautionAlert;
  alert.m_strMessage = "Replace it?";
  alert.m_vecButtons = {{"No", 1}, {"Not now", 2}, {"Yes", 3}};
  std::istringstream in("n\ny\n");
  std::ostringstream out, err;
  TextDialogBackend backend(in, out, err);
  EXPECT_EQ(3, backend.RunAlert(alert));
  EXPECT_NE(std::string::npos, out.str().find("Please answer No, Not now or Yes"));
  EXPECT_EQ("", err.str());
}

}  // namespace
