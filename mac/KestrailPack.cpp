// kestrail-pack: makes old-style packages of old settings files, so that filter vendors can hand
// them out for Kestrail to install. One line per file on standard output (the package made) or
// standard error (why not); the status is 1 when any file failed, 2 for a wrong command line.
#include <iostream>
#include <map>
#include <string>
#include <vector>

#include "mac/CommandLine.h"
#include "mac/Texts.h"
#include "ovlib/base_ui_framework/mac/MacUtil.h"
#include "ovlib/general_framework/OVFileSystemReferenceMac.h"
#include "ovlib/ps_filter_framework/SettingsUtils.h"
#include "platform/CoreFoundation.h"
#include "platform/Files.h"
#include "platform/Memory.h"
#include "platform/Terminal.h"
#include "xmlparser/Xml.h"

namespace {

const ProgramDescription kKestrailPack = {
    "kestrail-pack",
    // Translators: the form of the command line; "kestrail-pack" is the program's name.
    LOCALIZABLE_TEXT("usage: kestrail-pack [--into FOLDER] OLD-SETTINGS-FILE..."),
    LOCALIZABLE_TEXT(
        // Translators: what --help shows after the usage. The options stay as they are; the
        // lines are broken by hand, at most 79 characters long.
        "Packages each old settings file as FILE.f1s, an old-style package that Kestrail\n"
        "installs into the settings folder of the file's filter. The filter is the first\n"
        "word of the file; the package carries the file up to its first zero byte.\n"
        "\n"
        "  --into FOLDER  write the packages into FOLDER (default: each file's folder)\n"
        "  --help         show this help\n"
        "  --version      show the version\n"
        "\n"
        "An existing package is never replaced.\n"),
    {"--into"},
};

// The path of `ref` as a terminal may show it.
std::string PathOf(const OVFileSystemReference& ref) {
  char path[4096];
  return FSRefMakePath(ref, reinterpret_cast<UInt8*>(path), sizeof path) == noErr
             ? TerminalText(path)
             : "?";
}

bool RefFromPath(const std::string& path, OVFileSystemReference& ref) {
  return FSPathMakeRef(reinterpret_cast<const UInt8*>(path.c_str()), ref, nullptr) == noErr;
}

// A filter name as the user can read it. The name is the file's first bytes, each one character,
// so it reads as those bytes would on the terminal: UTF-8 letters as they are, control and format
// characters and bytes that are not UTF-8 as escapes.
std::string Printable(const TString& name) {
  return TerminalText(std::string(name.begin(), name.end()));
}

// Packages one file; false, with the reason on standard error, when it cannot.
bool Package(const std::string& path, const OVFileSystemReference* into) {
  auto fail = [&](const std::string& why) {
    std::cerr << "kestrail-pack: " << TerminalText(path) << ": " << why << "\n";
    return false;
  };
  OVFileSystemReference file, folder, package;
  // Translators: kestrail-pack's reasons, each after a file's path and a colon.
  if (!RefFromPath(path, file)) return fail(Localized(LOCALIZABLE_TEXT("no such file")));
  if (file.IsFolder()) return fail(Localized(LOCALIZABLE_TEXT("is a folder, not a settings file")));
  std::vector<unsigned char> bytes;
  // A named pipe, a socket or a device is refused at once rather than waited on.
  if (ReadDiskFileIntoBuffer(file, bytes) != 0)
    return fail(Localized(LOCALIZABLE_TEXT("not a settings file that can be read")));
  const TString filter = SettingsUtils::OldSettingsFilterName(bytes);
  TString setName;
  if (SettingsUtils::SetNameFromFilterName(filter, setName) != 0) {
    // Translators: %0 is the filter's name as the file gives it.
    return fail(Localized(LOCALIZABLE_TEXT("unknown filter \"%0\""), Printable(filter)));
  }
  if (!SettingsUtils::CanCarryOldSettings(bytes)) {
    return fail(Localized(
        LOCALIZABLE_TEXT("holds bytes a package cannot carry (a control character or \"]]>\")")));
  }
  if (into != nullptr) {
    folder = *into;
  } else if (file.MakeParentReference(folder) != 0) {
    return fail(Localized(LOCALIZABLE_TEXT("cannot find the file's folder")));
  }
  TString name;
  bool exists = false;
  if (file.GetName(name) != 0 || folder.SubobjectExists(name + L".f1s", exists) != 0) {
    return fail(Localized(LOCALIZABLE_TEXT("cannot name the package")));
  }
  // Translators: %0 is a folder's path.
  if (exists)
    return fail(Localized(LOCALIZABLE_TEXT("a package already exists in %0"), PathOf(folder)));
  if (SettingsUtils::PackageOldSettingsFile(file, folder, package) != 0) {
    // Translators: %0 is a folder's path.
    return fail(Localized(LOCALIZABLE_TEXT("cannot write the package in %0"), PathOf(folder)));
  }
  std::cout << PathOf(package) << "\n";
  return true;
}

}  // namespace

int main(int argc, char** argv) {
  // A large setting's document takes its memory as a whole file's text does: in large pages,
  // faulted in ahead of the parser.
  Xml::SetMemoryFunctions({AllocateMemoryBlock, FreeMemoryBlock, PrepareMemoryForWriting});
  std::map<std::string, std::string> values;
  std::vector<std::string> files;
  const int status = ReadCommandLine(kKestrailPack, std::vector<std::string>(argv + 1, argv + argc),
                                     std::cout, std::cerr, values, files);
  if (status >= 0) return status;
  // Given, it must name a folder: an empty one is a mistake, not the default.
  const bool hasInto = values.count("--into") != 0;
  const std::string into = values["--into"];
  OVFileSystemReference intoFolder;
  if (hasInto && (into.empty() || !RefFromPath(into, intoFolder) || !intoFolder.IsFolder())) {
    // Translators: after "kestrail-pack: --into FOLDER:", when FOLDER is none.
    std::cerr << "kestrail-pack: --into " << (into.empty() ? "\"\"" : TerminalText(into)) << ": "
              << Localized(LOCALIZABLE_TEXT("not a folder")) << "\n";
    return 2;
  }
  bool allPackaged = true;
  for (const std::string& file : files) {
    allPackaged = Package(file, hasInto ? &intoFolder : nullptr) && allPackaged;
  }
  return allPackaged ? 0 : 1;
}
