// SettingsUtils.h: the settings routing rules: what a settings file is, which product set and
// filter own it, where that filter keeps the user's settings, and the old-style package that
// carries a legacy settings file. Shows no UI; alerts live in mac/.
#pragma once

#include <vector>

#include "ovlib/general_framework/OVFileSystemReferenceMac.h"
#include "platform/MacTypes.h"
#include "xmlparser/TString.h"

// The settings vocabulary. Comparisons against these are exact and case-sensitive.
extern const TString set_qname;               // "set": root attribute naming the product set
extern const TString filter_qname;            // "filter": root attribute naming the filter
extern const TString setting_qname;           // "setting": root of an XML settings file
extern const TString keyid_qname;             // "keyid"
extern const TString param_qname;             // "param"
extern const TString name_qname;              // "name": root attribute naming the setting
extern const TString oldstyle_setting_qname;  // "oldstyle_setting": root of an old-style package
extern const TString glimmerbox;              // the legacy product, whose folder the user picks
extern const TString daubery;
extern const TString mendora;
extern const TString zephyrine;

// `s` lower-cased in the C locale (only A to Z change), with every space dropped; other white
// space stays. "Big Set 3" becomes "bigset3".
TString ToLowerCaseAndStripSpaces(const TString& s);

// What the routing rules found beyond their status, for the messages that tell the user: why a
// setting could not be examined or its folder not found or made, and a "User Folder" preference
// that was set but could not be used.
struct RoutingReport {
  enum Problem {
    kNoProblem,
    kNotASetting,   // the file's contents are no setting
    kUnreadable,    // the file could not be read; m_nStatus says why
    kTooLarge,      // the file is larger than any setting
    kNoHomeFolder,  // there is no folder to keep settings in: no home folder
    kFolder,        // the folder m_strFolder could not be found or made; m_nStatus says why
  };
  Problem m_nProblem = kNoProblem;
  OSErr m_nStatus = noErr;
  TString m_strFolder;  // its path

  // A "User Folder" preference that was not used, and why (paramErr: not a text; bdNamErr: not
  // an absolute path; else the status of looking it up). The data folder serves instead.
  OSErr m_nUserFolderStatus = noErr;
  TString m_strUserFolder;
};

// The largest file that is examined as a setting; settings are a few kilobytes.
inline constexpr unsigned long long kLargestSettingsFile = 64ull << 20;

class SettingsUtils {
 public:
  // Examines `sourceFile`: an XML settings file (root "setting"), an old-style package (root
  // "oldstyle_setting") or a text settings file (not XML, first character "["). On 0 the names
  // the file states and `isOldStyle` are set, and either `needsGlimmerboxFolder` (an XML form of
  // the legacy set: the user picks the folder) or `destinationFolder`, the filter's user settings
  // folder, created as needed. `settingName` is written for the XML forms only. A failed read or
  // decoding returns its status; anything else that is not a setting returns -1. A file larger
  // than kLargestSettingsFile is refused before it is read. With `report`, it says why.
  static int LocateFolderForSetting(const OVFileSystemReference& sourceFile,
                                    OVFileSystemReference& destinationFolder, TString& settingName,
                                    TString& setName, TString& filterName, bool& isOldStyle,
                                    bool& needsGlimmerboxFolder, RoutingReport* report = nullptr);

  // The folder "Orvelle"/`setName`/`filterName` inside the set's "User Folder" preference, or
  // inside the user's Application Support folder when that preference is not an absolute path to
  // an existing folder. Missing levels are created; each level may be a link that the user or
  // root made. 0, or -1 with the levels made so far left in place and `report`, when given,
  // saying which folder and why. Each name is one name inside its parent, never a path.
  static int GetUserSettingsFolderForFilter(const TString& setName, const TString& filterName,
                                            OVFileSystemReference& userSettingsFolder,
                                            RoutingReport* report = nullptr);

  // The folder `name` inside `parent`: a folder there, or a link there to a folder when the link
  // belongs to the user or to root (the user's own arrangement, such as settings kept on another
  // disk); with `create`, made when missing. 0, or -1 with `report`, when given, saying which
  // folder and why.
  static int GetSubfolder(const OVFileSystemReference& parent, const TString& name, bool create,
                          OVFileSystemReference& folder, RoutingReport* report = nullptr);

  // The product set of an old filter: 0 and `setName` assigned when the filter is known, else -1
  // and `setName` untouched.
  static int SetNameFromFilterName(const TString& filterName, TString& setName);

  // Writes the legacy file that the package carries into `destinationFolder` under the package's
  // setting name and puts it in `unpackedFile`. The file is written whole before it takes the
  // name: with `overwrite` in place of an object of that name, without it only while the name is
  // free; a failed unpacking leaves the folder as it was. With `packageVersion`, a package that is
  // no longer in that state is not unpacked. A failed read or decoding returns its status; a
  // package that is not one, or has changed, or a failed write, -1. `options` as for
  // OVFileSystemReference::Copy.
  static int UnpackageOldSettingsFile(OVFileSystemReference& packageFile,
                                      OVFileSystemReference& destinationFolder,
                                      OVFileSystemReference& unpackedFile, bool overwrite = true,
                                      const OVFileVersion* packageVersion = nullptr,
                                      const OVNewFileOptions& options = {});

  // Packages the legacy file `oldSettingsFile` as "<its name>.f1s" in `destinationFolder`, never
  // replacing an existing file, and puts the package in `packageFile`. -1 when the filter is
  // unknown, when the file holds what a package cannot carry (see CanCarryOldSettings), or when
  // the write fails; a failed read returns its status.
  static int PackageOldSettingsFile(const OVFileSystemReference& oldSettingsFile,
                                    const OVFileSystemReference& destinationFolder,
                                    OVFileSystemReference& packageFile);

  // The filter a legacy file names: its bytes before the first carriage return, vertical tab or
  // space, each byte one character.
  static TString OldSettingsFilterName(const std::vector<unsigned char>& bytes);

  // Whether a package can carry `bytes` up to their first zero byte, where its payload ends, and
  // give them back whole: a package holds them as character data, which cannot hold control
  // bytes other than tab, line feed and carriage return, or the sequence "]]>".
  static bool CanCarryOldSettings(const std::vector<unsigned char>& bytes);
};
