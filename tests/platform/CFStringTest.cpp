#include <gtest/gtest.h>

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

TEST(CFStringCreateWithBytesTest, Utf8AcceptsWellFormedText) {
  struct Case {
    const char* label;
    std::string bytes;
    std::vector<UniChar> units;
  };
  const Case cases[] = {
      {"ASCII past the eight-byte stride",
       "abcdefghij",
       {'a', 'b', 'c', 'd', 'e', 'f', 'g', 'h', 'i', 'j'}},
      {"lowest three-byte", "\xE0\xA0\x80", {0x0800}},
      {"highest three-byte", "\xEF\xBF\xBF", {0xFFFF}},
      {"highest code point", "\xF4\x8F\xBF\xBF", {0xDBFF, 0xDFFF}},
      {"multi-byte after an ASCII stride",
       "12345678\xC3\xA9",
       {'1', '2', '3', '4', '5', '6', '7', '8', 0xE9}},
      {"leading mark dropped", "\xEF\xBB\xBF[x", {'[', 'x'}},
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
      {"overlong three-byte", "\xE0\x80\xAF"},
      {"overlong four-byte", "\xF0\x80\x80\xAF"},
      {"encoded high surrogate", "\xED\xA0\x80"},
      {"above U+10FFFF", "\xF4\x90\x80\x80"},
      {"F5 lead", "\xF5\x80\x80\x80"},
      {"two-byte cut at the end", "ABC\xC3"},
      {"three-byte cut at the end", "\xE2\x82"},
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

TEST(CFStringTest, ConstantStringsAreSharedAndSurviveRelease) {
  CFStringRef first = CFSTR("Continue");
  CFRelease(first);
  CFRelease(first);
  EXPECT_EQ(first, CFSTR("Continue"));
  EXPECT_EQ(8, CFStringGetLength(first));
}

}  // namespace
