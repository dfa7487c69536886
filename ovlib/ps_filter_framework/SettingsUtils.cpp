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

// The product family's preference domains are this prefix and the reduced set name.
const TString preferences_prefix = L"com.orvelle.";
const TString maker_folder = L"Orvelle";
const TString package_extension = L".f1s";

// The document that `text` holds, or null when it is not XML. Texts beyond the parser's count
// are not settings anyone wrote; they read as not XML.
Xml::Document* ParseOrNull(const TString& text) {
  if (text.size() > static_cast<size_t>(INT_MAX)) return nullptr;
  try {
    Xml::Parser parser;
    return parser.Parse(text.data(), static_cast<int>(text.size()));
  } catch (const Xml::ParsingException&) {
    return nullptr;  // not XML; it may still be a "[" text setting
  }
}

// Whether `file` can be a setting, judged by its first character alone: the "<" of XML, after a
// byte-order mark and white space, or the "[" of the text form, right after a mark. Reads no
// further than that character, so that a large file that is no setting is not read whole to
// learn so. True also when it cannot tell, leaving the answer to the whole reading.
bool CouldBeASetting(const OVFileSystemReference& file) {
  HFSUniStr255 dataForkName;
  SInt16 fork;
  if (FSGetDataForkName(&dataForkName) != noErr ||
      FSOpenFork(file, dataForkName.length, dataForkName.unicode, fsRdPerm, &fork) != noErr)
    return true;
  unsigned char chunk[4096];
  std::size_t count = 0, at = 0, unit = 1;
  bool bigEndian = false, first = true;
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
    // The forms ConvertFileBufferToWString reads: UTF-16 after its mark, else UTF-8, whose own
    // mark it drops.
    if (start && count >= 2 &&
        ((chunk[0] == 0xFE && chunk[1] == 0xFF) || (chunk[0] == 0xFF && chunk[1] == 0xFE))) {
      unit = at = 2;
      bigEndian = chunk[0] == 0xFE;
    } else if (start && count >= 3 && chunk[0] == 0xEF && chunk[1] == 0xBB && chunk[2] == 0xBF) {
      at = 3;
    }
    for (; at + unit <= count; at += unit, first = false) {
      const unsigned c = unit == 1   ? chunk[at]
                         : bigEndian ? chunk[at] << 8 | chunk[at + 1]
                                     : chunk[at + 1] << 8 | chunk[at];
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

// Reads `file` whole and decodes it into `text`, which is then parsed into `document` (left
// null when the text is not XML). The status of a failed read or decoding, else 0.
int ReadSettingsFile(const OVFileSystemReference& file, TString& text,
                     boost::scoped_ptr<Xml::Document>& document) {
  std::vector<unsigned char> buffer;
  int status = ReadDiskFileIntoBuffer(file, buffer);
  if (status == 0) status = ConvertFileBufferToWString(buffer, text);
  if (status == 0) document.reset(ParseOrNull(text));
  return status;
}

TString AttributeValue(const Xml::Element& element, const TString& name) {
  return ConvertToTString(element.GetAttribute(name.c_str()).GetValue());
}

// The value after `key` in a text settings file: up to the next quotation mark after its first
// character, or to the end; the key's own word when the key is absent. Nothing is unescaped.
TString ExtractTextValue(const TString& text, const TString& key, const TString& word) {
  const size_t found = text.find(key);
  if (found == TString::npos) return word;
  const size_t start = found + key.size();
  const size_t end = start < text.size() ? text.find(L'"', start + 1) : TString::npos;
  return text.substr(start, end == TString::npos ? TString::npos : end - start);
}

// Moves `folder` to its child `name`, creating the child when it is missing.
int DescendCreating(OVFileSystemReference& folder, const TString& name) {
  const std::vector<UniChar> units = CreateUniCharVectorFromTString(name);
  FSRef child;
  OSErr status =
      FSMakeFSRefUnicode(folder, units.size(), units.data(), kTextEncodingUnknown, &child);
  if (status == fnfErr) {
    status = FSCreateDirectoryUnicode(folder, units.size(), units.data(), kFSCatInfoNone, nullptr,
                                      &child, nullptr, nullptr);
    // Made by another process since the look, such as a second Kestrail installing a setting
    // of the same filter: as good as one made here.
    if (status == dupFNErr)
      status = FSMakeFSRefUnicode(folder, units.size(), units.data(), kTextEncodingUnknown, &child);
  }
  if (status != noErr) return -1;
  folder = OVFileSystemReference(child);
  return 0;
}

// The folder named by the set's "User Folder" preference, when it is a string holding a path
// to an existing object.
bool PreferredBaseFolder(const TString& setName, OVFileSystemReference& base) {
  auto domain =
      CFHold(CreateCFStringRefFromTString(preferences_prefix + ToLowerCaseAndStripSpaces(setName)));
  if (!domain) return false;
  auto value = CFHold(CFPreferencesCopyAppValue(CFSTR("User Folder"), domain.get()));
  if (!value || CFGetTypeID(value.get()) != CFGetTypeID(domain.get())) return false;
  char path[1024];
  return CFStringGetCString(static_cast<CFStringRef>(value.get()), path, sizeof path,
                            kCFStringEncodingUTF8) &&
         FSPathMakeRef(reinterpret_cast<const UInt8*>(path), base, nullptr) >= 0;
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
                                          bool& needsGlimmerboxFolder) {
  needsGlimmerboxFolder = false;
  if (!CouldBeASetting(sourceFile)) return -1;
  TString text;
  boost::scoped_ptr<Xml::Document> document;
  if (const int status = ReadSettingsFile(sourceFile, text, document)) return status;
  if (document) {
    const Xml::Element& root = document->GetRoot();
    if (root.GetName() == oldstyle_setting_qname) {
      isOldStyle = true;
    } else if (root.GetName() == setting_qname) {
      isOldStyle = false;
    } else {
      return -1;
    }
    setName = AttributeValue(root, set_qname);
    filterName = AttributeValue(root, filter_qname);
    settingName = AttributeValue(root, name_qname);
    document.reset();
    if (setName == glimmerbox) {
      needsGlimmerboxFolder = true;
      return 0;
    }
    return GetUserSettingsFolderForFilter(setName, filterName, destinationFolder);
  }

  // Not XML: a text settings file starts with "[" at its very first character. It names its set
  // and filter but not itself, and its set is routed like any other, the legacy one included.
  if (text.empty() || text[0] != L'[') return -1;
  setName = ExtractTextValue(text, L"\"set\": \"", set_qname);
  filterName = ExtractTextValue(text, L"\"filter\": \"", filter_qname);
  isOldStyle = false;
  return GetUserSettingsFolderForFilter(setName, filterName, destinationFolder);
}

int SettingsUtils::GetUserSettingsFolderForFilter(const TString& setName, const TString& filterName,
                                                  OVFileSystemReference& userSettingsFolder) {
  SInt32 folderManager = 0;
  if (Gestalt(gestaltFindFolderAttr, &folderManager) != noErr) return -1;
  const FSVolumeRefNum domain =
      folderManager & (1 << gestaltFolderMgrSupportsDomains) ? kUserDomain : kOnSystemDisk;

  OVFileSystemReference folder;
  if (!PreferredBaseFolder(setName, folder) &&
      FSFindFolder(domain, kApplicationSupportFolderType, kCreateFolder, folder) != noErr) {
    return -1;
  }
  for (const TString* level : {&maker_folder, &setName, &filterName}) {
    if (DescendCreating(folder, *level) != 0) return -1;
  }
  userSettingsFolder = folder;
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
                                            const OVFileVersion* packageVersion) {
  if (!destinationFolder.IsFolder()) {
    OV_AssertFailed("ovlib/ps_filter_framework/SettingsUtils", 183, "UnpackageOldSettingsFile");
  }
  TString text;
  boost::scoped_ptr<Xml::Document> document;
  if (const int status = ReadSettingsFile(packageFile, text, document)) return status;
  if (!document || document->GetRoot().GetName() != oldstyle_setting_qname) return -1;
  // A package written since it was examined may carry another setting than the one shown.
  if (packageVersion != nullptr && !packageFile.HasVersion(*packageVersion)) return -1;
  const Xml::Element& root = document->GetRoot();
  const TString name = root.GetAttribute(name_qname.c_str()).GetValue();
  const TString payload = root.GetCData(0).GetData();
  // Each character carries one byte; characters beyond a byte keep their low 8 bits.
  std::vector<unsigned char> bytes(payload.begin(), payload.end());
  return WriteBufferToDiskFile(destinationFolder, name, bytes, overwrite, unpackedFile);
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
