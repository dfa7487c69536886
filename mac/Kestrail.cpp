#include "mac/Kestrail.h"

#include <algorithm>
#include <memory>
#include <new>
#include <optional>
#include <string>
#include <vector>

#include "mac/Texts.h"
#include "ovlib/base_ui_framework/mac/MacUtil.h"
#include "ovlib/general_framework/OVUtil.h"
#include "ovlib/ps_filter_framework/SettingsUtils.h"
#include "platform/CFHolder.h"
#include "platform/Dialogs.h"
#include "platform/Files.h"
#include "platform/Navigation.h"
#include "platform/System.h"

const CFStringRef glimmerbox_settings_folder = CFSTR("Glimmerbox Settings");

namespace {

const char kSource[] = "mac/Kestrail";

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
TString FailureText() { return LocalizedText(CFSTR_LOCALIZABLE("Failure")); }

StepEnd Failure() { return Alert(FailureText()); }

// Files of a batch wait to be named together at most this many at a time: enough to share the
// flushes among many, and half the temporary files there may be, leaving room for the rest.
const std::size_t kMostWaiting = kMostTemporaryFiles / 2;

// How one file's install ended: the alert that tells of it when it was opened alone, and its
// line in the summary when it was opened with others.
struct Outcome {
  enum Group { kInstalled, kKept, kNotASetting, kFailed };
  Group m_nGroup = kFailed;
  TString m_strFile;     // the name of the file opened
  TString m_strMessage;  // the alert's text, in the user's language; empty: no alert
  OVFileSystemReference m_installed;
  // Where it went, read once it has its name: a later file of the batch may replace it.
  TString m_strInstalledName, m_strFolder;
  bool m_bReplacedIntoTheTrash = false;  // the setting it replaced is in the Trash
};

// Ends `outcome` as its install's last step ended. An installed setting notes where it went at
// once: a later file of the batch may replace it.
void EndOutcome(const StepEnd& end, Outcome& outcome) {
  outcome.m_nGroup = end.m_nWay == StepEnd::kKeptTheFile ? Outcome::kKept
                     : end.m_nWay == StepEnd::kAlert     ? Outcome::kFailed
                                                         : Outcome::kInstalled;
  outcome.m_strMessage = end.m_strMessage;
  if (outcome.m_nGroup != Outcome::kInstalled) return;
  OVFileSystemReference folder;
  outcome.m_installed.GetName(outcome.m_strInstalledName);
  if (outcome.m_installed.MakeParentReference(folder) == 0) folder.GetPath(outcome.m_strFolder);
}

// What the install of one setting has still to do once its name is decided: the files of a
// batch take their names together.
struct WaitingSetting {
  std::size_t m_nOutcome;
  SettingFileRoutingInfo m_info;
  OVFileVersion m_examined;
  OVFileSystemReference m_destination;
  TString m_strName;
};

// What the files of one open-documents event share.
struct Batch {
  explicit Batch(std::size_t files) : m_nFiles(files) {
    if (files > 1) m_pNaming = std::make_unique<OVFileBatch>();
  }

  std::size_t m_nFiles;
  std::size_t m_nCurrent = 0;  // the file being installed, counted from 0
  // The Glimmerbox folder is asked for once, when the first Glimmerbox setting needs it.
  std::optional<int> m_nGlimmerboxStatus;  // none until asked
  OVFileSystemReference m_glimmerboxFolder;
  // The answer the user gave for every later name that is taken; -1 until then. Whether the
  // question it answered said the setting would be deleted for good.
  int m_nAnswerForAll = -1;
  bool m_bAnswerForAllDeletes = false;
  std::unique_ptr<OVFileBatch> m_pNaming;  // null for one file: it is named at once
  std::vector<WaitingSetting> m_vecWaiting;
  std::vector<Outcome> m_vecOutcomes;
};

StepEnd WriteAskingBeforeReplace(SettingFileRoutingInfo& info, OVFileSystemReference& destination,
                                 const TString& name, const OVFileVersion& examined, Batch& batch,
                                 bool stage, Outcome& outcome);

// Names the settings whose files wait, and ends each one's outcome. A name that another process
// took meanwhile is asked about, as when the file is written alone.
void NameTheWaiting(Batch& batch) {
  if (batch.m_pNaming == nullptr || batch.m_vecWaiting.empty()) return;
  std::vector<WaitingSetting> waiting;
  waiting.swap(batch.m_vecWaiting);
  const std::vector<OVFileBatch::Named> named = batch.m_pNaming->NameAll();
  for (std::size_t i = 0; i < waiting.size(); ++i) {
    WaitingSetting& setting = waiting[i];
    Outcome& outcome = batch.m_vecOutcomes[setting.m_nOutcome];
    outcome.m_installed = named[i].m_file;
    StepEnd end;
    if (named[i].m_nStatus == dupFNErr)
      end = WriteAskingBeforeReplace(setting.m_info, setting.m_destination, setting.m_strName,
                                     setting.m_examined, batch, false, outcome);
    else if (named[i].m_nStatus != noErr)
      end = Failure();
    EndOutcome(end, outcome);
  }
}

// The Glimmerbox folder: asked for the first time a setting needs it; the answer serves the
// rest of the batch, so that a pack of Glimmerbox settings asks once.
int GlimmerboxFolder(Batch& batch, OVFileSystemReference& folder) {
  if (!batch.m_nGlimmerboxStatus) {
    NameTheWaiting(batch);  // what came before is installed while the user chooses
    batch.m_nGlimmerboxStatus = AskUserForGlimmerboxFolder(batch.m_glimmerboxFolder);
  }
  folder = batch.m_glimmerboxFolder;
  return *batch.m_nGlimmerboxStatus;
}

// Copies or unpacks the setting into `destination` as `installed`: over a setting of its name
// only with `replace` (that one going to the Trash with `trash`), beside it under a numbered name
// with `numbered`, and with `stage` as one of the batch's files, named later. Only the file in
// the state `examined` is installed.
int WriteSetting(SettingFileRoutingInfo& info, OVFileSystemReference& destination, bool replace,
                 bool numbered, bool trash, const OVFileVersion& examined, Batch& batch, bool stage,
                 OVFileSystemReference& installed) {
  const OVNewFileOptions options = {numbered, trash, stage ? batch.m_pNaming.get() : nullptr};
  return info.isOldStyle
             ? SettingsUtils::UnpackageOldSettingsFile(info.sourceFile, destination, installed,
                                                       replace, &examined, options)
             : info.sourceFile.Copy(destination, installed, replace, &examined, options);
}

// The folder the setting goes in: the filter's folder, or for a Glimmerbox setting the filter's
// folder inside the folder the user points at.
StepEnd FindDestination(const SettingFileRoutingInfo& info, Batch& batch,
                        OVFileSystemReference& destination) {
  destination = info.destinationFolder;
  if (info.needsGlimmerboxFolder) {
    OVFileSystemReference glimmerboxFolder;
    if (GlimmerboxFolder(batch, glimmerboxFolder) != 0) {
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

// The answer to the replace question for `name`: the one given for all of the batch, if any, else
// the user's, who may give it for every later file of the batch while more are to come. A Replace
// given while the settings went to the Trash does not serve one that would be deleted for good:
// that one is asked about, saying so.
int AskBeforeReplace(const TString& name, bool deletesForGood, Batch& batch) {
  const bool answered = batch.m_nAnswerForAll >= 0;
  if (answered && !(batch.m_nAnswerForAll == kReplaceAnswerYes && deletesForGood &&
                    !batch.m_bAnswerForAllDeletes))
    return batch.m_nAnswerForAll;
  NameTheWaiting(batch);  // what came before is installed while the user answers
  const bool moreToCome = batch.m_nCurrent + 1 < batch.m_nFiles;
  bool forAll = false;
  const int answer = ConfirmFileReplace(name, moreToCome ? &forAll : nullptr, deletesForGood);
  if (forAll && answer >= 0) {
    batch.m_nAnswerForAll = answer;
    batch.m_bAnswerForAllDeletes = deletesForGood;
  }
  return answer;
}

// Whether the setting `name` in `destination` would go to the Trash if replaced; true too when it
// cannot be told, as the write then finds out and fails rather than delete it.
bool GoesToTheTrash(const OVFileSystemReference& destination, const TString& name) {
  OVFileSystemReference existing;
  return destination.MakeSubobjectReference(name, existing) != 0 ||
         FSCanMoveObjectToTrash(existing);
}

// Writes the setting, asking first when its name is taken. A name found free is taken only
// while it stays free: another Kestrail may install a setting of that name meanwhile, and
// replacing that one needs the question as much as any. A question that could not be asked
// does not stop the install. With `stage`, the file is one of the batch's, named later.
StepEnd WriteAskingBeforeReplace(SettingFileRoutingInfo& info, OVFileSystemReference& destination,
                                 const TString& name, const OVFileVersion& examined, Batch& batch,
                                 bool stage, Outcome& outcome) {
  // An earlier file of this batch that waits for this name is named first, so that this one is
  // asked about it as about any setting installed before.
  if (batch.m_pNaming != nullptr && batch.m_pNaming->Awaits(name)) NameTheWaiting(batch);
  bool exists = false;
  if (destination.SubobjectExists(name, exists) != 0) return Failure();
  for (;;) {
    // An installed setting is replaced only into the Trash, unless the question said otherwise.
    const bool trash = exists && GoesToTheTrash(destination, name);
    const int answer = exists ? AskBeforeReplace(name, !trash, batch) : kReplaceAnswerYes;
    if (answer == kReplaceAnswerNo) return kKeptTheFile;
    const bool keepBoth = answer == kReplaceAnswerKeepBoth;
    if (WriteSetting(info, destination, exists, keepBoth, trash, examined, batch, stage,
                     outcome.m_installed) == 0) {
      outcome.m_bReplacedIntoTheTrash = exists && trash && !keepBoth;
      return kGoOn;
    }
    // A name found free but taken by the time the setting was written is asked about, once.
    if (exists || destination.SubobjectExists(name, exists) != 0 || !exists) return Failure();
  }
}

// The steps of the flow after the examination, each of which may end it. A setting written for
// a batch waits there to be named.
void InstallSetting(SettingFileRoutingInfo& info, const OVFileVersion& examined, Batch& batch,
                    Outcome& outcome) {
  OVFileSystemReference destination;
  TString name;
  StepEnd end = FindDestination(info, batch, destination);
  if (!end) end = RefuseTheSourceFolder(info, destination);
  if (!end) end = NameTheSetting(info, name);
  const bool stage = batch.m_pNaming != nullptr;
  if (!end)
    end = WriteAskingBeforeReplace(info, destination, name, examined, batch, stage, outcome);
  // A setting that waits to be named ends only then.
  if (!end && stage) {
    batch.m_vecWaiting.push_back({batch.m_vecOutcomes.size(), info, examined, destination, name});
    return;
  }
  EndOutcome(end, outcome);
}

// Examines one file and installs it, keeping how it ended in the batch's outcomes.
void ImportSetting(FSRef file, Batch& batch) {
  Outcome outcome;
  SettingFileRoutingInfo info{OVFileSystemReference(file)};
  if (batch.m_nFiles > 1) info.sourceFile.GetName(outcome.m_strFile);  // for the summary
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
      InstallSetting(info, examined, batch, outcome);
      batch.m_vecOutcomes.push_back(outcome);
      return;
    }
    TellOfUnusedUserFolder(report);
    outcome.m_nGroup =
        report.m_nProblem == RoutingReport::kNotASetting ? Outcome::kNotASetting : Outcome::kFailed;
    outcome.m_strMessage = RoutingProblemText(report);
  } catch (const std::bad_alloc&) {
    // A file too large to hold in memory is a setting that could not be installed, not a crash.
    outcome.m_nGroup = Outcome::kFailed;
    outcome.m_strMessage = FailureText();
  }
  batch.m_vecOutcomes.push_back(outcome);
}

// An alert that tells what was installed, with OK as its default and, when there are `installed`
// settings to show, a button that shows them in the file manager.
void DisplayResult(AlertType kind, CFStringRef message, CFStringRef explanation,
                   const std::vector<FSRef>& installed) {
  AlertStdCFStringAlertParamRec params;
  DialogRef alert = nullptr;
  // Translators: the button of the alert after an install that opens the file manager with the
  // installed settings selected.
  auto show = CFHold(CopyLocalizedString(CFSTR_LOCALIZABLE("Show in Folder")));
  if (GetStandardAlertDefaultParams(&params, kStdCFStringAlertVersionOne) != noErr) {
    OV_AssertFailed(kSource, __LINE__, "DisplayResult");
    return;
  }
  if (!installed.empty()) params.otherText = show.get();
  if (CreateStandardAlert(kind, message, explanation, &params, &alert) != noErr) {
    OV_AssertFailed(kSource, __LINE__, "DisplayResult");
    return;
  }
  DialogItemIndex item = 0;
  if (RunStandardAlert(alert, nullptr, &item) != noErr || item != kAlertStdAlertOtherButton) return;
  if (LSRevealItems(installed.data(), installed.size()) != noErr) {
    // Translators: the alert when Show in Folder found neither a file manager nor an application
    // that opens folders.
    ShowAlert(LocalizedText(CFSTR_LOCALIZABLE("No file manager could show the folder.")));
  }
}

// The alert that ends the install of a file opened alone; none when the user kept the installed
// setting.
void ShowOutcome(Outcome& outcome) {
  if (outcome.m_nGroup != Outcome::kInstalled) {
    ShowAlert(outcome.m_strMessage);
    return;
  }
  auto message = CFHold(GetSuccessMessage(outcome.m_installed, outcome.m_bReplacedIntoTheTrash));
  if (message == nullptr) return;
  // On a terminal the path printed is the way to the setting; in windows, the file manager is.
  if (!LSCanRevealItems()) {
    DisplayAlert(message.get());
    return;
  }
  const FSRef installed = *static_cast<FSRef*>(outcome.m_installed);
  DisplayResult(kAlertCautionAlert, message.get(), nullptr, {installed});
}

// A number as the summary shows it.
TString NumberText(std::size_t number) { return ConvertToTString(std::to_string(number)); }

// A text that says `count`, in the form the user's language gives that number, with the count in
// %0 and `fillers` in %1, %2, ...
template <typename... Fillers>
TString LocalizedCount(CFStringRef key, CFStringRef pluralKey, std::size_t count,
                       const Fillers&... fillers) {
  auto text = CFHold(CFBundleCopyLocalizedStringForCount(key, pluralKey, count));
  if (text == nullptr) return TString();
  return FilledText(TextOf(text.get()), NumberText(count), TString(fillers)...);
}

// One line of the summary for `outcome`: the file's name, and where it went or why not.
TString SummaryLine(const Outcome& outcome) {
  const TString file = ShownName(outcome.m_strFile);
  if (outcome.m_nGroup == Outcome::kInstalled) {
    const TString folderPath = outcome.m_strFolder;
    if (outcome.m_strInstalledName != outcome.m_strFile) {
      // Translators: a line of the summary: the file %0 was installed under the name %1, beside
      // a setting of its own name, in the folder %2.
      return LocalizedText(CFSTR_LOCALIZABLE("%0 as %1 in %2"), file,
                           ShownName(outcome.m_strInstalledName), ShownName(folderPath));
    }
    if (outcome.m_bReplacedIntoTheTrash) {
      // Translators: a line of the summary: the file %0 was installed in the folder %1, and the
      // setting of its name that was there went to the Trash.
      return LocalizedText(CFSTR_LOCALIZABLE("%0 in %1; the setting it replaced is in the Trash"),
                           file, ShownName(folderPath));
    }
    // Translators: a line of the summary: the file %0 was installed in the folder %1.
    return LocalizedText(CFSTR_LOCALIZABLE("%0 in %1"), file, ShownName(folderPath));
  }
  if (outcome.m_nGroup == Outcome::kFailed) {
    // Translators: a line of the summary: the file %0 and why it was not installed (%1, an
    // alert's text, such as "The setting could not be installed.").
    return LocalizedText(CFSTR_LOCALIZABLE("%0: %1"), file, outcome.m_strMessage);
  }
  return file;
}

// The summary of a batch: a headline with the counts, then the files by how they ended, one line
// each under the group's heading.
void ShowSummary(const std::vector<Outcome>& outcomes) {
  std::size_t counts[4] = {};
  for (const Outcome& outcome : outcomes) ++counts[outcome.m_nGroup];
  const TString headline = LocalizedCount(
      // Translators: the summary's headline; %0 is the number of settings installed, %1 the
      // number of files opened (always 2 or more).
      CFSTR_LOCALIZABLE_PLURAL("%0 of %1 files opened was installed.",
                               "%0 of %1 files opened were installed."),
      counts[Outcome::kInstalled], NumberText(outcomes.size()));
  static const struct {
    CFStringRef m_strKey, m_strPluralKey;
  } kHeadings[] = {
      // Translators: the summary's heading over the settings installed; %0 is their number.
      {CFSTR_LOCALIZABLE_PLURAL("%0 setting installed:", "%0 settings installed:")},
      // Translators: the summary's heading over the files not installed because the user kept
      // the installed setting of that name; %0 is their number.
      {CFSTR_LOCALIZABLE_PLURAL("%0 file not installed, the installed setting kept:",
                                "%0 files not installed, the installed settings kept:")},
      // Translators: the summary's heading over the files that are no settings; %0 is their
      // number.
      {CFSTR_LOCALIZABLE_PLURAL("%0 file is not a settings file:",
                                "%0 files are not settings files:")},
      // Translators: the summary's heading over the files that could not be installed; %0 is
      // their number.
      {CFSTR_LOCALIZABLE_PLURAL("%0 file could not be installed:",
                                "%0 files could not be installed:")},
  };
  TString groups;
  for (int group = Outcome::kInstalled; group <= Outcome::kFailed; ++group) {
    if (counts[group] == 0) continue;
    if (!groups.empty()) groups += L"\n\n";
    groups +=
        LocalizedCount(kHeadings[group].m_strKey, kHeadings[group].m_strPluralKey, counts[group]);
    for (const Outcome& outcome : outcomes)
      if (outcome.m_nGroup == group) groups += L"\n  " + SummaryLine(outcome);
  }
  // A note when every file went as the user asked; a caution when some could not.
  const AlertType kind = counts[Outcome::kNotASetting] + counts[Outcome::kFailed] == 0
                             ? kAlertNoteAlert
                             : kAlertCautionAlert;
  auto headlineText = CFHold(CreateCFStringRefFromTString(headline));
  auto groupsText = CFHold(CreateCFStringRefFromTString(groups));
  if (headlineText == nullptr) return;
  std::vector<FSRef> installed;
  if (LSCanRevealItems())
    for (const Outcome& outcome : outcomes)
      if (outcome.m_nGroup == Outcome::kInstalled)
        installed.push_back(*static_cast<const FSRef*>(outcome.m_installed));
  DisplayResult(kind, headlineText.get(), groupsText.get(), installed);
}

// The file of an item that cannot be had as a file reference, as one failed outcome: its name
// from the item's URL, and why the file cannot be had.
Outcome UnopenedItem(const AEDescList& list, long index) {
  Outcome outcome;
  outcome.m_nGroup = Outcome::kFailed;
  outcome.m_strMessage = FailureText();
  Size size = 0;
  if (AEGetNthPtr(&list, index, typeFileURL, nullptr, nullptr, nullptr, 0, &size) != noErr)
    return outcome;
  std::string url(static_cast<std::size_t>(size), '\0');
  if (AEGetNthPtr(&list, index, typeFileURL, nullptr, nullptr, url.data(), size, &size) != noErr)
    return outcome;
  auto urlText = CFHold(CreateCFStringRefFromString(url.c_str()));
  auto fileURL = CFHold(urlText ? CFURLCreateWithString(kCFAllocatorDefault, urlText.get(), nullptr)
                                : nullptr);
  auto path =
      CFHold(fileURL ? CFURLCopyFileSystemPath(fileURL.get(), kCFURLPOSIXPathStyle) : nullptr);
  if (path == nullptr) return outcome;
  const TString pathText = CreateTStringFromCFStringRef(path.get());
  outcome.m_strFile = pathText.substr(pathText.rfind(L'/') + 1);
  FSRef file;
  const OSErr status =
      FSPathMakeRef(reinterpret_cast<const UInt8*>(CreateStringFromCFStringRef(path.get()).c_str()),
                    &file, nullptr);
  if (status != noErr) {
    // Translators: the alert when the file opened cannot be read; %0 is the reason.
    outcome.m_strMessage =
        LocalizedText(CFSTR_LOCALIZABLE("This file could not be read: %0."), ReasonText(status));
  }
  return outcome;
}

// Installs the files of a list with two or more items in order and sums them up in one alert.
void ImportSettings(const AEDescList& list, long count) {
  Batch batch(static_cast<std::size_t>(count));
  for (long index = 1; index <= count; ++index) {
    batch.m_nCurrent = static_cast<std::size_t>(index - 1);
    FSRef file;
    if (AEGetNthPtr(&list, index, typeFSRef, nullptr, nullptr, &file, sizeof file, nullptr) ==
        noErr)
      ImportSetting(file, batch);
    else
      batch.m_vecOutcomes.push_back(UnopenedItem(list, index));
    if (batch.m_vecWaiting.size() >= kMostWaiting) NameTheWaiting(batch);
  }
  NameTheWaiting(batch);
  ShowSummary(batch.m_vecOutcomes);
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
    if (status == noErr && count > 1) {
      ImportSettings(list, count);
    } else if (status == noErr) {
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
  Batch batch(1);
  ImportSetting(file, batch);
  ShowOutcome(batch.m_vecOutcomes.front());
}

void DisplayAlert(CFStringRef message) {
  AlertStdCFStringAlertParamRec params;
  DialogRef alert = nullptr;
  if (GetStandardAlertDefaultParams(&params, kStdCFStringAlertVersionOne) != noErr ||
      CreateStandardAlert(kAlertCautionAlert, message, nullptr, &params, &alert) != noErr) {
    OV_AssertFailed(kSource, __LINE__, "DisplayAlert");
    return;
  }
  DialogItemIndex item;
  RunStandardAlert(alert, nullptr, &item);
}

int ConfirmFileReplace(const TString& fileName, bool* applyToAll, bool deletesForGood) {
  // The texts may be missing (each is reported); the holders release only those that exist.
  // Translators: the replace question's button that replaces the installed setting ("Replace").
  auto yes = CFHold(CopyLocalizedString(CFSTR_LOCALIZABLE("Yes")));
  if (yes == nullptr) OV_AssertFailed(kSource, __LINE__, "ConfirmFileReplace");
  // Translators: the replace question's button that keeps the installed setting ("Keep
  // Existing"); Return presses it. On the terminal a button's first letter answers for it, so
  // the buttons' titles begin with different letters, or differ in the first letter of the
  // first word that is not the same.
  auto no = CFHold(CopyLocalizedString(CFSTR_LOCALIZABLE("No")));
  if (no == nullptr) OV_AssertFailed(kSource, __LINE__, "ConfirmFileReplace");
  // Translators: the replace question's button that installs the new setting beside the
  // installed one, under the name with a number added ("Name 2.xml").
  auto both = CFHold(CopyLocalizedString(CFSTR_LOCALIZABLE("Keep Both")));
  if (both == nullptr) OV_AssertFailed(kSource, __LINE__, "ConfirmFileReplace");
  // The name is the file's own: shown so that it cannot pass for more of the question.
  const TString question = LocalizedText(
      deletesForGood
          // Translators: the replace question when the installed setting cannot be moved to the
          // Trash (its disk has none); %0 is the name of the setting's file.
          ? CFSTR_LOCALIZABLE("Confirm Replace Deleting Message")
          // Translators: the replace question; %0 is the name of the setting's file.
          : CFSTR_LOCALIZABLE("Confirm Replace Message"),
      ShownName(fileName));
  if (question.empty()) OV_AssertFailed(kSource, __LINE__, "ConfirmFileReplace");
  auto message = CFHold(CreateCFStringRefFromTString(question));
  if (message == nullptr) OV_AssertFailed(kSource, __LINE__, "ConfirmFileReplace");

  // Keeping the existing file is both the default and the cancel answer, so that neither Return
  // nor Escape nor closing the window destroys anything: only the Replace button itself replaces.
  AlertStdCFStringAlertParamRec params;
  params.version = kStdCFStringAlertVersionOne;
  params.movable = false;
  params.helpButton = false;
  params.defaultText = no.get();
  params.cancelText = yes.get();
  params.otherText = both.get();
  params.defaultButton = kAlertStdAlertOKButton;
  params.cancelButton = kAlertStdAlertOKButton;
  params.position = kWindowDefaultPosition;
  params.flags = 0;
  DialogRef alert = nullptr;
  const OSStatus created =
      CreateStandardAlert(kAlertCautionAlert, message.get(), nullptr, &params, &alert);
  if (created != noErr || alert == nullptr) return -1;

  Boolean forAll = false;
  if (applyToAll != nullptr) {
    // Translators: the replace question's check box, offered while more files are to come: the
    // same answer for every later setting whose name is taken.
    auto title = CFHold(CopyLocalizedString(CFSTR_LOCALIZABLE("Apply to all")));
    if (title == nullptr)
      OV_AssertFailed(kSource, __LINE__, "ConfirmFileReplace");
    else
      SetStandardAlertCheckBox(alert, title.get(), &forAll);
  }
  DialogItemIndex item = 0;
  if (RunStandardAlert(alert, nullptr, &item) != noErr) return -1;
  if (applyToAll != nullptr) *applyToAll = forAll;
  switch (item) {
    case kAlertStdAlertOKButton:
      return kReplaceAnswerNo;
    case kAlertStdAlertCancelButton:
      return kReplaceAnswerYes;
    case kAlertStdAlertOtherButton:
      return kReplaceAnswerKeepBoth;
    default:
      return -1;
  }
}

CFStringRef GetSuccessMessage(FSRef* installedFile, bool replacedIntoTheTrash) {
  auto url = CFHold(CFURLCreateFromFSRef(kCFAllocatorDefault, installedFile));
  if (url == nullptr) return nullptr;
  auto path = CFHold(CFURLCopyFileSystemPath(url.get(), kCFURLPOSIXPathStyle));
  if (path == nullptr) return nullptr;
  const TString pathText = CreateTStringFromCFStringRef(path.get());
  const TString success = LocalizedText(
      replacedIntoTheTrash
          // Translators: the alert after an install that replaced a setting, which went to the
          // Trash; %0 is the full path of the installed file.
          ? CFSTR_LOCALIZABLE("Success Replaced")
          // Translators: the alert after the install; %0 is the full path of the installed file.
          : CFSTR_LOCALIZABLE("Success"),
      ShownName(pathText));
  return success.empty() ? nullptr : CreateCFStringRefFromTString(success);
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
