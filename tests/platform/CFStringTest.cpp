#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "platform/CFHolder.h"
#include "platform/CoreFoundation.h"

namespace {

std::u16string UnitsOf(const CFHolder<CFStringRef>& string) {
  const CFStringRef ref = string.get();
  std::vector<UniChar> units(static_cast<std::size_t>(CFStringGetLength(ref)));
  CFStringGetCharacters(ref, CFRangeMake(0, CFStringGetLength(ref)), units.data());
  return std::u16string(units.begin(), units.end());
}

CFStringRef FromBytes(const std::string& bytes, CFStringEncoding encoding) {
  return CFStringCreateWithBytes(kCFAllocatorDefault, reinterpret_cast<const UInt8*>(bytes.data()),
                                 static_cast<CFIndex>(bytes.size()), encoding, false);
}

TEST(CFStringCreateWithBytesTest, Utf8AcceptsWellFormedText) {
  struct Case {
    const char* label;
    std::string bytes;
    std::u16string units;
  };
  const Case cases[] = {
      {"ASCII past the eight-byte stride", "abcdefghij", u"abcdefghij"},
      {"lowest three-byte", "\xE0\xA0\x80", u"\x0800"},
      {"highest three-byte", "\xEF\xBF\xBF", u"\xFFFF"},
      {"highest code point", "\xF4\x8F\xBF\xBF", u"\xDBFF\xDFFF"},
      {"multi-byte after an ASCII stride", "12345678\xC3\xA9", u"12345678\xE9"},
      {"leading mark dropped", "\xEF\xBB\xBF[x", u"[x"},
      {"later mark kept", "a\xEF\xBB\xBF", u"a\xFEFF"},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.label);
    auto string = CFHold(FromBytes(c.bytes, kCFStringEncodingUTF8));
    ASSERT_NE(string, nullptr);
    EXPECT_EQ(c.units, UnitsOf(string));
  }
}

TEST(CFStringCreateWithBytesTest, Utf8RefusesIllFormedTextAnywhere) {
  const std::pair<const char*, std::string> cases[] = {
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
  for (const auto& [label, bytes] : cases) {
    EXPECT_EQ(nullptr, FromBytes(bytes, kCFStringEncodingUTF8)) << label;
  }
}

TEST(CFStringEncodingTest, MacRomanRoundTripsEveryByte) {
  std::string all;
  for (int byte = 1; byte < 256; ++byte) all += static_cast<char>(byte);
  auto string = CFHold(FromBytes(all, kCFStringEncodingMacRoman));
  ASSERT_NE(string, nullptr);
  const std::u16string units = UnitsOf(string);
  EXPECT_EQ(0x00C4, units[0x80 - 1]);
  EXPECT_EQ(0x20AC, units[0xDB - 1]);
  EXPECT_EQ(0xF8FF, units[0xF0 - 1]);
  EXPECT_EQ(0x02C7, units[0xFF - 1]);
  char back[256];
  ASSERT_TRUE(CFStringGetCString(string.get(), back, sizeof back, kCFStringEncodingMacRoman));
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
