#include "ovlib/general_framework/OVUtil.h"

#include <cstring>
#include <iterator>
#include <memory>

#include "ovlib/base_ui_framework/mac/MacUtil.h"
#include "platform/CFHolder.h"
#include "platform/CoreFoundation.h"
#include "platform/Memory.h"
#include "platform/Terminal.h"
#include "platform/TextDecoding.h"

namespace {

const char kSource[] = "ovlib/general_framework/OVUtil";

// `length` characters of room in `text`, to be overwritten, with the memory faulted in at
// once: a whole file's text is large, and fresh pages trapped one at a time as the decoding
// reaches them cost more than the decoding itself.
wchar_t* SizeExactly(TString& text, std::size_t length) {
  TString().swap(text);
  text.reserve(length);
  PrepareMemoryForWriting(text.data(), length * sizeof(wchar_t));
  text.resize(length);
  return text.data();
}

}  // namespace

int ConvertFileBufferToWString(const std::vector<unsigned char>& buffer, TString& text) {
  text.clear();
  if (buffer.size() < 4) return -1;
  // Straight into `text`, one unit per character as Utf8toUtf16 would give them (characters
  // beyond U+FFFF as surrogate pairs), without holding the text as UTF-16 on the way: a whole
  // file's text is the largest thing the application keeps.
  const TextForm form = DetectTextForm(buffer.data(), buffer.size());
  wchar_t* out = SizeExactly(text, DecodedTextLength(buffer.data(), buffer.size(), form));
  // Bytes that are not UTF-8 give an empty text, as the converter's refusal does, and the room
  // made for the text goes back at once.
  if (!DecodeText(buffer.data(), buffer.size(), form, out)) TString().swap(text);
  return 0;
}

std::vector<UniChar> Utf8toUtf16(const std::vector<unsigned char>& buffer) {
  auto string = CFHold(CFStringCreateWithBytes(kCFAllocatorDefault, buffer.data(),
                                               static_cast<CFIndex>(buffer.size()),
                                               kCFStringEncodingUTF8, false));
  if (string == nullptr) return std::vector<UniChar>();
  const CFStringRef text = string.get();
  std::vector<UniChar> units(static_cast<std::size_t>(CFStringGetLength(text)));
  CFStringGetCharacters(text, CFRangeMake(0, CFStringGetLength(text)), units.data());
  return units;
}

int ConvertWStringToFileBuffer(const TString& text, std::vector<unsigned char>& buffer) {
  // Line 87 rather than this one: the report reads as it always has, whatever moves in the file.
  if (text.empty()) OV_AssertFailed(kSource, 87, "ConvertWStringToFileBuffer");
  buffer.resize(2 * (text.size() + 1));
  const UInt16 mark = 0xFEFF;
  std::memcpy(buffer.data(), &mark, 2);
  for (std::size_t i = 0; i < text.size(); ++i) {
    const UInt16 unit = static_cast<UInt16>(text[i]);
    std::memcpy(buffer.data() + 2 * (i + 1), &unit, 2);
  }
  return 0;
}

TString TStringParamReplaceCounted(const TString* templateText, const wchar_t* const* texts,
                                   std::size_t count) {
  static const TString replace_markers[10] = {L"%0", L"%1", L"%2", L"%3", L"%4",
                                              L"%5", L"%6", L"%7", L"%8", L"%9"};
  TString result = *templateText;
  for (std::size_t i = 0; i < count && i < std::size(replace_markers); ++i) {
    // Each search starts over from the beginning, so text filled in for one marker can hold the
    // next marker and be filled in turn, but only with a text given for it: a file name such as
    // "a%1.xml" is shown as it is.
    const std::size_t at = result.find(replace_markers[i]);
    if (at == TString::npos) break;
    result.replace(at, replace_markers[i].size(), texts[i]);
  }
  return result;
}

TString ShownName(const TString& name) {
  // A message reaches the platform with each character cut to one UTF-16 unit, its low 16 bits
  // (MacUtil's conversions). The name is read the same way, so that a character above U+FFFF
  // cannot bring in a control through its low bits; a surrogate pair is one character.
  const auto unitAt = [&name](std::size_t i) {
    return i < name.size() ? static_cast<UInt32>(name[i]) & 0xFFFF : 0;
  };
  TString shown = L"\u2068";
  for (std::size_t i = 0; i < name.size(); ++i) {
    const UInt32 unit = unitAt(i), next = unitAt(i + 1);
    const bool paired = unit >= 0xD800 && unit <= 0xDBFF && next >= 0xDC00 && next <= 0xDFFF;
    const UInt32 character = paired ? 0x10000 + ((unit - 0xD800) << 10) + (next - 0xDC00) : unit;
    if (IsShownAsEscape(character)) {
      const std::string escape = CharacterEscape(character);
      shown.append(escape.begin(), escape.end());
    } else {
      shown += static_cast<wchar_t>(unit);
      if (paired) shown += static_cast<wchar_t>(next);
    }
    if (paired) ++i;
  }
  return shown + L"\u2069";
}

bool FilenameHasExtension(const TString& fileName, const TString& extension) {
  const std::size_t dot = fileName.rfind(L'.');
  return dot != TString::npos && fileName.compare(dot + 1, TString::npos, extension) == 0;
}

bool Little_Endian() {
  const UInt32 value = 0x41424344;
  unsigned char first;
  std::memcpy(&first, &value, 1);
  return first == 0x44;
}

short ByteSwap(short value) {
  const unsigned short bits = static_cast<unsigned short>(value);
  return static_cast<short>(static_cast<unsigned short>((bits << 8) | (bits >> 8)));
}

int checked_fclose(FILE* stream) { return stream == nullptr ? 0 : std::fclose(stream); }

TString ConvertToTString(std::wstring text) { return text; }

TString ConvertToTString(const std::string& text) {
  return ConvertCharStringToWideCharString(text);
}

std::wstring ConvertToWideCharString(const TString& text) { return text; }

std::string ConvertToCharString(const TString& text) {
  return ConvertWideCharStringToCharString(text);
}
