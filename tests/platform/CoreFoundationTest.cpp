#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <optional>
#include <string>

#include "platform/CFHolder.h"
#include "platform/CoreFoundation.h"
#include "platform/Files.h"
#include "tests/ScopedVariable.h"
#include "tests/TempFolder.h"

namespace {

// `string` in UTF-8; "(none)" for no string, "(bad)" when it does not convert.
std::string Utf8(CFTypeRef string) {
  char buffer[4096] = "(none)";
  if (string != nullptr && !CFStringGetCString(static_cast<CFStringRef>(string), buffer,
                                               sizeof buffer, kCFStringEncodingUTF8))
    return "(bad)";
  return buffer;
}

std::u16string UnitsOf(CFStringRef string) {
  std::u16string units(static_cast<std::size_t>(CFStringGetLength(string)), u'\0');
  CFStringGetCharacters(string, CFRangeMake(0, CFStringGetLength(string)),
                        reinterpret_cast<UniChar*>(units.data()));
  return units;
}

CFHolder<CFStringRef> FromBytes(const std::string& bytes,
                                CFStringEncoding encoding = kCFStringEncodingUTF8) {
  return CFHold(CFStringCreateWithBytes(kCFAllocatorDefault,
                                        reinterpret_cast<const UInt8*>(bytes.data()),
                                        static_cast<CFIndex>(bytes.size()), encoding, false));
}

TEST(CFStringCreateWithBytesTest, Utf8TakesWellFormedTextOnly) {
  struct Case {
    const char* label;
    std::string bytes;
    std::optional<std::u16string> units = std::nullopt;  // none: refused, wherever the fault lies
  };
  const Case cases[] = {
      {"ASCII past the eight-byte stride", "abcdefghij", u"abcdefghij"},
      {"lowest three-byte", "\xE0\xA0\x80", u"\x0800"},
      {"highest three-byte", "\xEF\xBF\xBF", u"\xFFFF"},
      {"highest code point", "\xF4\x8F\xBF\xBF", u"\xDBFF\xDFFF"},
      {"multi-byte after an ASCII stride", "12345678\xC3\xA9", u"12345678\xE9"},
      {"leading mark dropped", "\xEF\xBB\xBF[x", u"[x"},
      {"later mark kept", "a\xEF\xBB\xBF", u"a\xFEFF"},
      {"lone continuation byte", "\x80"},
      {"continuation after a long ASCII run", "abcdefghijklmnop\xBF"},
      {"overlong two-byte", "\xC0\xAF"},
      {"overlong three-byte", "\xE0\x80\xAF"},
      {"overlong four-byte", "\xF0\x80\x80\xAF"},
      {"encoded high surrogate", "\xED\xA0\x80"},
      {"above U+10FFFF", "\xF4\x90\x80\x80"},
      {"F5 lead", "\xF5\x80\x80\x80"},
      {"three-byte cut at the end", "\xE2\x82"},
      {"three-byte cut by ASCII", "\xE2\x82x"},
      {"bad byte after a mark", "\xEF\xBB\xBF\xC3"},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.label);
    auto string = FromBytes(c.bytes);
    EXPECT_EQ(c.units, string ? std::optional(UnitsOf(string.get())) : std::nullopt);
  }
}

TEST(CFStringEncodingTest, MacRomanRoundTripsEveryByte) {
  std::string all;
  for (int byte = 1; byte < 256; ++byte) all += static_cast<char>(byte);
  auto string = FromBytes(all, kCFStringEncodingMacRoman);
  ASSERT_NE(string, nullptr);
  const std::u16string units = UnitsOf(string.get());
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

TEST(CFURLTest, FileURLOfAReferenceGivesBackItsPath) {
  TempFolder temp;
  const std::string folder = temp.Path("a b%\xC3\xA9");
  std::filesystem::create_directory(folder);
  FSRef ref;
  ASSERT_EQ(noErr, FSPathMakeRef(reinterpret_cast<const UInt8*>(folder.c_str()), &ref, nullptr));
  auto url = CFHold(CFURLCreateFromFSRef(nullptr, &ref));
  ASSERT_NE(nullptr, url);
  EXPECT_EQ(folder, Utf8(CFHold(CFURLCopyFileSystemPath(url.get(), kCFURLPOSIXPathStyle)).get()));
  const FSRef nothing = {};
  EXPECT_EQ(nullptr, CFURLCreateFromFSRef(nullptr, &nothing));
}

TEST(CFPreferencesTest, ValuesKeepTheirTypesAndTheIDNamesOneFileInTheFolder) {
  TempFolder temp;
  ScopedVariable config("XDG_CONFIG_HOME", temp.Path("config").c_str());
  std::filesystem::create_directory(temp.Path("config"));
  struct Case {
    const char* label;
    std::string value, found;  // the text of a string, "other" for another value, or "(none)"
    std::string id = "com.orvelle.daubery";
  };
  const Case cases[] = {
      {"string", "<string>/a  b/&amp;c</string>", "/a  b/&c"},
      {"later key wins", "<string>/1</string><key>User Folder</key><string>/2</string>", "/2"},
      {"integer", "<integer>3</integer>", "other"},
      {"array", "<array><string>/p</string></array>", "other"},
      {"key without a value", "", "(none)"},
      {"malformed", "<string>/p", "(none)"},
      // Preferences are a few hundred bytes; a file past 1 MiB is not read at all.
      {"just under 1 MiB", "<!--" + std::string((1 << 20) - 400, 'x') + "--><string>/p</string>",
       "/p"},
      {"over 1 MiB", "<!--" + std::string(1 << 20, 'x') + "--><string>/p</string>", "(none)"},
      // Each of these has a file of its name written, which must not be read.
      {"id climbing out of the folder", "<string>/p</string>", "(none)", "../escape"},
      {"id of the folder above", "<string>/p</string>", "(none)", ".."},
      {"empty id", "<string>/p</string>", "(none)", ""},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.label);
    temp.Write("config/" + c.id + ".plist",
               "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
               "<!DOCTYPE plist PUBLIC \"-//Orvelle//DTD PLIST 1.0//EN\" \"plist.dtd\">\n"
               "<plist version=\"1.0\"><dict><key>User Folder</key>" +
                   c.value + "</dict></plist>\n");
    auto found = CFHold(CFPreferencesCopyAppValue(CFSTR("User Folder"), FromBytes(c.id).get()));
    const bool other = found != nullptr && CFGetTypeID(found.get()) != CFStringGetTypeID();
    EXPECT_EQ(c.found, other ? "other" : Utf8(found.get()));
  }
}

// The main bundle's text for `key`.
std::string Localized(const std::string& key, CFStringRef value = nullptr) {
  auto text = CFHold(
      CFBundleCopyLocalizedString(CFBundleGetMainBundle(), FromBytes(key).get(), value, nullptr));
  return Utf8(text.get());
}

class CFBundleCopyLocalizedStringTest : public testing::Test {
 protected:
  // Installs `catalog` as the catalog of `language` in the test's own folder.
  void Install(const std::string& language, const std::string& catalog) {
    std::filesystem::create_directories(m_temp.Path(language + "/LC_MESSAGES"));
    m_temp.Write(language + "/LC_MESSAGES/kestrail.mo", catalog);
  }

  TempFolder m_temp;
  ScopedVariable m_folder{"KESTRAIL_LOCALEDIR", m_temp.Path().c_str()};  // where Install puts them
  ScopedVariable m_language{"LANGUAGE", nullptr};
  ScopedVariable m_locale{"LC_ALL", "C"};
  const std::string m_english = [] {
    std::ifstream in(ENGLISH_CATALOG, std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(in), {});
  }();
};

TEST_F(CFBundleCopyLocalizedStringTest, EnglishCatalogBesideTheExecutable) {
  ScopedVariable folder("KESTRAIL_LOCALEDIR", nullptr);
  EXPECT_EQ("Keep Existing", Localized("No"));
  EXPECT_EQ("Not a key", Localized("Not a key"));
  EXPECT_EQ("Fallback", Localized("Not a key", CFSTR("Fallback")));
  EXPECT_EQ("Not a key", Localized("Not a key", CFSTR("")));
}

TEST_F(CFBundleCopyLocalizedStringTest, UserLanguageThroughGettext) {
  EXPECT_EQ("No", Localized("No"));  // no catalog installed at all
  Install("de", m_english);          // and none for English: only gettext can find this one
  ScopedVariable locale("LC_ALL", "C.UTF-8");  // gettext ignores LANGUAGE in plain C
  ScopedVariable language("LANGUAGE", "de");
  EXPECT_EQ("Keep Existing", Localized("No"));
}

TEST_F(CFBundleCopyLocalizedStringTest, DamagedCatalogHoldsNothing) {
  ASSERT_GT(m_english.size(), 28u);
  const std::string key = "Error Source and Destination Same";
  const std::string text = "This setting is already in its settings folder.";
  for (std::size_t n = 0; n <= m_english.size(); ++n) {
    Install("en", m_english.substr(0, n));  // every prefix, the whole catalog last
    const std::string found = Localized(key);
    EXPECT_TRUE(found == text || (n < m_english.size() && found == key)) << n << ": " << found;
  }
}

}  // namespace
