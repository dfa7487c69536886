// Navigation.cpp: the choose-folder dialog, asked through the active dialog backend.
#include "platform/Navigation.h"

#include <optional>
#include <string>

#include "platform/DialogBackend.h"
#include "platform/Files.h"
#include "platform/internal/CFObject.h"

struct OpaqueNavDialog {
  std::string m_strMessage;
  NavUserAction m_nAction = kNavUserActionNone;
  std::string m_strChosen;  // the chosen folder's path, after kNavUserActionChoose
};

OSStatus NavGetDefaultDialogCreationOptions(NavDialogCreationOptions* outOptions) {
  if (outOptions == nullptr) return paramErr;
  *outOptions = NavDialogCreationOptions{};
  outOptions->version = kNavDialogCreationOptionsVersion;
  outOptions->modality = kWindowModalityAppModal;
  return noErr;
}

OSStatus NavCreateChooseFolderDialog(const NavDialogCreationOptions* inOptions, NavEventUPP,
                                     NavObjectFilterUPP, void*, NavDialogRef* outDialog) {
  if (outDialog == nullptr) return paramErr;
  OpaqueNavDialog* dialog = new OpaqueNavDialog;
  if (inOptions != nullptr && inOptions->message != nullptr)
    dialog->m_strMessage = DisplayText(inOptions->message);
  *outDialog = dialog;
  return noErr;
}

OSStatus NavDialogRun(NavDialogRef inDialog) {
  if (inDialog == nullptr) return paramErr;
  const std::optional<std::string> chosen =
      ActiveDialogBackend().ChooseFolder(inDialog->m_strMessage);
  inDialog->m_nAction = chosen ? kNavUserActionChoose : kNavUserActionCancel;
  inDialog->m_strChosen = chosen.value_or("");
  return noErr;
}

NavUserAction NavDialogGetUserAction(NavDialogRef inDialog) {
  return inDialog != nullptr ? inDialog->m_nAction : kNavUserActionNone;
}

OSStatus NavDialogGetReply(NavDialogRef inDialog, NavReplyRecord* outReply) {
  if (inDialog == nullptr || outReply == nullptr) return paramErr;
  *outReply = NavReplyRecord{};
  OSStatus err = AECreateList(nullptr, 0, false, &outReply->selection);
  if (err != noErr || inDialog->m_nAction != kNavUserActionChoose) return err;
  // The backend answers with a path, which becomes a reference only now: a folder that has gone
  // since the user chose it fails this call with the File Manager's status.
  FSRef folder;
  err = FSPathMakeRef(reinterpret_cast<const UInt8*>(inDialog->m_strChosen.c_str()), &folder,
                      nullptr);
  if (err == noErr) err = AEPutPtr(&outReply->selection, 0, typeFSRef, &folder, sizeof folder);
  if (err != noErr) {
    AEDisposeDesc(&outReply->selection);
    return err;
  }
  outReply->validRecord = true;
  return noErr;
}

OSStatus NavDisposeReply(NavReplyRecord* inReply) {
  if (inReply == nullptr) return paramErr;
  return AEDisposeDesc(&inReply->selection);
}

void NavDialogDispose(NavDialogRef inDialog) { delete inDialog; }
