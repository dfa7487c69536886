#include <gtest/gtest.h>

#include <deque>
#include <string>
#include <vector>

#include "platform/DialogBackend.h"
#include "platform/Files.h"
#include "platform/Navigation.h"
#include "tests/TempFolder.h"

namespace {

class NavigationTest : public testing::Test {
 protected:
  // Runs a choose-folder dialog as the application does; the reply's status, and `folder` from
  // its selection when the user chose one.
  OSStatus ChooseFolder(NavUserAction& action, Boolean& valid, FSRef& folder) {
    NavDialogCreationOptions options;
    EXPECT_EQ(noErr, NavGetDefaultDialogCreationOptions(&options));
    options.message = CFSTR("Please choose your Glimmerbox folder.");
    options.preferenceKey = 1;
    options.modality = kWindowModalityWindowModal;
    options.parentWindow = nullptr;
    NavDialogRef dialog = nullptr;
    EXPECT_EQ(noErr, NavCreateChooseFolderDialog(&options, nullptr, nullptr, nullptr, &dialog));
    EXPECT_EQ(noErr, NavDialogRun(dialog));
    action = NavDialogGetUserAction(dialog);
    NavReplyRecord reply;
    const OSStatus status = NavDialogGetReply(dialog, &reply);
    NavDialogDispose(dialog);
    if (status != noErr) return status;
    valid = reply.validRecord;
    long count = -1;
    EXPECT_EQ(noErr, AECountItems(&reply.selection, &count));
    EXPECT_EQ(valid ? 1 : 0, count);
    if (valid) {
      EXPECT_EQ(noErr, AEGetNthPtr(&reply.selection, 1, typeFSRef, nullptr, nullptr, &folder,
                                   sizeof folder, nullptr));
    }
    EXPECT_EQ(noErr, NavDisposeReply(&reply));
    return noErr;
  }

  TempFolder m_temp;
  ScriptedDialogBackend m_backend;
  ScopedDialogBackend m_installed{m_backend};
};

TEST_F(NavigationTest, TheUserChoosesOrCancels) {
  ASSERT_FALSE(m_temp.Path().empty());
  FSRef temp;
  ASSERT_EQ(noErr, FSPathMakeRef(m_temp.PosixPath(), &temp, nullptr));
  struct Case {
    const char* label;
    std::deque<std::string> answers;
    NavUserAction action;
    OSStatus reply;
    Boolean valid;
  };
  const Case cases[] = {
      {"chosen", {m_temp.Path()}, kNavUserActionChoose, noErr, true},
      {"cancelled", {""}, kNavUserActionCancel, noErr, false},
      {"nobody answers", {}, kNavUserActionCancel, noErr, false},
      {"folder gone since", {m_temp.Path("gone")}, kNavUserActionChoose, fnfErr, false},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.label);
    m_backend.m_queFolders = c.answers;
    m_backend.m_vecFolderQuestions.clear();
    NavUserAction action = kNavUserActionNone;
    Boolean valid = false;
    FSRef folder = {};
    EXPECT_EQ(c.reply, ChooseFolder(action, valid, folder));
    EXPECT_EQ(c.action, action);
    EXPECT_EQ(c.valid, valid);
    if (c.valid) {
      EXPECT_EQ(noErr, FSCompareFSRefs(&temp, &folder));
    }
    EXPECT_EQ(std::vector<std::string>{"Please choose your Glimmerbox folder."},
              m_backend.m_vecFolderQuestions);
  }
}

}  // namespace
