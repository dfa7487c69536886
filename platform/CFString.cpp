// CFString.cpp: the string half of CoreFoundation.h, and CFRelease for every object.
#include "platform/CoreFoundation.h"

#include <climits>
#include <cstring>
#include <map>
#include <string>

#include "platform/TextDecoding.h"
#include "platform/internal/CFObject.h"
#include "platform/internal/Unicode.h"

namespace {

bool Decode(const UInt8* bytes, std::size_t count, CFStringEncoding encoding,
            std::vector<UniChar>& units) {
  switch (encoding) {
    case kCFStringEncodingUTF8:
      return DecodeUtf8(bytes, count, units);
    case kCFStringEncodingASCII:
      return DecodeSingleByte(bytes, count, false, units);
    case kCFStringEncodingMacRoman:
      return DecodeSingleByte(bytes, count, true, units);
    default:
      return false;
  }
}

bool Encode(CFStringRef string, CFStringEncoding encoding, std::string& bytes) {
  const std::vector<UniChar>& units = string->m_units;
  switch (encoding) {
    case kCFStringEncodingUTF8:
      return EncodeUtf8(units.data(), units.size(), bytes);
    case kCFStringEncodingASCII:
      return EncodeSingleByte(units.data(), units.size(), false, bytes);
    case kCFStringEncodingMacRoman:
      return EncodeSingleByte(units.data(), units.size(), true, bytes);
    case kCFStringEncodingUnicode:
      bytes.assign(reinterpret_cast<const char*>(units.data()), units.size() * sizeof(UniChar));
      return true;
    default:
      return false;
  }
}

CFStringRef CreateFromBytes(const UInt8* bytes, std::size_t count, CFStringEncoding encoding) {
  // A text file saved with a UTF-8 byte-order mark means the same as one without: the mark is not
  // part of the text, and a settings file that starts with one must still start with its "[".
  if (encoding == kCFStringEncodingUTF8) {
    const TextForm form = DetectTextForm(bytes, count);
    if (form.encoding == TextEncodingForm::kUtf8) {
      bytes += form.start;
      count -= form.start;
    }
  }
  std::vector<UniChar> units;
  if (!Decode(bytes, count, encoding, units)) return nullptr;
  return MakeCFString(std::move(units));
}

}  // namespace

CFStringRef MakeCFString(std::vector<UniChar> units) {
  CFStringObject* string = new CFStringObject;
  string->m_units = std::move(units);
  return string;
}

std::string DisplayText(CFStringRef string) {
  // A lone surrogate has no UTF-8 form; the user still sees the rest of the text.
  std::vector<UniChar> units = string->m_units;
  for (std::size_t i = 0; i < units.size(); ++i) {
    const bool high = units[i] >= 0xD800 && units[i] <= 0xDBFF;
    const bool low = units[i] >= 0xDC00 && units[i] <= 0xDFFF;
    if (high && i + 1 < units.size() && units[i + 1] >= 0xDC00 && units[i + 1] <= 0xDFFF)
      ++i;
    else if (high || low)
      units[i] = 0xFFFD;
  }
  std::string text;
  EncodeUtf8(units.data(), units.size(), text);
  return text;
}

CFTypeID CFGetTypeID(CFTypeRef object) { return static_cast<const CFObject*>(object)->TypeID(); }

CFTypeID CFStringGetTypeID() { return kStringTypeID; }

void CFRelease(CFTypeRef object) {
  if (object == nullptr) return;
  const CFObject* cf = static_cast<const CFObject*>(object);
  if (cf->m_bConstant) return;
  if (--cf->m_nReferences == 0) delete cf;
}

CFStringRef CFStringMakeConstantString(const char* text) {
  // Owned by the map for the life of the process; the map itself is never destroyed, so a
  // constant stays usable during static destruction too.
  static auto* constants = new std::map<std::string, CFStringObject*>;
  CFStringObject*& string = (*constants)[text];
  if (string == nullptr) {
    string = const_cast<CFStringObject*>(CreateFromBytes(reinterpret_cast<const UInt8*>(text),
                                                         std::strlen(text), kCFStringEncodingUTF8));
    if (string != nullptr) string->m_bConstant = true;
  }
  return string;
}

CFStringRef CFStringCreateWithCharacters(CFAllocatorRef, const UniChar* characters, CFIndex count) {
  if (count < 0 || (count > 0 && characters == nullptr)) return nullptr;
  CFStringObject* string = const_cast<CFStringObject*>(
      MakeCFString(std::vector<UniChar>(characters, characters + count)));
  string->m_bMadeFromUnits = true;
  return string;
}

CFStringRef CFStringCreateWithBytes(CFAllocatorRef, const UInt8* bytes, CFIndex count,
                                    CFStringEncoding encoding, Boolean isExternalRepresentation) {
  if (count < 0 || (count > 0 && bytes == nullptr) || isExternalRepresentation) return nullptr;
  return CreateFromBytes(bytes, static_cast<std::size_t>(count), encoding);
}

CFStringRef CFStringCreateWithCString(CFAllocatorRef, const char* text, CFStringEncoding encoding) {
  if (text == nullptr) return nullptr;
  return CreateFromBytes(reinterpret_cast<const UInt8*>(text), std::strlen(text), encoding);
}

CFIndex CFStringGetLength(CFStringRef string) {
  return static_cast<CFIndex>(string->m_units.size());
}

void CFStringGetCharacters(CFStringRef string, CFRange range, UniChar* buffer) {
  if (range.length <= 0) return;
  std::memcpy(buffer, string->m_units.data() + range.location,
              static_cast<std::size_t>(range.length) * sizeof(UniChar));
}

const UniChar* CFStringGetCharactersPtr(CFStringRef string) {
  if (!string->m_bMadeFromUnits || string->m_units.empty()) return nullptr;
  return string->m_units.data();
}

const char* CFStringGetCStringPtr(CFStringRef, CFStringEncoding) { return nullptr; }

CFIndex CFStringGetMaximumSizeForEncoding(CFIndex length, CFStringEncoding encoding) {
  CFIndex perUnit;
  switch (encoding) {
    case kCFStringEncodingUTF8:
      perUnit = 3;  // a surrogate pair takes four bytes for two units
      break;
    case kCFStringEncodingUnicode:
      perUnit = 2;
      break;
    default:
      perUnit = 1;
      break;
  }
  if (length < 0 || length > LONG_MAX / perUnit) return kCFNotFound;
  return length * perUnit;
}

Boolean CFStringGetCString(CFStringRef string, char* buffer, CFIndex bufferSize,
                           CFStringEncoding encoding) {
  std::string bytes;
  if (buffer == nullptr || !Encode(string, encoding, bytes)) return false;
  if (bytes.size() + 1 > static_cast<std::size_t>(bufferSize)) return false;
  std::memcpy(buffer, bytes.c_str(), bytes.size() + 1);
  return true;
}

Boolean CFStringGetPascalString(CFStringRef string, StringPtr buffer, CFIndex bufferSize,
                                CFStringEncoding encoding) {
  std::string bytes;
  if (buffer == nullptr || !Encode(string, encoding, bytes)) return false;
  if (bytes.size() > 255 || bytes.size() + 1 > static_cast<std::size_t>(bufferSize)) return false;
  buffer[0] = static_cast<unsigned char>(bytes.size());
  std::memcpy(buffer + 1, bytes.data(), bytes.size());
  return true;
}

SInt32 CFStringGetIntValue(CFStringRef string) {
  const std::vector<UniChar>& units = string->m_units;
  std::size_t i = 0;
  while (i < units.size() && (units[i] == ' ' || units[i] == '\t' || units[i] == '\n')) ++i;
  bool negative = false;
  if (i < units.size() && (units[i] == '-' || units[i] == '+')) negative = units[i++] == '-';
  // Saturate rather than overflow: a text of too many digits is no number a control can hold.
  long long value = 0;
  for (; i < units.size() && units[i] >= '0' && units[i] <= '9'; ++i) {
    value = value * 10 + (units[i] - '0');
    if (value > INT_MAX) value = static_cast<long long>(INT_MAX) + 1;
  }
  if (negative) value = -value;
  if (value > INT_MAX) value = INT_MAX;
  return static_cast<SInt32>(value);
}
