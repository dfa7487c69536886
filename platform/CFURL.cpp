// CFURL.cpp: the URL part of CoreFoundation.h. A URL is kept as its escaped text.
#include "platform/CoreFoundation.h"

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <string>
#include <vector>

#include "platform/internal/CFObject.h"
#include "platform/internal/PosixFiles.h"
#include "platform/internal/Unicode.h"

namespace {

const char kFileScheme[] = "file://";

bool IsUnreserved(unsigned char c) {
  return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || (c >= '0' && c <= '9') || c == '-' ||
         c == '.' || c == '_' || c == '~';
}

int HexValue(char c) {
  if (c >= '0' && c <= '9') return c - '0';
  if (c >= 'A' && c <= 'F') return c - 'A' + 10;
  if (c >= 'a' && c <= 'f') return c - 'a' + 10;
  return -1;
}

// The characters a URL may hold as they are; anything else must come escaped.
bool IsUrlCharacter(unsigned char c) {
  return IsUnreserved(c) || std::strchr(":/?#[]@!$&'()*+,;=", c) != nullptr;
}

bool StringToUtf8(CFStringRef string, std::string& bytes) {
  return string != nullptr && EncodeUtf8(string->m_units.data(), string->m_units.size(), bytes);
}

CFURLRef MakeURL(std::string text) {
  CFURLObject* url = new CFURLObject;
  url->m_strText = std::move(text);
  return url;
}

}  // namespace

std::string PercentEscaped(const std::string& bytes, bool keepSlashes) {
  std::string escaped;
  for (unsigned char c : bytes) {
    if (IsUnreserved(c) || (keepSlashes && c == '/')) {
      escaped += static_cast<char>(c);
    } else {
      char code[4];
      std::snprintf(code, sizeof code, "%%%02X", c);
      escaped += code;
    }
  }
  return escaped;
}

std::string FileURLText(const std::string& path) {
  return kFileScheme + PercentEscaped(path, true);
}

bool FileURLPath(const std::string& text, std::string& path) {
  if (text.compare(0, sizeof kFileScheme - 1, kFileScheme) != 0) return false;
  const std::size_t start = text.find('/', sizeof kFileScheme - 1);  // after the host, if any
  if (start == std::string::npos) return false;
  const std::size_t end = text.find_first_of("?#", start);
  path.clear();
  for (std::size_t i = start; i < end && i < text.size(); ++i) {
    if (text[i] != '%') {
      path += text[i];
      continue;
    }
    if (i + 2 >= text.size()) return false;
    const int high = HexValue(text[i + 1]), low = HexValue(text[i + 2]);
    if (high < 0 || low < 0) return false;
    path += static_cast<char>(high * 16 + low);
    i += 2;
  }
  if (path.size() > 1 && path.back() == '/') path.pop_back();
  return true;
}

CFURLRef CFURLCreateFromFSRef(CFAllocatorRef, const FSRef* ref) {
  ObjectOnDisk object;
  std::string path;
  if (ResolveReference(ref, object) != noErr || CurrentPath(object, path) != noErr) return nullptr;
  std::string text = FileURLText(path);
  if (object.m_bIsDirectory && text.back() != '/') text += '/';
  return MakeURL(std::move(text));
}

CFURLRef CFURLCreateWithString(CFAllocatorRef, CFStringRef text, CFURLRef baseURL) {
  std::string bytes;
  if (baseURL != nullptr || !StringToUtf8(text, bytes) || bytes.empty()) return nullptr;
  for (std::size_t i = 0; i < bytes.size(); ++i) {
    const unsigned char c = static_cast<unsigned char>(bytes[i]);
    if (c == '%') {
      if (i + 2 >= bytes.size() || HexValue(bytes[i + 1]) < 0 || HexValue(bytes[i + 2]) < 0)
        return nullptr;
      i += 2;
    } else if (!IsUrlCharacter(c)) {
      return nullptr;
    }
  }
  return MakeURL(std::move(bytes));
}

CFURLRef CFURLCreateCopyAppendingPathComponent(CFAllocatorRef, CFURLRef url, CFStringRef component,
                                               Boolean isDirectory) {
  std::string bytes;
  if (url == nullptr || !StringToUtf8(component, bytes)) return nullptr;
  const std::string& text = url->m_strText;
  const std::size_t end = std::min(text.find_first_of("?#"), text.size());
  std::string path = text.substr(0, end);
  if (path.empty() || path.back() != '/') path += '/';
  path += PercentEscaped(bytes, false);
  if (isDirectory) path += '/';
  return MakeURL(path + text.substr(end));
}

CFStringRef CFURLCopyFileSystemPath(CFURLRef url, CFURLPathStyle) {
  std::string path;
  std::vector<UniChar> units;
  if (url == nullptr || !FileURLPath(url->m_strText, path) ||
      !DecodeUtf8(reinterpret_cast<const UInt8*>(path.data()), path.size(), units))
    return nullptr;
  return MakeCFString(std::move(units));
}
