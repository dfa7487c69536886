// Kestrail.h: the application: the open-documents handler, the import flow that installs one
// settings file, the alerts and the replace question that report it, and the choice of the
// Glimmerbox folder. Everything runs on the main thread; every dialog is modal.
#pragma once

#include "ovlib/general_framework/OVFileSystemReferenceMac.h"
#include "platform/AppleEvents.h"
#include "platform/CoreFoundation.h"
#include "xmlparser/TString.h"

// "Glimmerbox Settings": the folder inside the Glimmerbox folder that holds its filters' folders.
extern const CFStringRef glimmerbox_settings_folder;

// One setting on its way through the import flow; filled by SettingsUtils::LocateFolderForSetting.
struct SettingFileRoutingInfo {
  explicit SettingFileRoutingInfo(OVFileSystemReference source);

  OVFileSystemReference sourceFile;
  TString settingName;  // for an old-style package, the name the setting is installed under
  OVFileSystemReference destinationFolder;
  TString setName;
  TString filterName;  // for a Glimmerbox setting, its folder inside "Glimmerbox Settings"
  bool isOldStyle;     // unpacked rather than copied
  bool needsGlimmerboxFolder;
};

// Imports the files of an open-documents event and ends the event loop. One file is installed
// and reported alone. Two or more are installed in order, asking for the Glimmerbox folder at
// most once and letting one answer serve every later name that is taken, and are summed up in one
// alert; an item that is no file is one that failed. 0 after the imports, whatever their
// outcomes; the Apple Event Manager's status when the event's files cannot be read, or when its
// one file cannot be had. An event without files changes nothing and leaves the application
// running.
OSErr KestrailHandleOpenAppleEvent(const AppleEvent* event, AppleEvent* reply, long refcon);

// Installs `file` where its filter keeps settings, asking before a replace, and reports the
// outcome in one alert (none when the user keeps an existing file).
void ImportOneSetting(FSRef file);

// A caution alert with `message` and an OK button; the caller keeps `message`.
void DisplayAlert(CFStringRef message);

// The answers to the replace question.
enum : int {
  kReplaceAnswerYes = 0,       // replace the installed setting
  kReplaceAnswerNo = 1,        // keep it, and install nothing
  kReplaceAnswerKeepBoth = 2,  // install the new one beside it under a numbered name
};

// Asks whether the installed setting `fileName` may be replaced: kReplaceAnswerNo (the default,
// also on Escape and when the window is closed), kReplaceAnswerYes or kReplaceAnswerKeepBoth; -1
// when the question could not be asked. With `applyToAll`, the question also offers to give the
// same answer to the rest of the files, off at first, and says there whether the user chose to.
// With `deletesForGood`, the question says that the installed setting cannot go to the Trash, so
// that replacing it deletes it for good.
int ConfirmFileReplace(const TString& fileName, bool* applyToAll = nullptr,
                       bool deletesForGood = false);

// "The setting was installed at <path>" in the user's language, for the caller to release; null
// when it cannot be made. With `replacedIntoTheTrash`, it says too that the setting it replaced
// is in the Trash.
CFStringRef GetSuccessMessage(FSRef* installedFile, bool replacedIntoTheTrash = false);

// Asks the user for the Glimmerbox folder: 0 with `folder` set when the chosen folder holds
// "Glimmerbox Settings"; -1 when the user cancels or chooses another folder.
int AskUserForGlimmerboxFolder(OVFileSystemReference& folder);
