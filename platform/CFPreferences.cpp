// CFPreferences.cpp: reading a user's preferences, which live in XML property lists, and the
// type identifiers that tell their values apart.
#include "platform/CoreFoundation.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <functional>
#include <iostream>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "platform/CFHolder.h"
#include "platform/EventLoop.h"  // ProgramName
#include "platform/Terminal.h"
#include "platform/TextDecoding.h"
#include "platform/internal/CFObject.h"
#include "platform/internal/PosixFiles.h"  // UserBaseFolder
#include "platform/internal/Unicode.h"
#include "xmlparser/Xml.h"

namespace {

// A preference value other than a string. Only its kind is ever asked for, so only its kind is
// kept.
struct CFPropertyObject : CFObject {
  explicit CFPropertyObject(CFTypeID typeID) : m_nTypeID(typeID) {}
  CFTypeID TypeID() const override { return m_nTypeID; }
  CFTypeID m_nTypeID;
};

typedef CFHolder<const CFObject*> Owned;

Owned Own(const CFObject* object) { return Owned(object); }

// The text of a value element exactly as written: its text, references and CDATA sections,
// without the white space normalising that element values get.
TString RawText(const Xml::Element& element) {
  TString text;
  for (const Xml::Node* child : element) {
    if (!child->IsKindOf(Xml::NODE_COMMENT) && !child->IsKindOf(Xml::NODE_PI)) {
      text += child->GetValue();
    }
  }
  return text;
}

// UTF-16 units of text decoded from a file, where a character reference may stand for a
// character beyond the 16-bit range.
std::vector<UniChar> Utf16(const TString& text) {
  std::vector<UniChar> units;
  for (wchar_t c : text) {
    if (c > 0xFFFF && c <= 0x10FFFF) {
      units.push_back(static_cast<UniChar>(0xD800 + ((c - 0x10000) >> 10)));
      units.push_back(static_cast<UniChar>(0xDC00 + (c & 0x3FF)));
    } else {
      units.push_back(static_cast<UniChar>(c));
    }
  }
  return units;
}

// The value that a property list element stands for; null for an element that is not a value.
Owned ValueOf(const Xml::Element& element) {
  static const std::map<TString, CFTypeID, std::less<>> kinds = {
      {L"integer", kNumberTypeID}, {L"real", kNumberTypeID}, {L"true", kBooleanTypeID},
      {L"false", kBooleanTypeID},  {L"array", kArrayTypeID}, {L"dict", kDictionaryTypeID},
      {L"date", kDateTypeID},      {L"data", kDataTypeID},
  };
  if (element.GetName() == L"string") return Own(MakeCFString(Utf16(RawText(element))));
  auto kind = kinds.find(element.GetName());
  return Own(kind != kinds.end() ? new CFPropertyObject(kind->second) : nullptr);
}

// The value after the key `key` in the top dictionary of the property list `document`; when a
// key stands twice, the later one wins, as it would in a dictionary built in file order.
Owned LookUp(const Xml::Document& document, const TString& key) {
  Owned found = Own(nullptr);
  const Xml::Element& plist = document.GetRoot();
  if (plist.GetName() != L"plist") return found;
  for (const Xml::Node* dict : plist) {
    if (!dict->IsKindOf(Xml::NODE_ELEMENT) || dict->GetName() != L"dict") continue;
    bool afterKey = false, afterMatchingKey = false;
    for (const Xml::Node* child : static_cast<const Xml::Element&>(*dict)) {
      if (!child->IsKindOf(Xml::NODE_ELEMENT)) continue;
      const auto& element = static_cast<const Xml::Element&>(*child);
      if (afterKey) {
        if (afterMatchingKey) found = ValueOf(element);
        afterKey = afterMatchingKey = false;
      } else if (element.GetName() == L"key") {
        afterKey = true;
        afterMatchingKey = RawText(element) == key;
      }
    }
    break;  // only the first dictionary is the preferences
  }
  return found;
}

// The text of a preferences file, in the forms a settings file may take.
bool Decode(const std::string& bytes, TString& text) {
  const auto* begin = reinterpret_cast<const UInt8*>(bytes.data());
  const TextForm form = DetectTextForm(begin, bytes.size());
  text.resize(DecodedTextLength(begin, bytes.size(), form));
  wchar_t* out = text.data();
  if (!DecodeText(begin, bytes.size(), form, out)) return false;
  text.resize(static_cast<std::size_t>(out - text.data()));
  return true;
}

// A preferences file is a few hundred bytes; anything near this is not one.
const std::size_t kLargestPreferencesFile = 1 << 20;

// The bytes of the preferences file `path`, read as a settings file is read: a regular file (a
// link to one is followed, as a user's kept configuration often is one) of at most
// kLargestPreferencesFile bytes, opened without waiting on whatever else may be there. A missing
// file holds no preferences; anything else that cannot be read is said in one line on standard
// error and holds none either.
bool ReadPreferencesFile(const std::string& path, std::string& bytes) {
  const auto refuse = [&path](const std::string& why) {
    std::cerr << ProgramName() << ": " << TerminalText(path) << ": " << why
              << "; no preferences read from it\n";
    return false;
  };
  const int fd = open(path.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
  // A name too long for a file is one that no preferences file can have.
  if (fd < 0)
    return errno == ENOENT || errno == ENAMETOOLONG ? false : refuse(std::strerror(errno));
  struct Closer {
    ~Closer() { close(m_nFd); }
    int m_nFd;
  } closer{fd};
  struct stat status;
  if (fstat(fd, &status) != 0) return refuse(std::strerror(errno));
  if (!S_ISREG(status.st_mode)) return refuse("not a regular file");
  // One byte more than allowed tells a file that grew past the limit since it was looked at.
  bytes.resize(kLargestPreferencesFile + 1);
  std::size_t filled = 0;
  for (;;) {
    const ssize_t count = read(fd, bytes.data() + filled, bytes.size() - filled);
    if (count < 0 && errno == EINTR) continue;
    if (count < 0) return refuse(std::strerror(errno));
    if (count == 0 || (filled += static_cast<std::size_t>(count)) == bytes.size()) break;
  }
  if (filled > kLargestPreferencesFile) return refuse("larger than 1 MiB");
  bytes.resize(filled);
  return true;
}

TString TextOf(CFStringRef string) {
  return TString(string->m_units.begin(), string->m_units.end());
}

}  // namespace

CFPropertyListRef CFPreferencesCopyAppValue(CFStringRef key, CFStringRef applicationID) {
  if (key == nullptr || applicationID == nullptr) return nullptr;
  std::string folder, name;
  if (!UserBaseFolder("XDG_CONFIG_HOME", ".config", folder)) return nullptr;
  // The application ID names one file in the folder, never a path elsewhere.
  const TString id = TextOf(applicationID);
  if (id.empty() || id == L"." || id == L".." || id.find(L'/') != TString::npos ||
      !EncodeUtf8(applicationID->m_units.data(), applicationID->m_units.size(), name) ||
      name.find('\0') != std::string::npos) {
    return nullptr;
  }
  std::string bytes;
  TString text;
  if (!ReadPreferencesFile(folder + "/" + name + ".plist", bytes) || !Decode(bytes, text))
    return nullptr;
  try {
    Xml::Parser parser;
    std::unique_ptr<Xml::Document> document(
        parser.Parse(text.data(), static_cast<int>(text.size())));
    return LookUp(*document, TextOf(key)).release();
  } catch (const Xml::ParsingException&) {
    return nullptr;  // a malformed file holds no values
  }
}
