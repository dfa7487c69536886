#include "ovlib/general_framework/OVUtil.h"

#include <cstdarg>
#include <cstring>
#include <memory>

#include "ovlib/base_ui_framework/mac/MacUtil.h"
#include "platform/CoreFoundation.h"

int ConvertFileBufferToWString(const std::vector<unsigned char>& buffer, TString& text) {
  text.clear();
  if (buffer.size() < 4) return -1;
  const unsigned int mark = buffer[0] * 256u + buffer[1];
  if (mark == 0xFEFF || mark == 0xFFFE) {
    const bool bigEndian = mark == 0xFEFF;
    text.reserve(buffer.size() / 2 - 1);
    for (std::size_t i = 2; i + 1 < buffer.size(); i += 2) {
      const unsigned int first = buffer[i], second = buffer[i + 1];
      text += static_cast<wchar_t>(bigEndian ? first * 256 + second : second * 256 + first);
    }
    return 0;
  }
  const std::vector<UniChar> units = Utf8toUtf16(buffer);
  text.assign(units.begin(), units.end());
  return 0;
}

std::vector<UniChar> Utf8toUtf16(const std::vector<unsigned char>& buffer) {
  std::unique_ptr<const void, decltype(&CFRelease)> string(
      CFStringCreateWithBytes(kCFAllocatorDefault, buffer.data(),
                              static_cast<CFIndex>(buffer.size()), kCFStringEncodingUTF8, false),
      &CFRelease);
  if (string == nullptr) return std::vector<UniChar>();
  const CFStringRef text = static_cast<CFStringRef>(string.get());
  std::vector<UniChar> units(static_cast<std::size_t>(CFStringGetLength(text)));
  CFStringGetCharacters(text, CFRangeMake(0, CFStringGetLength(text)), units.data());
  return units;
}

int ConvertWStringToFileBuffer(const TString& text, std::vector<unsigned char>& buffer) {
  if (text.empty())
    OV_AssertFailed("ovlib/general_framework/OVUtil", 87, "ConvertWStringToFileBuffer");
  buffer.resize(2 * (text.size() + 1));
  const UInt16 mark = 0xFEFF;
  std::memcpy(buffer.data(), &mark, 2);
  for (std::size_t i = 0; i < text.size(); ++i) {
    const UInt16 unit = static_cast<UInt16>(text[i]);
    std::memcpy(buffer.data() + 2 * (i + 1), &unit, 2);
  }
  return 0;
}

TString TStringParamReplace(const TString* templateText, ...) {
  static const TString replace_markers[10] = {L"%0", L"%1", L"%2", L"%3", L"%4",
                                              L"%5", L"%6", L"%7", L"%8", L"%9"};
  TString result = *templateText;
  va_list arguments;
  va_start(arguments, templateText);
  for (const TString& marker : replace_markers) {
    // Each search starts over from the beginning, so text filled in for one marker can hold the
    // next marker and be filled in turn.
    const std::size_t at = result.find(marker);
    if (at == TString::npos) break;
    result.replace(at, marker.size(), va_arg(arguments, const wchar_t*));
  }
  va_end(arguments);
  return result;
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

TString ConvertToTString(const std::wstring& text) { return text; }

TString ConvertToTString(const std::string& text) {
  return ConvertCharStringToWideCharString(text);
}

std::wstring ConvertToWideCharString(const TString& text) { return text; }

std::string ConvertToCharString(const TString& text) {
  return ConvertWideCharStringToCharString(text);
}
