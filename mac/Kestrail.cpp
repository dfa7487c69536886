#include "mac/Kestrail.h"

#include <new>
#include <string>

#include "ovlib/base_ui_framework/mac/MacUtil.h"
#include "ovlib/general_framework/OVUtil.h"
#include "ovlib/ps_filter_framework/SettingsUtils.h"
#include "platform/CFHolder.h"
#include "platform/Dialogs.h"
#include "platform/Files.h"
#include "platform/Navigation.h"

const CFStringRef glimmerbox_settings_folder = CFSTR("Glimmerbox Settings");

namespace {

const char kSourceFile[] = "mac/Kestrail";

// The text for `key` in the user's language; the key itself is the text when there is no
// translation. The caller releases it; null when there is none at all.
CFStringRef CopyLocalizedString(CFStringRef key) {
  return CFBundleCopyLocalizedString(CFBundleGetMainBundle(), key, key, nullptr);
}

// A string's text, or an empty one for a string that could not be had (which has been reported).
TString TextOf(CFStringRef string) {
  return string != nullptr ? CreateTStringFromCFStringRef(string) : TString();
}

// The text for `key` in the user's language with `fillers` in its markers %0, %1, ...; empty when
// there is no text at all.
template <typename... Fillers>
TString LocalizedText(CFStringRef key, const Fillers&... fillers) {
  auto text = CFHold(CopyLocalizedString(key));
  if (text == nullptr) return TString();
  const TString textTemplate = TextOf(text.get());
  return TStringParamReplace(&textTemplate, TString(fillers).c_str()...);
}

// An alert of the import flow: shown when its text can be had, else nothing.
void ShowAlert(const TString& message) {
  if (message.empty()) return;
  auto text = CFHold(CreateCFStringRefFromTString(message));
  if (text != nullptr) DisplayAlert(text.get());
}

// Why a file or folder could not be used, in words that follow a colon in a message.
TString ReasonText(OSErr status) {
  static const struct {
    OSErr m_nStatus;
    CFStringRef m_strKey;
  } kReasons[] = {
      // Translators: a reason after a colon, as in "The folder "…" could not be found or made:
      // it does not exist." Likewise every reason that follows.
      {fnfErr, CFSTR_LOCALIZABLE("it does not exist")},
      {dirNFErr, CFSTR_LOCALIZABLE("it is not a folder")},
      {notAFileErr, CFSTR_LOCALIZABLE("it is not a folder")},
      {afpAccessDenied, CFSTR_LOCALIZABLE("permission denied")},
      {vLckdErr, CFSTR_LOCALIZABLE("the disk is read-only")},
      {errFSNameTooLong, CFSTR_LOCALIZABLE("its name or path is too long")},
      {bdNamErr, CFSTR_LOCALIZABLE("its name cannot be used")},
      {untrustedLinkErr, CFSTR_LOCALIZABLE("it is a link that belongs to another user")},
      {dskFulErr, CFSTR_LOCALIZABLE("the disk is full")},
      {tmfoErr, CFSTR_LOCALIZABLE("too many files are open")},
      {memFullErr, CFSTR_LOCALIZABLE("there is not enough memory")},
      {ioErr, CFSTR_LOCALIZABLE("an input/output error")},
  };
  for (const auto& reason : kReasons)
    if (reason.m_nStatus == status) return LocalizedText(reason.m_strKey);
  // Translators: a reason without words of its own; %0 is the system's number for it.
  return LocalizedText(CFSTR_LOCALIZABLE("error %0"), ConvertToTString(std::to_string(status)));
}

// The alert for a setting that could not be examined or whose folder could not be had.
TString RoutingProblemText(const RoutingReport& report) {
  switch (report.m_nProblem) {
    case RoutingReport::kUnreadable:
      // Translators: the alert when the file opened cannot be read; %0 is the reason.
      return LocalizedText(CFSTR_LOCALIZABLE("This file could not be read: %0."),
                           ReasonText(report.m_nStatus));
    case RoutingReport::kTooLarge:
      // Translators: the alert when the file opened is far larger than any settings file.
      return LocalizedText(CFSTR_LOCALIZABLE("This file is too large to be a settings file."));
    case RoutingReport::kNoHomeFolder:
      // Translators: the alert when the environment names no home folder; HOME stays as it is.
      return LocalizedText(CFSTR_LOCALIZABLE(
          "The setting cannot be installed: there is no home folder (HOME does not name one)."));
    case RoutingReport::kFolder:
      // Translators: the alert when a settings folder cannot be had; %0 is the folder's path,
      // %1 the reason.
      return LocalizedText(CFSTR_LOCALIZABLE("The folder \"%0\" could not be found or made: %1."),
                           ShownName(report.m_strFolder), ReasonText(report.m_nStatus));
    default:
      // Translators: the alert when the file opened is no settings file.
      return LocalizedText(CFSTR_LOCALIZABLE("Error Examining Setting"));
  }
}

// One line on standard error for a "User Folder" preference that is set but cannot serve: the
// setting still goes somewhere, and the user learns why it is not where they asked.
void TellOfUnusedUserFolder(const RoutingReport& report) {
  if (report.m_nUserFolderStatus == noErr) return;
  const TString reason =
      report.m_nUserFolderStatus == paramErr
          // Translators: why the "User Folder" preference is not used: its value is no text.
          ? LocalizedText(CFSTR_LOCALIZABLE("it is not a text"))
          : report.m_nUserFolderStatus == bdNamErr
                // Translators: why the "User Folder" preference is not used: it is a relative path.
                ? LocalizedText(CFSTR_LOCALIZABLE("it is not an absolute path"))
                : ReasonText(report.m_nUserFolderStatus);
  // Translators: a line on the terminal; "User Folder" is the preference's name and stays as it
  // is; %0 is its value, %1 the reason.
  OV_WriteToConsole(L"kestrail: " +
                    LocalizedText(CFSTR_LOCALIZABLE("The \"User Folder\" preference \"%0\" is not "
                                                    "used: %1. Settings go into the data folder "
                                                    "instead."),
                                  ShownName(report.m_strUserFolder), reason));
}

// Copies or unpacks the setting into `destination` as `installed`, over a setting of its name
// only with `replace`; only the file in the state `examined` is installed.
int WriteSetting(SettingFileRoutingInfo& info, OVFileSystemReference& destination, bool replace,
                 const OVFileVersion& examined, OVFileSystemReference& installed) {
  return info.isOldStyle ? SettingsUtils::UnpackageOldSettingsFile(info.sourceFile, destination,
                                                                   installed, replace, &examined)
                         : info.sourceFile.Copy(destination, installed, replace, &examined);
}

// How a step of the flow ends: it goes on to the next step, or the flow ends there, silently when
// the user kept the installed setting, else with one alert.
struct StepEnd {
  enum Way { kGoOn, kKeptTheFile, kAlert };
  Way m_nWay = kGoOn;
  TString m_strMessage;  // the alert's text, in the user's language

  explicit operator bool() const { return m_nWay != kGoOn; }
};

const StepEnd kGoOn;
const StepEnd kKeptTheFile = {StepEnd::kKeptTheFile, TString()};

StepEnd Alert(const TString& message) { return {StepEnd::kAlert, message}; }

// Translators: the alert when the setting could not be installed, for whatever reason.
StepEnd Failure() { return Alert(LocalizedText(CFSTR_LOCALIZABLE("Failure"))); }

// The folder the setting goes in: the filter's folder, or for a Glimmerbox setting the filter's
// folder inside the folder the user points at.
StepEnd FindDestination(const SettingFileRoutingInfo& info, OVFileSystemReference& destination) {
  destination = info.destinationFolder;
  if (info.needsGlimmerboxFolder) {
    OVFileSystemReference glimmerboxFolder;
    if (AskUserForGlimmerboxFolder(glimmerboxFolder) != 0) {
      // Translators: the alert when no folder holding "Glimmerbox Settings" (a folder's name,
      // which stays as it is) was chosen in the Glimmerbox folder dialog.
      return Alert(LocalizedText(CFSTR_LOCALIZABLE("Error Locating Glimmerbox")));
    }
    // The chosen folder holds an entry "Glimmerbox Settings"; a setting goes in only when that
    // and the filter's folder inside it are folders, or links to folders that the user made.
    // Nothing is created there: a missing folder means a filter that is not installed.
    RoutingReport report;
    OVFileSystemReference settingsFolder;
    if (SettingsUtils::GetSubfolder(glimmerboxFolder, TextOf(glimmerbox_settings_folder), false,
                                    settingsFolder, &report) != 0 ||
        SettingsUtils::GetSubfolder(settingsFolder, info.filterName, false, destination, &report) !=
            0)
      return Alert(RoutingProblemText(report));
  }
  // A file where the filter's folder should be cannot receive the setting. That is the user's
  // disk, not a fault of the program, so it gets the ordinary failure and no bug report.
  if (!destination.IsFolder()) return Failure();
  return kGoOn;
}

// A file is never installed into the folder that already holds it.
StepEnd RefuseTheSourceFolder(const SettingFileRoutingInfo& info,
                              const OVFileSystemReference& destination) {
  OVFileSystemReference sourceFolder;
  if (info.sourceFile.MakeParentReference(sourceFolder) != 0) return Failure();
  if (FSCompareFSRefs(sourceFolder, destination) == noErr) {
    // Translators: the alert when the file opened is the installed setting itself.
    return Alert(LocalizedText(CFSTR_LOCALIZABLE("Error Source and Destination Same")));
  }
  return kGoOn;
}

// The name the setting is installed under: the package's setting name, or the file's own.
StepEnd NameTheSetting(const SettingFileRoutingInfo& info, TString& name) {
  name = info.settingName;
  if (!info.isOldStyle && info.sourceFile.GetName(name) != 0) return Failure();
  return kGoOn;
}

// Writes the setting, asking first when its name is taken. A name found free is taken only
// while it stays free: another Kestrail may install a setting of that name meanwhile, and
// replacing that one needs the question as much as any. A question that could not be asked
// does not stop the install.
StepEnd WriteAskingBeforeReplace(SettingFileRoutingInfo& info, OVFileSystemReference& destination,
                                 const TString& name, const OVFileVersion& examined,
                                 OVFileSystemReference& installed) {
  bool exists = false;
  if (destination.SubobjectExists(name, exists) != 0) return Failure();
  if (exists && ConfirmFileReplace(name) == 1) return kKeptTheFile;
  int status = WriteSetting(info, destination, exists, examined, installed);
  if (status != 0 && !exists && destination.SubobjectExists(name, exists) == 0 && exists) {
    if (ConfirmFileReplace(name) == 1) return kKeptTheFile;
    status = WriteSetting(info, destination, true, examined, installed);
  }
  if (status != 0) return Failure();
  return kGoOn;
}

// The steps of the flow after the examination, each of which may end it, and the one alert that
// reports how it ended.
void InstallSetting(SettingFileRoutingInfo& info, const OVFileVersion& examined) {
  OVFileSystemReference destination, installed;
  TString name;
  StepEnd end = FindDestination(info, destination);
  if (!end) end = RefuseTheSourceFolder(info, destination);
  if (!end) end = NameTheSetting(info, name);
  if (!end) end = WriteAskingBeforeReplace(info, destination, name, examined, installed);
  if (end) {
    ShowAlert(end.m_strMessage);
    return;
  }
  if (auto message = CFHold(GetSuccessMessage(installed))) DisplayAlert(message.get());
}

}  // namespace

SettingFileRoutingInfo::SettingFileRoutingInfo(OVFileSystemReference source)
    : sourceFile(source), isOldStyle(false), needsGlimmerboxFolder(false) {}

OSErr KestrailHandleOpenAppleEvent(const AppleEvent* event, AppleEvent*, long) {
  AEDescList list = {typeNull, nullptr};
  OSErr status = AEGetParamDesc(event, keyDirectObject, typeAEList, &list);
  if (status == noErr) {
    long count = 0;
    status = AECountItems(&list, &count);
    if (status == noErr && count < 1) {
      AEDisposeDesc(&list);
      return noErr;  // nothing to import: keep running for the next event
    }
    if (status == noErr) {
      AEKeyword keyword;
      DescType actualType;
      Size actualSize;
      FSRef file;
      status =
          AEGetNthPtr(&list, 1, typeFSRef, &keyword, &actualType, &file, sizeof file, &actualSize);
      if (status == noErr) ImportOneSetting(file);
    }
    AEDisposeDesc(&list);
  }
  QuitApplicationEventLoop();
  return status;
}

void ImportOneSetting(FSRef file) {
  SettingFileRoutingInfo info{OVFileSystemReference(file)};
  // Taken before the examination reads the file, so that a file written after that, even while
  // the replace question is open, is not installed in place of the one the user was shown.
  OVFileVersion examined;
  try {
    RoutingReport report;
    if (info.sourceFile.GetVersion(examined) != 0) {
      report.m_nProblem = RoutingReport::kUnreadable;
      report.m_nStatus = fnfErr;  // gone since the system named it
    } else if (SettingsUtils::LocateFolderForSetting(
                   info.sourceFile, info.destinationFolder, info.settingName, info.setName,
                   info.filterName, info.isOldStyle, info.needsGlimmerboxFolder, &report) == 0) {
      TellOfUnusedUserFolder(report);
      InstallSetting(info, examined);
      return;
    }
    TellOfUnusedUserFolder(report);
    ShowAlert(RoutingProblemText(report));
  } catch (const std::bad_alloc&) {
    // A file too large to hold in memory is a setting that could not be installed, not a crash.
    ShowAlert(LocalizedText(CFSTR_LOCALIZABLE("Failure")));
  }
}

void DisplayAlert(CFStringRef message) {
  AlertStdCFStringAlertParamRec params;
  DialogRef alert = nullptr;
  if (GetStandardAlertDefaultParams(&params, kStdCFStringAlertVersionOne) != noErr ||
      CreateStandardAlert(kAlertCautionAlert, message, nullptr, &params, &alert) != noErr) {
    OV_AssertFailed(kSourceFile, __LINE__, "DisplayAlert");
    return;
  }
  DialogItemIndex item;
  RunStandardAlert(alert, nullptr, &item);
}

int ConfirmFileReplace(const TString& fileName) {
  // The texts may be missing (each is reported); the holders release only those that exist.
  // Translators: the replace question's button that replaces the installed setting ("Replace").
  auto yes = CFHold(CopyLocalizedString(CFSTR_LOCALIZABLE("Yes")));
  if (yes == nullptr) OV_AssertFailed(kSourceFile, __LINE__, "ConfirmFileReplace");
  // Translators: the replace question's button that keeps the installed setting ("Keep
  // Existing"); Return presses it. On the terminal a button's first letter answers for it, so
  // the two buttons' titles begin with different letters.
  auto no = CFHold(CopyLocalizedString(CFSTR_LOCALIZABLE("No")));
  if (no == nullptr) OV_AssertFailed(kSourceFile, __LINE__, "ConfirmFileReplace");
  // Translators: the replace question; %0 is the name of the setting's file.
  auto question = CFHold(CopyLocalizedString(CFSTR_LOCALIZABLE("Confirm Replace Message")));
  if (question == nullptr) OV_AssertFailed(kSourceFile, __LINE__, "ConfirmFileReplace");

  // The name is the file's own: shown so that it cannot pass for more of the question.
  const TString questionTemplate = TextOf(question.get());
  const TString shownName = ShownName(fileName);
  auto message = CFHold(
      CreateCFStringRefFromTString(TStringParamReplace(&questionTemplate, shownName.c_str())));
  if (message == nullptr) OV_AssertFailed(kSourceFile, __LINE__, "ConfirmFileReplace");

  // Keeping the existing file is both the default and the cancel answer, so that neither Return
  // nor Escape nor closing the window destroys anything: only the Replace button itself replaces.
  AlertStdCFStringAlertParamRec params;
  params.version = kStdCFStringAlertVersionOne;
  params.movable = false;
  params.helpButton = false;
  params.defaultText = no.get();
  params.cancelText = yes.get();
  params.otherText = nullptr;
  params.defaultButton = kAlertStdAlertOKButton;
  params.cancelButton = kAlertStdAlertOKButton;
  params.position = kWindowDefaultPosition;
  params.flags = 0;
  DialogRef alert = nullptr;
  const OSStatus created =
      CreateStandardAlert(kAlertCautionAlert, message.get(), nullptr, &params, &alert);

  DialogItemIndex item = 0;
  if (created != noErr || alert == nullptr || RunStandardAlert(alert, nullptr, &item) != noErr) {
    return -1;
  }
  return item == kAlertStdAlertOKButton ? 1 : item == kAlertStdAlertCancelButton ? 0 : -1;
}

CFStringRef GetSuccessMessage(FSRef* installedFile) {
  auto url = CFHold(CFURLCreateFromFSRef(kCFAllocatorDefault, installedFile));
  if (url == nullptr) return nullptr;
  auto path = CFHold(CFURLCopyFileSystemPath(url.get(), kCFURLPOSIXPathStyle));
  if (path == nullptr) return nullptr;
  const TString pathText = CreateTStringFromCFStringRef(path.get());
  // Translators: the alert after the install; %0 is the full path of the installed file.
  auto success = CFHold(CopyLocalizedString(CFSTR_LOCALIZABLE("Success")));
  if (success == nullptr) return nullptr;
  const TString successTemplate = CreateTStringFromCFStringRef(success.get());
  const TString shownPath = ShownName(pathText);
  return CreateCFStringRefFromTString(TStringParamReplace(&successTemplate, shownPath.c_str()));
}

int AskUserForGlimmerboxFolder(OVFileSystemReference& folder) {
  // The message is looked up like the alerts' texts, so that the dialog asks in the user's
  // language too; its English text is its key.
  // Translators: the message of the folder dialog that a Glimmerbox setting waits for; the
  // folder to choose holds "Glimmerbox Settings".
  const CFStringRef question = CFSTR_LOCALIZABLE("Please choose your Glimmerbox folder.");
  auto message = CFHold(CopyLocalizedString(question));
  NavDialogCreationOptions options;
  NavGetDefaultDialogCreationOptions(&options);
  options.message = message.get();
  options.preferenceKey = 1;
  // The import goes on with the answer as soon as the dialog returns, so the dialog is modal for
  // the whole application; there is no window for it to be modal to.
  options.modality = kWindowModalityAppModal;
  options.parentWindow = nullptr;

  NavDialogRef dialog = nullptr;
  if (NavCreateChooseFolderDialog(&options, nullptr, nullptr, nullptr, &dialog) != noErr) {
    return -1;
  }
  int status = -1;
  NavReplyRecord reply;
  if (NavDialogRun(dialog) == noErr && NavDialogGetUserAction(dialog) == kNavUserActionChoose &&
      NavDialogGetReply(dialog, &reply) == noErr) {
    AEKeyword keyword;
    DescType actualType;
    Size actualSize;
    const OSErr read = AEGetNthPtr(&reply.selection, 1, typeFSRef, &keyword, &actualType,
                                   static_cast<FSRef*>(folder), sizeof(FSRef), &actualSize);
    NavDisposeReply(&reply);
    OVFileSystemReference settingsFolder;
    if (read == noErr &&
        folder.MakeSubobjectReference(TextOf(glimmerbox_settings_folder), settingsFolder) == 0) {
      status = 0;
    }
  }
  NavDialogDispose(dialog);
  return status;
}
