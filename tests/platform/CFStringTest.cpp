#include <gtest/gtest.h>

#include <climits>
#include <cstring>
#include <memory>
#include <string>
#include <vector>

#include "platform/CoreFoundation.h"

namespace {

using StringHolder = std::unique_ptr<const void, decltype(&CFRelease)>;

StringHolder Hold(CFStringRef string) { return StringHolder(string, &CFRelease); }

std::vector<UniChar> UnitsOf(CFStringRef string) {
  std::vector<UniChar> units(static_cast<std::size_t>(CFStringGetLength(string)));
  CFStringGetCharacters(string, CFRangeMake(0, CFStringGetLength(string)), units.data());
  return units;
}

CFStringRef FromBytes(const std::string& bytes, CFStringEncoding encoding) {
  return CFStringCreateWithBytes(kCFAllocatorDefault, reinterpret_cast<const UInt8*>(bytes.data()),
                                 static_cast<CFIndex>(bytes.size()), encoding, false);
}

CFStringRef FromUnits(const std::vector<UniChar>& units) {
  return CFStringCreateWithCharacters(kCFAllocatorDefault, units.data(),
                                      static_cast<CFIndex>(units.size()));
}

TEST(CFStringCreateWithBytesTest, Utf8AcceptsWellFormedText) {
  struct Case {
    const char* label;
    std::string bytes;
    std::vector<UniChar> units;
  };
  const Case cases[] = {
      {"empty", "", {}},
      {"ASCII past the eight-byte stride",
       "abcdefghij",
       {'a', 'b', 'c', 'd', 'e', 'f', 'g', 'h', 'i', 'j'}},
      {"lowest two-byte", "\xC2\x80", {0x0080}},
      {"highest two-byte", "\xDF\xBF", {0x07FF}},
      {"lowest three-byte", "\xE0\xA0\x80", {0x0800}},
      {"last before surrogates", "\xED\x9F\xBF", {0xD7FF}},
      {"highest three-byte", "\xEF\xBF\xBF", {0xFFFF}},
      {"lowest four-byte as a pair", "\xF0\x90\x80\x80", {0xD800, 0xDC00}},
      {"U+1F600 as a pair", "\xF0\x9F\x98\x80", {0xD83D, 0xDE00}},
      {"highest code point", "\xF4\x8F\xBF\xBF", {0xDBFF, 0xDFFF}},
      {"multi-byte after an ASCII stride",
       "12345678\xC3\xA9",
       {'1', '2', '3', '4', '5', '6', '7', '8', 0xE9}},
      {"leading mark dropped", "\xEF\xBB\xBF[x", {'[', 'x'}},
      {"mark alone", "\xEF\xBB\xBF", {}},
      {"later mark kept", "a\xEF\xBB\xBF", {'a', 0xFEFF}},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.label);
    StringHolder string = Hold(FromBytes(c.bytes, kCFStringEncodingUTF8));
    ASSERT_NE(string, nullptr);
    EXPECT_EQ(c.units, UnitsOf(static_cast<CFStringRef>(string.get())));
  }
}

TEST(CFStringCreateWithBytesTest, Utf8RefusesIllFormedTextAnywhere) {
  struct Case {
    const char* label;
    std::string bytes;
  };
  const Case cases[] = {
      {"lone continuation byte", "\x80"},
      {"continuation after a long ASCII run", "abcdefghijklmnop\xBF"},
      {"overlong two-byte", "\xC0\xAF"},
      {"overlong C1 lead", "\xC1\xBF"},
      {"overlong three-byte", "\xE0\x80\xAF"},
      {"overlong four-byte", "\xF0\x80\x80\xAF"},
      {"encoded high surrogate", "\xED\xA0\x80"},
      {"encoded low surrogate", "\xED\xBF\xBF"},
      {"above U+10FFFF", "\xF4\x90\x80\x80"},
      {"F5 lead", "\xF5\x80\x80\x80"},
      {"FF byte", "a\xFF"},
      {"two-byte cut at the end", "ABC\xC3"},
      {"three-byte cut at the end", "\xE2\x82"},
      {"four-byte cut at the end", "\xF0\x9F\x98"},
      {"three-byte cut by ASCII", "\xE2\x82x"},
      {"bad byte after a mark", "\xEF\xBB\xBF\xC3"},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.label);
    EXPECT_EQ(nullptr, FromBytes(c.bytes, kCFStringEncodingUTF8));
  }
}

TEST(CFStringEncodingTest, MacRomanRoundTripsEveryByte) {
  std::string all;
  for (int byte = 1; byte < 256; ++byte) all += static_cast<char>(byte);
  StringHolder string = Hold(FromBytes(all, kCFStringEncodingMacRoman));
  ASSERT_NE(string, nullptr);
  const std::vector<UniChar> units = UnitsOf(static_cast<CFStringRef>(string.get()));
  EXPECT_EQ(0x00C4, units[0x80 - 1]);
  EXPECT_EQ(0x20AC, units[0xDB - 1]);
  EXPECT_EQ(0xF8FF, units[0xF0 - 1]);
  EXPECT_EQ(0x02C7, units[0xFF - 1]);
  char back[256];
  ASSERT_TRUE(CFStringGetCString(static_cast<CFStringRef>(string.get()), back, sizeof back,
                                 kCFStringEncodingMacRoman));
  EXPECT_EQ(all, std::string(back));
}

TEST(CFStringEncodingTest, GetCStringRefusesWhatDoesNotConvertOrFit) {
  StringHolder accented = Hold(FromUnits({'a', 0x00E9}));
  StringHolder loneSurrogate = Hold(FromUnits({'a', 0xD800}));
  StringHolder pair = Hold(FromUnits({0xD83D, 0xDE00}));
  char buffer[8];
  EXPECT_FALSE(CFStringGetCString(static_cast<CFStringRef>(accented.get()), buffer, sizeof buffer,
                                  kCFStringEncodingASCII));
  EXPECT_FALSE(CFStringGetCString(static_cast<CFStringRef>(loneSurrogate.get()), buffer,
                                  sizeof buffer, kCFStringEncodingUTF8));
  EXPECT_FALSE(CFStringGetCString(static_cast<CFStringRef>(pair.get()), buffer, 4,
                                  kCFStringEncodingUTF8));  // four bytes and no room for the zero
  ASSERT_TRUE(
      CFStringGetCString(static_cast<CFStringRef>(pair.get()), buffer, 5, kCFStringEncodingUTF8));
  EXPECT_STREQ("\xF0\x9F\x98\x80", buffer);
  const CFIndex needed = CFStringGetMaximumSizeForEncoding(2, kCFStringEncodingUTF8);
  EXPECT_GE(needed, 4);
}

TEST(CFStringEncodingTest, PascalStringOfUnitsHoldsTwoBytesEach) {
  StringHolder ab = Hold(FromUnits({'A', 0x0142}));
  Str255 pascal;
  ASSERT_TRUE(CFStringGetPascalString(static_cast<CFStringRef>(ab.get()), pascal, 255,
                                      kCFStringEncodingUnicode));
  ASSERT_EQ(4, pascal[0]);
  UniChar units[2];
  std::memcpy(units, pascal + 1, sizeof units);
  EXPECT_EQ('A', units[0]);
  EXPECT_EQ(0x0142, units[1]);
  // 127 units fill 254 bytes, the most that fits after the length byte; 128 do not.
  StringHolder fits = Hold(FromUnits(std::vector<UniChar>(127, 'x')));
  StringHolder tooLong = Hold(FromUnits(std::vector<UniChar>(128, 'x')));
  EXPECT_TRUE(CFStringGetPascalString(static_cast<CFStringRef>(fits.get()), pascal, 255,
                                      kCFStringEncodingUnicode));
  EXPECT_FALSE(CFStringGetPascalString(static_cast<CFStringRef>(tooLong.get()), pascal, 255,
                                       kCFStringEncodingUnicode));
}

TEST(CFStringGetIntValueTest, ReadsTheLeadingNumber) {
  struct Case {
    const char* label;
    const char* text;
    SInt32 value;
  };
  const Case cases[] = {
      {"plain", "42", 42},
      {"blanks and sign", "  -17", -17},
      {"plus and trailing text", "+3px", 3},
      {"no digits", "x3", 0},
      {"empty", "", 0},
      {"too large", "99999999999", INT_MAX},
      {"too small", "-99999999999", INT_MIN},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.label);
    StringHolder string = Hold(CFStringCreateWithCString(nullptr, c.text, kCFStringEncodingASCII));
    EXPECT_EQ(c.value, CFStringGetIntValue(static_cast<CFStringRef>(string.get())));
  }
}

TEST(CFStringTest, OnlyStringsMadeFromUnitsLendTheirUnits) {
  StringHolder fromUnits = Hold(FromUnits({'a'}));
  StringHolder fromBytes = Hold(FromBytes("a", kCFStringEncodingUTF8));
  EXPECT_NE(nullptr, CFStringGetCharactersPtr(static_cast<CFStringRef>(fromUnits.get())));
  EXPECT_EQ(nullptr, CFStringGetCharactersPtr(static_cast<CFStringRef>(fromBytes.get())));
}

TEST(CFStringTest, ConstantStringsAreSharedAndSurviveRelease) {
  CFStringRef first = CFSTR("Continue");
  CFRelease(first);
  CFRelease(first);
  EXPECT_EQ(first, CFSTR("Continue"));
  EXPECT_EQ(8, CFStringGetLength(first));
}

}  // namespace
