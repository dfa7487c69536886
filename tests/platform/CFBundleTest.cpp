#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>
#include <string>

#include "platform/CoreFoundation.h"
#include "tests/ScopedVariable.h"
#include "tests/TempFolder.h"

namespace {

// The main bundle's text for `key`, in UTF-8.
std::string Localized(const std::string& key, CFStringRef value = nullptr) {
  CFStringRef keyString = CFStringCreateWithCString(nullptr, key.c_str(), kCFStringEncodingUTF8);
  CFStringRef text =
      CFBundleCopyLocalizedString(CFBundleGetMainBundle(), keyString, value, nullptr);
  CFRelease(keyString);
  char buffer[512] = "(none)";
  if (text != nullptr) CFStringGetCString(text, buffer, sizeof buffer, kCFStringEncodingUTF8);
  CFRelease(text);
  return buffer;
}

// A compiled catalog of `texts`: little-endian, keys sorted as gettext's binary search needs, no
// hash table.
std::string Catalog(const std::map<std::string, std::string>& texts) {
  std::map<std::string, std::string> all = texts;
  all[""] = "Content-Type: text/plain; charset=UTF-8\n";
  std::string tables, strings;
  const auto word = [](std::string& to, UInt32 value) {
    for (int i = 0; i < 4; ++i) to += static_cast<char>(value >> (8 * i));
  };
  const UInt32 count = static_cast<UInt32>(all.size()), start = 28 + 16 * count;
  std::string originals, translations;
  for (const auto& [key, text] : all) {
    word(originals, static_cast<UInt32>(key.size()));
    word(originals, start + static_cast<UInt32>(strings.size()));
    strings += key + '\0';
  }
  for (const auto& [key, text] : all) {
    word(translations, static_cast<UInt32>(text.size()));
    word(translations, start + static_cast<UInt32>(strings.size()));
    strings += text + '\0';
  }
  std::string header;
  for (UInt32 value : {0x950412DEu, 0u, count, 28u, 28 + 8 * count, 0u, 0u}) word(header, value);
  return header + originals + translations + strings;
}

class CFBundleCopyLocalizedStringTest : public testing::Test {
 protected:
  void Install(const std::string& language, const std::string& catalog) {
    const std::string folder = m_temp.Path(language + "/LC_MESSAGES");
    std::filesystem::create_directories(folder);
    std::ofstream(folder + "/kestrail.mo", std::ios::binary) << catalog;
  }

  TempFolder m_temp;
  ScopedVariable m_language{"LANGUAGE", nullptr};
  ScopedVariable m_locale{"LC_ALL", "C"};
};

TEST_F(CFBundleCopyLocalizedStringTest, EnglishCatalogBesideTheExecutable) {
  ScopedVariable folder("KESTRAIL_LOCALEDIR", nullptr);
  EXPECT_EQ("Keep Existing", Localized("No"));
  EXPECT_EQ("A setting named \"%0\" is already installed. Do you want to replace it?",
            Localized("Confirm Replace Message"));
  EXPECT_EQ("Not a key", Localized("Not a key"));
  EXPECT_EQ("Fallback", Localized("Not a key", CFSTR("Fallback")));
  EXPECT_EQ("Not a key", Localized("Not a key", CFSTR("")));
}

TEST_F(CFBundleCopyLocalizedStringTest, UserLanguageFirstThenEnglishThenTheKey) {
  ScopedVariable folder("KESTRAIL_LOCALEDIR", m_temp.Path().c_str());
  EXPECT_EQ("No", Localized("No"));  // no catalog installed at all
  Install("en", Catalog({{"Yes", "Replace"}, {"No", "Keep Existing"}}));
  Install("de", Catalog({{"Yes", "Ersetzen"}}));
  ScopedVariable locale("LC_ALL", "C.UTF-8");  // gettext ignores LANGUAGE in plain C
  ScopedVariable language("LANGUAGE", "de");
  EXPECT_EQ("Ersetzen", Localized("Yes"));
  EXPECT_EQ("Keep Existing", Localized("No"));
  EXPECT_EQ("Other", Localized("Other"));
}

TEST_F(CFBundleCopyLocalizedStringTest, DamagedCatalogHoldsNothing) {
  std::ifstream in(ENGLISH_CATALOG, std::ios::binary);
  const std::string whole{std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
  ASSERT_GT(whole.size(), 28u);
  ScopedVariable folder("KESTRAIL_LOCALEDIR", m_temp.Path().c_str());
  const std::string key = "Error Source and Destination Same";
  const std::string english = "This setting is already in its settings folder.";
  for (std::size_t n = 0; n <= whole.size(); ++n) {
    Install("en", whole.substr(0, n));  // every prefix, the whole catalog last
    const std::string text = Localized(key);
    EXPECT_TRUE(text == english || (n < whole.size() && text == key)) << n << " bytes: " << text;
  }
}

}  // namespace
