#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "platform/DialogBackend.h"
#include "platform/Dialogs.h"

namespace {

class DialogsTest : public testing::Test {
 protected:
  ScriptedDialogBackend m_backend;
  ScopedDialogBackend m_installed{m_backend};
};

std::vector<std::string> Labels(const AlertDescription& alert) {
  std::vector<std::string> labels;
  for (const AlertDescription::Button& button : alert.m_vecButtons)
    labels.push_back(button.m_strLabel);
  return labels;
}

TEST_F(DialogsTest, DefaultParametersGiveOneOKButton) {
  AlertStdCFStringAlertParamRec param;
  ASSERT_EQ(noErr, GetStandardAlertDefaultParams(&param, kStdCFStringAlertVersionOne));
  DialogRef alert;
  ASSERT_EQ(noErr, CreateStandardAlert(kAlertCautionAlert, CFSTR("Done"), nullptr, &param, &alert));
  DialogItemIndex hit = 0;
  ASSERT_EQ(noErr, RunStandardAlert(alert, nullptr, &hit));
  EXPECT_EQ(kAlertStdAlertOKButton, hit);
  ASSERT_EQ(1u, m_backend.m_vecAlerts.size());
  const AlertDescription& shown = m_backend.m_vecAlerts[0];
  EXPECT_EQ(kAlertCautionAlert, shown.m_nKind);
  EXPECT_EQ("Done", shown.m_strMessage);
  EXPECT_EQ("", shown.m_strExplanation);
  EXPECT_EQ(std::vector<std::string>{"OK"}, Labels(shown));
}

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
  EXPECT_EQ((std::vector<std::string>{"No", "Yes"}), Labels(shown));
  EXPECT_EQ(kAlertStdAlertOKButton, shown.m_nDefaultItem);
  EXPECT_EQ(kAlertStdAlertCancelButton, shown.m_nCancelItem);
}

TEST_F(DialogsTest, DefaultOrCancelItemWithoutAButtonIsRefused) {
  AlertStdCFStringAlertParamRec param;
  ASSERT_EQ(noErr, GetStandardAlertDefaultParams(&param, kStdCFStringAlertVersionOne));
  param.cancelButton = kAlertStdAlertCancelButton;  // but no cancel text
  DialogRef alert = nullptr;
  EXPECT_EQ(paramErr, CreateStandardAlert(kAlertStopAlert, CFSTR("x"), nullptr, &param, &alert));
  param.cancelText = kAlertDefaultCancelText;
  param.otherText = kAlertDefaultOtherText;
  ASSERT_EQ(noErr, CreateStandardAlert(kAlertStopAlert, CFSTR("x"), nullptr, &param, &alert));
  DisposeDialog(alert);
}

TEST(ControlDataTest, TitleAndEditTextAreOneText) {
  OpaqueControlRef control;
  CFStringRef title = CFSTR("12");
  ASSERT_EQ(noErr, SetControlData(&control, kControlEntireControl, kControlEditTextCFStringTag,
                                  sizeof title, &title));
  CFStringRef read = nullptr;
  Size size = 0;
  ASSERT_EQ(noErr, GetControlData(&control, kControlEntireControl, kControlEditTextCFStringTag,
                                  sizeof read, &read, &size));
  EXPECT_EQ(static_cast<Size>(sizeof read), size);
  EXPECT_EQ(12, CFStringGetIntValue(read));
  CFRelease(read);
  EXPECT_EQ(paramErr, SetControlData(&control, kControlEntireControl, MakeFourCharCode("text"),
                                     sizeof title, &title));
  EXPECT_EQ(paramErr, SetControlData(&control, kControlEntireControl, kControlEditTextCFStringTag,
                                     4, &title));
}

}  // namespace
