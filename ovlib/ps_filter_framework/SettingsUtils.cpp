#include "ovlib/ps_filter_framework/SettingsUtils.h"

#include <algorithm>
#include <boost/scoped_ptr.hpp>
#include <climits>
#include <cstring>
#include <map>
#include <memory>

#include "ovlib/base_ui_framework/mac/MacUtil.h"
#include "ovlib/general_framework/OVFileSystemReferenceMac.h"
#include "ovlib/general_framework/OVUtil.h"
#include "platform/CFHolder.h"
#include "platform/CoreFoundation.h"
#include "platform/Files.h"
#include "platform/System.h"
#include "platform/TextDecoding.h"
#include "xmlparser/Xml.h"

const TString set_qname = L"set";
const TString filter_qname = L"filter";
const TString setting_qname = L"setting";
const TString keyid_qname = L"keyid";
const TString param_qname = L"param";
const TString name_qname = L"name";
const TString oldstyle_setting_qname = L"oldstyle_setting";
const TString glimmerbox = L"Glimmerbox";
const TString daubery = L"Daubery";
const TString mendora = L"Mendora";
const TString zephyrine = L"Zephyrine";

namespace {

const char kSource[] = "ovlib/ps_filter_framework/SettingsUtils";

// The product family's preference domains are this prefix and the reduced set name.
const TString preferences_prefix = L"com.orvelle.";
const TString maker_folder = L"Orvelle";
// The most UTF-16 units that a name on disk may have.
const std::size_t kLongestName = 255;
const TString package_extension = L".f1s";

// What the settings rules read of the document that `text` holds, or null when it is not XML:
// the root when it is a setting or a package, with its set, filter and name, and a package's
// payload, its first CDATA section. The rest is checked and dropped as it is read, so that no
// file, however much markup it holds, costs more than its text and those parts. Texts beyond
// the parser's count are not settings anyone wrote; they read as not XML.
Xml::Document* ParseOrNull(const TString& text) {
  if (text.size() > static_cast<size_t>(INT_MAX)) return nullptr;
  static const Xml::RootSelection read_by_the_rules{
      {setting_qname, oldstyle_setting_qname}, {set_qname, filter_qname, name_qname}, true};
  try {
    Xml::Parser parser;
    return parser.ParseRoot(text.data(), static_cast<int>(text.size()), read_by_the_rules);
  } catch (const Xml::ParsingException&) {
    return nullptr;  // not XML; it may still be a "[" text setting
  }
}

// Whether `file` can be a setting, judged by its first character alone: the "<" of XML, after a
// byte-order mark and white space, or the "[" of the text form, right after a mark. Reads no
// further than that character, so that a large file that is no setting is not read whole to
// learn so. A file that cannot be opened is no setting either: `openError` says why (notAFileErr
// for what is not a file). True also when it cannot tell, leaving the answer to the whole reading.
bool CouldBeASetting(const OVFileSystemReference& file, OSErr& openError) {
  HFSUniStr255 dataForkName;
  SInt16 fork;
  if (FSGetDataForkName(&dataForkName) != noErr) return true;
  openError = FSOpenFork(file, dataForkName.length, dataForkName.unicode, fsRdPerm, &fork);
  if (openError != noErr) return false;
  unsigned char chunk[4096];
  std::size_t count = 0, at = 0, unit = 1;
  TextForm form{TextEncodingForm::kUtf8, 0};
  bool first = true;
  OSErr err = noErr;
  for (bool start = true; err == noErr; start = false) {
    // A byte left over from a unit moves to the front, and the next chunk follows it.
    std::memmove(chunk, chunk + at, count - at);
    count -= at;
    at = 0;
    ByteCount more = 0;
    err = FSReadFork(fork, fsAtMark, 0, static_cast<ByteCount>(sizeof chunk - count), chunk + count,
                     &more);
    count += more;
    // Read in the form ConvertFileBufferToWString reads the whole file in.
    if (start) {
      form = DetectTextForm(chunk, count);
      at = form.start;
      if (form.encoding != TextEncodingForm::kUtf8) unit = 2;
    }
    for (; at + unit <= count; at += unit, first = false) {
      const unsigned c = unit == 1 ? chunk[at] : Utf16UnitAt(chunk + at, form.encoding);
      if (c == ' ' || c == '\t' || c == '\r' || c == '\n') continue;
      FSCloseFork(fork);
      return c == '<' || (c == '[' && first);
    }
  }
  FSCloseFork(fork);
  // White space to the end is no setting; a read that failed leaves the answer to the whole
  // reading, which fails the same way.
  return err != eofErr;
}

// Reads `file` whole and decodes it into `text`, which is then parsed into `document` as
// ParseOrNull keeps it (left null when the text is not XML). `text` is kept only then, for the
// text form; a document holds all that is read of XML. The status of a failed read (which sets
// `unreadable`, when given) or decoding, else 0.
int ReadSettingsFile(const OVFileSystemReference& file, TString& text,
                     boost::scoped_ptr<Xml::Document>& document, bool* unreadable = nullptr) {
  {
    // The bytes go before the parse: beside the text, four bytes a character, they would add a
    // fifth to the largest thing the examination holds.
    std::vector<unsigned char> buffer;
    int status = ReadDiskFileIntoBuffer(file, buffer);
    if (status != 0 && unreadable != nullptr) *unreadable = true;
    if (status == 0) status = ConvertFileBufferToWString(buffer, text);
    if (status != 0) return status;
  }
  document.reset(ParseOrNull(text));
  if (document) TString().swap(text);
  return 0;
}

TString AttributeValue(const Xml::Element& element, const TString& name) {
  return ConvertToTString(element.GetAttribute(name.c_str()).GetValue());
}

// The value after `key` in a text settings file: up to the next quotation mark after its first
// character, or to the end; the key's own word when the key is absent. Nothing is unescaped. A
// value longer than any folder's name is cut one character past that length: it is refused all
// the same, and the rest of what may be a whole file is not copied.
TString ExtractTextValue(const TString& text, const TString& key, const TString& word) {
  const size_t found = text.find(key);
  if (found == TString::npos) return word;
  const size_t start = found + key.size();
  const size_t end = start < text.size() ? text.find(L'"', start + 1) : TString::npos;
  const size_t length = end == TString::npos ? TString::npos : end - start;
  return text.substr(start, std::min(length, kLongestName + 1));
}

// A name too long for a folder as a message shows it: its start, enough to tell which it is.
TString Shortened(const TString& name) {
  return name.size() > kLongestName ? name.substr(0, 64) + L"\u2026" : name;
}

// Notes in `report`, when there is one, why the routing failed, and fails.
int Fail(RoutingReport* report, RoutingReport::Problem problem, OSErr status = noErr,
         const TString& folder = TString()) {
  if (report != nullptr) {
    report->m_nProblem = problem;
    report->m_nStatus = status;
    report->m_strFolder = folder;
  }
  return -1;
}

// Where the user's data folder is, whether or not it exists, to name it when it cannot be made;
// fnfErr when there is no home folder to have one in.
OSErr DataFolderPath(FSVolumeRefNum domain, TString& path) {
  // As the environment gives it, which may be longer than any path the system takes.
  const OSErr err = CreateTStringFromPathCall(
      [domain](UInt8* bytes, UInt32 size) {
        return FSFindFolderPath(domain, kApplicationSupportFolderType, bytes, size);
      },
      path);
  if (err != noErr) path = L"?";
  return err;
}

// The path of `name` inside `folder`, to name a folder that could not be found or made.
TString PathInside(const OVFileSystemReference& folder, const TString& name) {
  TString path;
  if (folder.GetPath(path) != 0) path = L"?";
  return path == L"/" ? path + name : path + L"/" + name;
}

// The folder named by the set's "User Folder" preference, when it is a string holding an absolute
// path to an existing folder. A preference that is set but cannot serve is noted in `report`.
bool PreferredBaseFolder(const TString& setName, OVFileSystemReference& base,
                         RoutingReport* report) {
  auto domain =
      CFHold(CreateCFStringRefFromTString(preferences_prefix + ToLowerCaseAndStripSpaces(setName)));
  if (!domain) return false;
  auto value = CFHold(CFPreferencesCopyAppValue(CFSTR("User Folder"), domain.get()));
  if (!value) return false;
  OSErr status = paramErr;
  TString pathText;
  if (CFGetTypeID(value.get()) == CFGetTypeID(domain.get())) {
    const auto text = static_cast<CFStringRef>(value.get());
    pathText = CreateTStringFromCFStringRef(text);
    // As long as the system lets a path be: the system itself says when it is too long.
    std::vector<char> path(static_cast<std::size_t>(CFStringGetMaximumSizeForEncoding(
                               CFStringGetLength(text), kCFStringEncodingUTF8)) +
                           1);
    Boolean isDirectory = false;
    if (!CFStringGetCString(text, path.data(), static_cast<CFIndex>(path.size()),
                            kCFStringEncodingUTF8))
      status = bdNamErr;
    else if (path[0] != '/')
      status = bdNamErr;  // relative to what? Not to wherever Kestrail happened to start
    else if ((status = FSPathMakeRef(reinterpret_cast<const UInt8*>(path.data()), base,
                                     &isDirectory)) == noErr &&
             !isDirectory)
      status = dirNFErr;
  }
  if (status == noErr) return true;
  if (report != nullptr) {
    report->m_nUserFolderStatus = status;
    report->m_strUserFolder = pathText;
  }
  return false;
}

}  // namespace

TString ToLowerCaseAndStripSpaces(const TString& s) {
  TString reduced;
  // As tolower does in the C locale, whatever locale the process has set for its messages.
  for (wchar_t c : s) {
    if (c != L' ') reduced += c >= L'A' && c <= L'Z' ? c + (L'a' - L'A') : c;
  }
  return reduced;
}

int SettingsUtils::LocateFolderForSetting(const OVFileSystemReference& sourceFile,
                                          OVFileSystemReference& destinationFolder,
                                          TString& settingName, TString& setName,
                                          TString& filterName, bool& isOldStyle,
                                          bool& needsGlimmerboxFolder, RoutingReport* report) {
  needsGlimmerboxFolder = false;
  FSCatalogInfo catalogInfo;
  const OSErr looked =
      FSGetCatalogInfo(sourceFile, kFSCatInfoDataSizes, &catalogInfo, nullptr, nullptr, nullptr);
  if (looked != noErr) return Fail(report, RoutingReport::kUnreadable, looked);
  // Refused before it is read: reading it whole would take memory many times its size.
  if (catalogInfo.dataLogicalSize > kLargestSettingsFile)
    return Fail(report, RoutingReport::kTooLarge);
  OSErr openError = noErr;
  if (!CouldBeASetting(sourceFile, openError)) {
    if (openError == noErr || openError == notAFileErr)
      return Fail(report, RoutingReport::kNotASetting);
    return Fail(report, RoutingReport::kUnreadable, openError);
  }
  TString text;
  boost::scoped_ptr<Xml::Document> document;
  bool unreadable = false;
  if (const int status = ReadSettingsFile(sourceFile, text, document, &unreadable)) {
    // Opened, then not read to its end: a disk error, or a file cut short meanwhile.
    if (unreadable)
      Fail(report, RoutingReport::kUnreadable, ioErr);
    else
      Fail(report, RoutingReport::kNotASetting);
    return status;
  }
  if (document) {
    const Xml::Element& root = document->GetRoot();
    if (root.GetName() == oldstyle_setting_qname) {
      isOldStyle = true;
    } else if (root.GetName() == setting_qname) {
      isOldStyle = false;
    } else {
      return Fail(report, RoutingReport::kNotASetting);
    }
    setName = AttributeValue(root, set_qname);
    filterName = AttributeValue(root, filter_qname);
    settingName = AttributeValue(root, name_qname);
    document.reset();
    if (setName == glimmerbox) {
      needsGlimmerboxFolder = true;
      return 0;
    }
    return GetUserSettingsFolderForFilter(setName, filterName, destinationFolder, report);
  }

  // Not XML: a text settings file starts with "[" at its very first character. It names its set
  // and filter but not itself, and its set is routed like any other, the legacy one included.
  if (text.empty() || text[0] != L'[') return Fail(report, RoutingReport::kNotASetting);
  setName = ExtractTextValue(text, L"\"set\": \"", set_qname);
  filterName = ExtractTextValue(text, L"\"filter\": \"", filter_qname);
  isOldStyle = false;
  return GetUserSettingsFolderForFilter(setName, filterName, destinationFolder, report);
}

int SettingsUtils::GetUserSettingsFolderForFilter(const TString& setName, const TString& filterName,
                                                  OVFileSystemReference& userSettingsFolder,
                                                  RoutingReport* report) {
  SInt32 folderManager = 0;
  if (Gestalt(gestaltFindFolderAttr, &folderManager) != noErr) return -1;
  const FSVolumeRefNum domain =
      folderManager & (1 << gestaltFolderMgrSupportsDomains) ? kUserDomain : kOnSystemDisk;

  // A set name too long for a folder cannot name a preferences file either.
  OVFileSystemReference folder;
  if (setName.size() > kLongestName || !PreferredBaseFolder(setName, folder, report)) {
    const OSErr found = FSFindFolder(domain, kApplicationSupportFolderType, kCreateFolder, folder);
    if (found != noErr) {
      TString path;
      if (DataFolderPath(domain, path) == fnfErr) return Fail(report, RoutingReport::kNoHomeFolder);
      return Fail(report, RoutingReport::kFolder, found, path);
    }
  }
  // Refused before any folder is looked up or made for it: each step would copy a name that may
  // be a whole file's worth of text.
  if (setName.size() > kLongestName) {
    return Fail(report, RoutingReport::kFolder, errFSNameTooLong,
                PathInside(folder, maker_folder + L"/" + Shortened(setName)));
  }
  if (filterName.size() > kLongestName) {
    return Fail(report, RoutingReport::kFolder, errFSNameTooLong,
                PathInside(folder, maker_folder + L"/" + setName + L"/" + Shortened(filterName)));
  }
  for (const TString* level : {&maker_folder, &setName, &filterName}) {
    if (GetSubfolder(folder, *level, true, folder, report) != 0) return -1;
  }
  userSettingsFolder = folder;
  return 0;
}

int SettingsUtils::GetSubfolder(const OVFileSystemReference& parent, const TString& name,
                                bool create, OVFileSystemReference& folder, RoutingReport* report) {
  const std::vector<UniChar> units = CreateUniCharVectorFromTString(name);
  FSRef child;
  OSErr status = noErr;
  // What was found may be replaced before it is looked at again (a link swapped for a folder):
  // then what is there by now decides, as a fresh look would.
  for (int attempt = 0; attempt < 3; ++attempt) {
    status = FSMakeFSRefUnicode(parent, units.size(), units.data(), kTextEncodingUnknown, &child);
    if (status == fnfErr && create) {
      status = FSCreateDirectoryUnicode(parent, units.size(), units.data(), kFSCatInfoNone, nullptr,
                                        &child, nullptr, nullptr);
      // Made by another process since the look, such as a second Kestrail installing a setting
      // of the same filter: as good as one made here.
      if (status == dupFNErr)
        status =
            FSMakeFSRefUnicode(parent, units.size(), units.data(), kTextEncodingUnknown, &child);
    }
    if (status != noErr) break;
    Boolean isFolder = false, wasLink = false;
    status = FSResolveAliasFile(&child, true, &isFolder, &wasLink);
    if (status == noErr && !isFolder) status = dirNFErr;
    if (status != fnfErr) break;
  }
  if (status != noErr)
    return Fail(report, RoutingReport::kFolder, status, PathInside(parent, name));
  folder = OVFileSystemReference(child);
  return 0;
}

int SettingsUtils::SetNameFromFilterName(const TString& filterName, TString& setName) {
  static std::map<TString, const TString*> filter_and_set_map;
  static bool is_initialized = false;
  if (!is_initialized) {
    const struct {
      const wchar_t* filter;
      const TString* set;
    } rows[] = {
        {L"Sparkwash", &glimmerbox},    {L"GlowVeil", &glimmerbox},
        {L"Frostline", &glimmerbox},    {L"Emberhaze", &glimmerbox},
        {L"Lumenfold", &glimmerbox},    {L"Shimmerknot", &glimmerbox},
        {L"Duskbloom", &glimmerbox},    {L"Prismdrift", &glimmerbox},
        {L"Haloweave", &glimmerbox},    {L"Starmote", &glimmerbox},
        {L"Glintcurl", &glimmerbox},    {L"Moonsheen", &glimmerbox},
        {L"Sheerlight", &glimmerbox},   {L"Auraflux", &glimmerbox},
        {L"Brightwhorl", &glimmerbox},  {L"Candlemist", &glimmerbox},
        {L"Dewglint", &glimmerbox},     {L"Flarepetal", &glimmerbox},
        {L"Gleamrift", &glimmerbox},    {L"Opaline_Wash", &glimmerbox},
        {L"Radiantcord", &glimmerbox},  {L"Twinkleburst", &glimmerbox},
        {L"BristleDrag", &daubery},     {L"InkPuddle", &daubery},
        {L"KnifeSmear", &daubery},      {L"ScumbleDry", &daubery},
        {L"WetDaub", &daubery},         {L"CharcoalNudge", &daubery},
        {L"Mosaicora", &mendora},       {L"Tessellane", &mendora},
        {L"ShardLattice", &mendora},    {L"LeadCamesh", &mendora},
        {L"WindCombe", &zephyrine},     {L"DriftVeilur", &zephyrine},
        {L"GustTwine", &zephyrine},     {L"RippleFanfold", &zephyrine},
        {L"SwirlEddon", &zephyrine},    {L"BreezeShift", &zephyrine},
        {L"Cyclonix", &zephyrine},      {L"EddyCurl", &zephyrine},
        {L"FeatherStream", &zephyrine}, {L"GaleLine", &zephyrine},
        {L"Haze_Lift", &zephyrine},     {L"MistralSweep", &zephyrine},
        {L"UpdraftCurl", &zephyrine},   {L"ZephyrTrail", &zephyrine},
    };
    for (const auto& row : rows) filter_and_set_map[row.filter] = row.set;
    is_initialized = true;
  }
  auto found = filter_and_set_map.find(filterName);
  if (found == filter_and_set_map.end()) return -1;
  setName = *found->second;
  return 0;
}

int SettingsUtils::UnpackageOldSettingsFile(OVFileSystemReference& packageFile,
                                            OVFileSystemReference& destinationFolder,
                                            OVFileSystemReference& unpackedFile, bool overwrite,
                                            const OVFileVersion* packageVersion,
                                            const OVNewFileOptions& options) {
  // Line 183 rather than this one: the report reads as it always has, whatever moves in the file.
  if (destinationFolder.IsMisusedAsFolder())
    OV_AssertFailed(kSource, 183, "UnpackageOldSettingsFile");
  TString text;
  boost::scoped_ptr<Xml::Document> document;
  if (const int status = ReadSettingsFile(packageFile, text, document)) return status;

  if (!document || document->GetRoot().GetName() != oldstyle_setting_qname) return -1;
  // A package written since it was examined may carry another setting than the one shown.
  if (packageVersion != nullptr && !packageFile.HasVersion(*packageVersion)) return -1;
  const Xml::Element& root = document->GetRoot();
  const TString name = root.GetAttribute(name_qname.c_str()).GetValue();
  TString payload = root.GetCData(0).GetData();
  // Gone, the memory it leaves for the next parse too, before the bytes are made: the package
  // held beside its payload and the bytes would be six times the file.
  document.reset();
  Xml::Parser::ReleaseSpareMemory();
  // Each character carries one byte; characters beyond a byte keep their low 8 bits.
  std::vector<unsigned char> bytes(payload.begin(), payload.end());
  TString().swap(payload);
  return WriteBufferToDiskFile(destinationFolder, name, bytes, overwrite, unpackedFile, options);
}

int SettingsUtils::PackageOldSettingsFile(const OVFileSystemReference& oldSettingsFile,
                                          const OVFileSystemReference& destinationFolder,
                                          OVFileSystemReference& packageFile) {
  std::vector<unsigned char> bytes;
  int status = ReadDiskFileIntoBuffer(oldSettingsFile, bytes);
  if (status != 0) return status;
  TString name;
  if (oldSettingsFile.GetName(name) != 0) return -1;
  TString setName;
  if (SetNameFromFilterName(OldSettingsFilterName(bytes), setName) != 0) return -1;
  // A package that would lose bytes, or not unpack at all, is refused rather than written.
  if (!CanCarryOldSettings(bytes)) return -1;

  Xml::Document document(oldstyle_setting_qname.c_str());
  Xml::Element& root = document.GetRoot();
  Xml::Value(root.CreateAttribute(filter_qname.c_str())).Set(OldSettingsFilterName(bytes).c_str());
  Xml::Value(root.CreateAttribute(name_qname.c_str())).Set(name.c_str());
  Xml::Value(root.CreateAttribute(set_qname.c_str())).Set(setName.c_str());
  root.AddInto(Xml::CData(TString(bytes.begin(), std::find(bytes.begin(), bytes.end(), 0))));
  std::vector<unsigned char> package;
  ConvertWStringToFileBuffer(document.GenerateXML(), package);
  return WriteBufferToDiskFile(destinationFolder, name + package_extension, package, false,
                               packageFile);
}

TString SettingsUtils::OldSettingsFilterName(const std::vector<unsigned char>& bytes) {
  TString filter;
  for (unsigned char byte : bytes) {
    if (byte == 0x0D || byte == 0x0B || byte == 0x20) break;
    filter += static_cast<wchar_t>(byte);
  }
  return filter;
}

bool SettingsUtils::CanCarryOldSettings(const std::vector<unsigned char>& bytes) {
  // The payload ends at the first zero byte, which old settings files often end with.
  for (size_t i = 0; i < bytes.size() && bytes[i] != 0; ++i) {
    const unsigned char byte = bytes[i];
    if (byte < 0x20 && byte != '\t' && byte != '\n' && byte != '\r') return false;
    if (byte == '>' && i >= 2 && bytes[i - 1] == ']' && bytes[i - 2] == ']') return false;
  }
  return true;
}
