#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "ovlib/general_framework/OVUtil.h"
#include "tests/SettingsHome.h"

namespace {

using Bytes = std::vector<unsigned char>;
using namespace std::string_literals;

TEST(ConvertFileBufferToWStringTest, ByteOrderMarksAndUtf8) {
  struct Case {
    const char* label;
    std::string bytes;
    TString text;
    int status;
  };
  const Case cases[] = {
      {"little-endian mark", "\xFF\xFE\x41\0\x42\0"s, L"AB", 0},
      {"odd last byte dropped", "\xFF\xFE\x41\0\x42"s, L"A", 0},
      {"unpaired surrogate kept", "\xFE\xFF\xD8\0\0A"s, TString{0xD800, L'A'}, 0},
      {"under four bytes", "abc", L"", -1},
      // Which bytes are ill-formed is for the shared decoder to say, and for its own tests.
      {"ill-formed UTF-8", "ABC\xC3", L"", 0},
      {"UTF-8 mark dropped", "\xEF\xBB\xBF"s + "ab", L"ab", 0},
      {"beyond U+FFFF as a surrogate pair", "\xC3\xA9\xF0\x9F\x98\x80"s + "abcdefghi",
       TString{0xE9, 0xD83D, 0xDE00} + L"abcdefghi", 0},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.label);
    TString text = L"stale";
    EXPECT_EQ(c.status, ConvertFileBufferToWString(Bytes(c.bytes.begin(), c.bytes.end()), text));
    EXPECT_EQ(c.text, text);
  }
}

class ConvertWStringToFileBufferTest : public SettingsHomeTest {};

// Host order with a mark, low sixteen bits of each character; empty text is a caller's bug but
// still gives the mark.
TEST_F(ConvertWStringToFileBufferTest, HostOrderWithMarkAndLowSixteenBits) {
  ASSERT_TRUE(Little_Endian());
  Bytes bytes;
  EXPECT_EQ(0, ConvertWStringToFileBuffer(TString{L'A', L'B', 0x1F600}, bytes));
  EXPECT_EQ((Bytes{0xFF, 0xFE, 0x41, 0x00, 0x42, 0x00, 0x00, 0xF6}), bytes);
  EXPECT_TRUE(m_alerts.m_vecAlerts.empty());
  EXPECT_EQ(0, ConvertWStringToFileBuffer(L"", bytes));
  EXPECT_EQ((Bytes{0xFF, 0xFE}), bytes);
  EXPECT_TRUE(Reported("ConvertWStringToFileBuffer"));
}

TEST(TStringParamReplaceTest, FillsFirstOccurrenceOfEachMarkerInTurn) {
  const TString replace = L"Replace %0?", two = L"%1 after %0", chained = L"%0",
                ten = L"%0%1%2%3%4%5%6%7%8%9%0";
  EXPECT_EQ(L"b after a", TStringParamReplace(&two, L"a", L"b"));
  EXPECT_EQ(L"[z]", TStringParamReplace(&chained, L"[%1]", L"z"));  // filled text is searched
  // A marker with no text left stays, however it came in.
  EXPECT_EQ(L"Replace a%1%2?", TStringParamReplace(&replace, L"a%1%2"));
  EXPECT_EQ(L"%0", TStringParamReplace(&chained));
  EXPECT_EQ(L"abcdefghij%0", TStringParamReplace(&ten, L"a", L"b", L"c", L"d", L"e", L"f", L"g",
                                                 L"h", L"i", L"j", L"k"));
}

// A name is isolated whole, and nothing in it can end the isolation early or break the message.
TEST(ShownNameTest, EscapesControlAndFormatCharactersAndIsolatesTheName) {
  struct Case {
    const char* label;
    TString name;
    TString shown;  // between the isolation marks
  };
  const Case cases[] = {
      {"a mark that would end the isolation", L"a\u2069b\u2068", L"a\\u2069b\\u2068"},
      {"a tag as a surrogate pair", TString{L'a', 0xDB40, 0xDC01}, L"a\\U000e0001"},
      // A character above U+FFFF reaches the window as its low 16 bits, here a line feed.
      {"a line feed in the low bits", TString{L'a', 0x1000A}, L"a\\x0a"},
      {"letters, marks and emoji kept", TString{0x5E9, L'e', 0x301, 0xD83D, 0xDE00},
       TString{0x5E9, L'e', 0x301, 0xD83D, 0xDE00}},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.label);
    EXPECT_EQ(L"\u2068" + c.shown + L"\u2069", ShownName(c.name));
  }
}

// What a conversion cannot carry gives an empty text rather than a wrong one.
TEST(ConvertToTextTest, RefusesWhatItCannotCarry) {
  EXPECT_EQ(L"abc", ConvertToTString(std::string("abc")));
  EXPECT_EQ(L"", ConvertToTString(std::string("caf\xC3\xA9")));  // ASCII only
  EXPECT_EQ("caf\xC3\xA9", ConvertToCharString(L"caf\u00E9"));
  EXPECT_EQ("", ConvertToCharString(TString{0xD800}));  // a lone surrogate has no UTF-8 form
}

}  // namespace
