#include <gtest/gtest.h>

#include <string>

#include "platform/DialogBackend.h"
#include "platform/Dialogs.h"
#include "tests/ScriptedDialogBackend.h"

namespace {

class DialogsTest : public testing::Test {
 protected:
  ScriptedDialogBackend m_backend;
  ScopedDialogBackend m_installed{m_backend};
};

TEST_F(DialogsTest, ButtonTextsBecomeItemsAndTheScriptAnswers) {
  AlertStdCFStringAlertParamRec param;
  ASSERT_EQ(noErr, GetStandardAlertDefaultParams(&param, kStdCFStringAlertVersionOne));
  param.defaultText = CFSTR("No");
  param.cancelText = CFSTR("Yes");
  param.cancelButton = kAlertStdAlertCancelButton;
  CFStringRef message =
      CFStringCreateWithCString(nullptr, "Replace \xC3\xA9?", kCFStringEncodingUTF8);
  DialogRef alert;
  ASSERT_EQ(noErr, CreateStandardAlert(kAlertCautionAlert, message, CFSTR("Why"), &param, &alert));
  CFRelease(message);  // the alert keeps its own copy
  m_backend.m_queAnswers.push_back(kAlertStdAlertCancelButton);
  DialogItemIndex hit = 0;
  ASSERT_EQ(noErr, RunStandardAlert(alert, nullptr, &hit));
  EXPECT_EQ(kAlertStdAlertCancelButton, hit);
  const AlertDescription& shown = m_backend.m_vecAlerts.at(0);
  EXPECT_EQ("Replace \xC3\xA9?", shown.m_strMessage);
  EXPECT_EQ("Why", shown.m_strExplanation);
  ASSERT_EQ(2u, shown.m_vecButtons.size());
  EXPECT_EQ("No", shown.m_vecButtons[0].m_strLabel);
  EXPECT_EQ("Yes", shown.m_vecButtons[1].m_strLabel);
  EXPECT_EQ(kAlertStdAlertOKButton, shown.m_nDefaultItem);
  EXPECT_EQ(kAlertStdAlertCancelButton, shown.m_nCancelItem);
}

}  // namespace
