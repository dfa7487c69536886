#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "platform/DialogBackend.h"
#include "platform/Dialogs.h"
#include "platform/Files.h"
#include "platform/Navigation.h"
#include "tests/ScriptedDialogBackend.h"
#include "tests/TempFolder.h"

namespace {

class DialogsTest : public testing::Test {
 protected:
  ScriptedDialogBackend m_backend;
  ScopedDialogBackend m_installed{m_backend};
};

// The texts and buttons of an alert are checked where the application shows its alerts; none of
// those has a cancel item apart from the default one, as this one has.
TEST_F(DialogsTest, CancelItemApartFromTheDefault) {
  AlertStdCFStringAlertParamRec param;
  ASSERT_EQ(noErr, GetStandardAlertDefaultParams(&param, kStdCFStringAlertVersionOne));
  param.cancelText = CFSTR("Cancel");
  param.cancelButton = kAlertStdAlertCancelButton;
  DialogRef alert;
  ASSERT_EQ(noErr, CreateStandardAlert(kAlertCautionAlert, CFSTR("?"), nullptr, &param, &alert));
  m_backend.m_queAnswers.push_back(kAlertStdAlertCancelButton);
  DialogItemIndex hit = 0;
  ASSERT_EQ(noErr, RunStandardAlert(alert, nullptr, &hit));
  EXPECT_EQ(kAlertStdAlertCancelButton, hit);
  EXPECT_EQ(kAlertStdAlertOKButton, m_backend.m_vecAlerts.at(0).m_nDefaultItem);
  EXPECT_EQ(kAlertStdAlertCancelButton, m_backend.m_vecAlerts.at(0).m_nCancelItem);
}

TEST_F(DialogsTest, TheUserChoosesAFolderOrCancels) {
  TempFolder temp;
  FSRef chosen;
  ASSERT_EQ(noErr, FSPathMakeRef(temp.PosixPath(), &chosen, nullptr));
  struct Case {
    const char* label;
    std::string answer;  // empty: cancel
    OSStatus reply;
  };
  const Case cases[] = {
      {"chosen", temp.Path(), noErr},
      {"cancelled", "", noErr},
      {"folder gone since", temp.Path("gone"), fnfErr},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.label);
    m_backend.m_queFolders = {c.answer};
    NavDialogCreationOptions options;
    ASSERT_EQ(noErr, NavGetDefaultDialogCreationOptions(&options));
    options.message = CFSTR("Pick one.");
    NavDialogRef dialog;
    ASSERT_EQ(noErr, NavCreateChooseFolderDialog(&options, nullptr, nullptr, nullptr, &dialog));
    ASSERT_EQ(noErr, NavDialogRun(dialog));
    const bool chose = !c.answer.empty();
    EXPECT_EQ(chose ? kNavUserActionChoose : kNavUserActionCancel, NavDialogGetUserAction(dialog));
    NavReplyRecord reply;
    EXPECT_EQ(c.reply, NavDialogGetReply(dialog, &reply));
    NavDialogDispose(dialog);
    if (c.reply != noErr) continue;
    EXPECT_EQ(chose, reply.validRecord);
    FSRef folder;
    EXPECT_EQ(chose ? noErr : errAEIllegalIndex,
              AEGetNthPtr(&reply.selection, 1, typeFSRef, nullptr, nullptr, &folder, sizeof folder,
                          nullptr));
    EXPECT_TRUE(!chose || FSCompareFSRefs(&chosen, &folder) == noErr);
    EXPECT_EQ(noErr, NavDisposeReply(&reply));
  }
  EXPECT_EQ(std::vector<std::string>(3, "Pick one."), m_backend.m_vecFolderQuestions);
}

}  // namespace
