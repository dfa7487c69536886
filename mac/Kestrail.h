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

// Imports the first file of an open-documents event and ends the event loop. 0 after an import,
// whatever its outcome; the Apple Event Manager's status when the event's files cannot be read.
// An event without files changes nothing and leaves the application running.
OSErr KestrailHandleOpenAppleEvent(const AppleEvent* event, AppleEvent* reply, long refcon);

// Installs `file` where its filter keeps settings, asking before a replace, and reports the
// outcome in one alert (none when the user keeps an existing file).
void ImportOneSetting(FSRef file);

// A caution alert with `message` and an OK button; the caller keeps `message`.
void DisplayAlert(CFStringRef message);

// Asks whether the installed setting `fileName` may be replaced: 1 for No (the default, also on
// Escape and when the window is closed), 0 for Yes, -1 when the question could not be asked.
int ConfirmFileReplace(const TString& fileName);

// "The setting was installed at <path>" in the user's language, for the caller to release; null
// when it cannot be made.
CFStringRef GetSuccessMessage(FSRef* installedFile);

// Asks the user for the Glimmerbox folder: 0 with `folder` set when the chosen folder holds
// "Glimmerbox Settings"; -1 when the user cancels or chooses another folder.
int AskUserForGlimmerboxFolder(OVFileSystemReference& folder);
