// CFBundle.cpp: the bundle part of CoreFoundation.h: framework bundles with their executables,
// and the main bundle with its localized texts, which gettext finds beside the executable.
#include "platform/CoreFoundation.h"

#include <dlfcn.h>
#include <libintl.h>
#include <locale.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>
#include <cstring>
#include <fstream>
#include <iterator>
#include <string>
#include <unordered_map>
#include <vector>

#include "platform/internal/CFObject.h"
#include "platform/internal/Unicode.h"

namespace {

const char kTextDomain[] = "kestrail";

CFBundleObject* MakeMainBundle() {
  CFBundleObject* bundle = new CFBundleObject;
  bundle->m_bConstant = true;
  char executable[4096];
  const ssize_t length = readlink("/proc/self/exe", executable, sizeof executable - 1);
  if (length > 0) {
    const std::string path(executable, static_cast<std::size_t>(length));
    bundle->m_strPath = path.substr(0, path.rfind('/'));
  }
  return bundle;
}

// Where the main bundle's catalogs lie; empty when there is no telling.
std::string CatalogFolder(const CFBundleObject& bundle) {
  const char* folder = std::getenv("KESTRAIL_LOCALEDIR");
  if (folder != nullptr && folder[0] != '\0') return folder;
  if (bundle.m_strPath.empty()) return std::string();
  return bundle.m_strPath + "/../share/locale";
}

UInt32 ReadWord(const std::string& bytes, std::size_t offset, bool bigEndian) {
  UInt32 word = 0;
  for (std::size_t i = 0; i < 4; ++i) {
    const UInt32 byte = static_cast<UInt8>(bytes[offset + i]);
    word |= byte << (bigEndian ? 8 * (3 - i) : 8 * i);
  }
  return word;
}

// The string that table entry `index` of a catalog points at: false when it lies outside the file.
bool CatalogString(const std::string& bytes, UInt32 table, UInt32 index, bool bigEndian,
                   std::string& text) {
  const UInt64 entry = static_cast<UInt64>(table) + 8 * static_cast<UInt64>(index);
  if (entry + 8 > bytes.size()) return false;
  const UInt32 length = ReadWord(bytes, entry, bigEndian);
  const UInt32 offset = ReadWord(bytes, entry + 4, bigEndian);
  if (static_cast<UInt64>(offset) + length > bytes.size()) return false;
  text.assign(bytes, offset, length);
  return true;
}

// A compiled catalog's entries, read directly: gettext looks nothing up in the C and POSIX
// locales, where the English texts must still show. A damaged catalog holds nothing.
std::unordered_map<std::string, std::string> ReadCatalog(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  const std::string bytes{std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
  std::unordered_map<std::string, std::string> entries;
  if (bytes.size() < 20) return entries;
  const UInt32 magic = 0x950412DE;
  const bool bigEndian = ReadWord(bytes, 0, true) == magic;
  if (!bigEndian && ReadWord(bytes, 0, false) != magic) return entries;
  const UInt32 count = ReadWord(bytes, 8, bigEndian);
  const UInt32 originals = ReadWord(bytes, 12, bigEndian);
  const UInt32 translations = ReadWord(bytes, 16, bigEndian);
  for (UInt32 i = 0; i < count; ++i) {
    std::string original, text;
    if (!CatalogString(bytes, originals, i, bigEndian, original) ||
        !CatalogString(bytes, translations, i, bigEndian, text))
      return {};
    // A plural entry's key is its singular, up to the zero byte before the plural.
    entries.emplace(original.substr(0, original.find('\0')), std::move(text));
  }
  return entries;
}

// Looks `key` up in the compiled catalog at `path`. Of a plural entry, the form `form` (English
// has two: 0 for one, 1 for any other number). The catalog is read once, and again only when
// the file changes: a summary of many files looks up as many lines.
bool FindInCatalog(const std::string& path, const std::string& key, std::size_t form,
                   std::string& text) {
  struct Cached {
    std::string m_strPath;
    struct stat m_status = {};
    std::unordered_map<std::string, std::string> m_mapEntries;
  };
  static Cached* cached = new Cached;
  struct stat status;
  if (stat(path.c_str(), &status) != 0) return false;
  if (path != cached->m_strPath || status.st_size != cached->m_status.st_size ||
      status.st_ino != cached->m_status.st_ino ||
      status.st_mtim.tv_sec != cached->m_status.st_mtim.tv_sec ||
      status.st_mtim.tv_nsec != cached->m_status.st_mtim.tv_nsec)
    *cached = {path, status, ReadCatalog(path)};
  const auto found = cached->m_mapEntries.find(key);
  if (found == cached->m_mapEntries.end()) return false;
  // A plural entry's forms follow one another, each ended by a zero byte.
  const std::string& forms = found->second;
  std::size_t start = 0;
  for (std::size_t f = 0; f < form && forms.find('\0', start) != std::string::npos; ++f)
    start = forms.find('\0', start) + 1;
  text = forms.substr(start, forms.find('\0', start) - start);
  return !text.empty();
}

// The main bundle's text for `key`, in UTF-8; with `pluralKey`, in the form for `count`.
bool FindText(const std::string& key, std::string& text, const std::string* pluralKey = nullptr,
              unsigned long count = 1) {
  if (key.empty() || !BindMainBundleTexts()) return false;  // "" would find the catalog's header
  const char* translated = pluralKey != nullptr
                               ? dngettext(kTextDomain, key.c_str(), pluralKey->c_str(), count)
                               : dgettext(kTextDomain, key.c_str());
  if (translated != key.c_str() && (pluralKey == nullptr || translated != pluralKey->c_str())) {
    text = translated;
    return true;
  }
  const std::string english = CatalogFolder(*CFBundleGetMainBundle()) + "/en/LC_MESSAGES/";
  return FindInCatalog(english + kTextDomain + ".mo", key, count == 1 ? 0 : 1, text);
}

}  // namespace

bool BindMainBundleTexts() {
  const std::string folder = CatalogFolder(*CFBundleGetMainBundle());
  if (folder.empty()) return false;
  // The user's language may change between look-ups (in tests it does); only the language of
  // messages follows it, so numbers keep the C rules that the rest of the code expects.
  setlocale(LC_MESSAGES, "");
  bindtextdomain(kTextDomain, folder.c_str());
  bind_textdomain_codeset(kTextDomain, "UTF-8");
  textdomain(kTextDomain);
  return true;
}

std::string LocalizedText(const char* key) {
  std::string text;
  return FindText(key, text) ? text : key;
}

CFBundleObject::~CFBundleObject() {
  if (m_pExecutable != nullptr) dlclose(m_pExecutable);
}

CFBundleRef CFBundleCreate(CFAllocatorRef, CFURLRef bundleURL) {
  std::string path;
  struct stat status;
  if (bundleURL == nullptr || !FileURLPath(bundleURL->m_strText, path) ||
      stat(path.c_str(), &status) != 0 || !S_ISDIR(status.st_mode))
    return nullptr;
  CFBundleObject* bundle = new CFBundleObject;
  bundle->m_strPath = path;
  return bundle;
}

Boolean CFBundleLoadExecutable(CFBundleRef bundle) {
  if (bundle == nullptr) return false;
  if (bundle->m_pExecutable != nullptr) return true;
  const std::string& path = bundle->m_strPath;
  std::string name = path.substr(path.rfind('/') + 1);
  name = name.substr(0, name.rfind('.'));
  bundle->m_pExecutable = dlopen((path + "/" + name).c_str(), RTLD_NOW | RTLD_LOCAL);
  return bundle->m_pExecutable != nullptr;
}

CFBundleRef CFBundleGetMainBundle() {
  static CFBundleObject* const main = MakeMainBundle();  // lives as long as the process
  return main;
}

namespace {

// The main bundle's text for `key` (with `pluralKey`, in the form for `count`) as a new string;
// null when it has none.
CFStringRef CopyFoundText(CFStringRef key, CFStringRef pluralKey, unsigned long count) {
  std::string keyText, pluralText, text;
  std::vector<UniChar> units;
  if (!EncodeUtf8(key->m_units.data(), key->m_units.size(), keyText)) return nullptr;
  if (pluralKey != nullptr &&
      !EncodeUtf8(pluralKey->m_units.data(), pluralKey->m_units.size(), pluralText))
    return nullptr;
  if (!FindText(keyText, text, pluralKey != nullptr ? &pluralText : nullptr, count) ||
      !DecodeUtf8(reinterpret_cast<const UInt8*>(text.data()), text.size(), units))
    return nullptr;
  return MakeCFString(std::move(units));
}

}  // namespace

CFStringRef CFBundleCopyLocalizedString(CFBundleRef bundle, CFStringRef key, CFStringRef value,
                                        CFStringRef) {
  if (key == nullptr) return nullptr;
  if (bundle == CFBundleGetMainBundle()) {
    if (CFStringRef found = CopyFoundText(key, nullptr, 1)) return found;
  }
  const CFStringRef fallback = value != nullptr && !value->m_units.empty() ? value : key;
  return MakeCFString(fallback->m_units);
}

CFStringRef CFBundleCopyLocalizedStringForCount(CFStringRef key, CFStringRef pluralKey,
                                                unsigned long count) {
  if (key == nullptr) return nullptr;
  if (pluralKey == nullptr) return MakeCFString(key->m_units);
  if (CFStringRef found = CopyFoundText(key, pluralKey, count)) return found;
  return MakeCFString((count == 1 ? key : pluralKey)->m_units);
}
