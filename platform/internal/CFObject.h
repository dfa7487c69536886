// CFObject.h: what every Core Foundation object of the stand-in shares: a reference count and a
// virtual destructor, so that one CFRelease frees strings, URLs and bundles alike; and the forms
// of strings and file URLs that other platform/ calls build on. Only platform/ includes this
// header.
#pragma once

#include <string>
#include <vector>

#include "platform/CoreFoundation.h"

// The stand-in's own type identifiers, which CFGetTypeID answers.
enum : CFTypeID {
  kOtherTypeID = 1,
  kStringTypeID,
  kURLTypeID,
  kNumberTypeID,
  kBooleanTypeID,
  kArrayTypeID,
  kDictionaryTypeID,
  kDateTypeID,
  kDataTypeID,
};

struct CFObject {
  virtual ~CFObject() = default;
  virtual CFTypeID TypeID() const { return kOtherTypeID; }

  mutable long m_nReferences = 1;
  bool m_bConstant = false;  // made by CFSTR: never freed
};

struct CFStringObject : CFObject {
  CFTypeID TypeID() const override { return kStringTypeID; }

  std::vector<UniChar> m_units;
  bool m_bMadeFromUnits = false;  // lends its units through CFStringGetCharactersPtr
};

struct CFURLObject : CFObject {
  CFTypeID TypeID() const override { return kURLTypeID; }

  std::string m_strText;  // the URL as written, escapes included
};

struct CFBundleObject : CFObject {
  ~CFBundleObject() override;

  std::string m_strPath;  // the bundle folder; for the main bundle, the executable's folder
  void* m_pExecutable = nullptr;
};

// Strings made inside platform/ from UTF-16 units.
CFStringRef MakeCFString(std::vector<UniChar> units);

// A string in UTF-8 for showing to the user: a lone surrogate shows as U+FFFD.
std::string DisplayText(CFStringRef string);

// The main bundle's text for `key` in UTF-8, found as CFBundleCopyLocalizedString finds it, else
// `key` itself: the words of platform/'s own that reach the user (standard button titles, the
// terminal's prompts), which the real system brings in the user's language.
std::string LocalizedText(const char* key);

// Makes the main bundle's text domain gettext's default, bound to its catalogs in UTF-8, and takes
// the language of messages from the environment, so that the GTK dialogs can look their own words
// up with gettext(). False when there is no telling where the catalogs are.
bool BindMainBundleTexts();

// The file URL of an absolute path, escaped as CFURLCreateFromFSRef escapes it; and the path of a
// file URL's text, false for text that is no file URL or holds a broken escape.
std::string FileURLText(const std::string& path);
bool FileURLPath(const std::string& text, std::string& path);
