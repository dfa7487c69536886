#include <gtest/gtest.h>

#include <deque>
#include <string>
#include <vector>

#include "platform/DialogBackend.h"
#include "platform/Files.h"
#include "platform/Navigation.h"
#include "tests/ScriptedDialogBackend.h"
#include "tests/TempFolder.h"

namespace {

TEST(NavigationTest, TheUserChoosesOrCancels) {
  TempFolder temp;
  FSRef chosen;
  ASSERT_EQ(noErr, FSPathMakeRef(temp.PosixPath(), &chosen, nullptr));
  ScriptedDialogBackend backend;
  ScopedDialogBackend installed(backend);
  struct Case {
    const char* label;
    std::deque<std::string> answers;
    NavUserAction action;
    OSStatus reply;
    Boolean valid;
  };
  const Case cases[] = {
      {"chosen", {temp.Path()}, kNavUserActionChoose, noErr, true},
      {"cancelled", {""}, kNavUserActionCancel, noErr, false},
      {"folder gone since", {temp.Path("gone")}, kNavUserActionChoose, fnfErr, false},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.label);
    backend.m_queFolders = c.answers;
    NavDialogCreationOptions options;
    ASSERT_EQ(noErr, NavGetDefaultDialogCreationOptions(&options));
    options.message = CFSTR("Pick one.");
    options.modality = kWindowModalityWindowModal;  // without a parent window
    NavDialogRef dialog;
    ASSERT_EQ(noErr, NavCreateChooseFolderDialog(&options, nullptr, nullptr, nullptr, &dialog));
    ASSERT_EQ(noErr, NavDialogRun(dialog));
    EXPECT_EQ(c.action, NavDialogGetUserAction(dialog));
    NavReplyRecord reply;
    EXPECT_EQ(c.reply, NavDialogGetReply(dialog, &reply));
    NavDialogDispose(dialog);
    if (c.reply != noErr) continue;
    EXPECT_EQ(c.valid, reply.validRecord);
    FSRef folder;
    EXPECT_EQ(c.valid ? noErr : errAEIllegalIndex,
              AEGetNthPtr(&reply.selection, 1, typeFSRef, nullptr, nullptr, &folder, sizeof folder,
                          nullptr));
    if (c.valid) {
      EXPECT_EQ(noErr, FSCompareFSRefs(&chosen, &folder));
    }
    EXPECT_EQ(noErr, NavDisposeReply(&reply));
  }
  EXPECT_EQ(std::vector<std::string>(3, "Pick one."), backend.m_vecFolderQuestions);
}

}  // namespace
