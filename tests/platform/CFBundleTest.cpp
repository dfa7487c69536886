#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iterator>
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

class CFBundleCopyLocalizedStringTest : public testing::Test {
 protected:
  // Installs `catalog` as the catalog of `language` in the test's own folder.
  void Install(const std::string& language, const std::string& catalog) {
    const std::string folder = m_temp.Path(language + "/LC_MESSAGES");
    std::filesystem::create_directories(folder);
    std::ofstream(folder + "/kestrail.mo", std::ios::binary) << catalog;
  }

  TempFolder m_temp;
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
  EXPECT_EQ("A setting named \"%0\" is already installed. Do you want to replace it?",
            Localized("Confirm Replace Message"));
  EXPECT_EQ("Not a key", Localized("Not a key"));
  EXPECT_EQ("Fallback", Localized("Not a key", CFSTR("Fallback")));
  EXPECT_EQ("Not a key", Localized("Not a key", CFSTR("")));
}

TEST_F(CFBundleCopyLocalizedStringTest, UserLanguageThroughGettext) {
  ScopedVariable folder("KESTRAIL_LOCALEDIR", m_temp.Path().c_str());
  EXPECT_EQ("No", Localized("No"));  // no catalog installed at all
  Install("de", m_english);          // and none for English: only gettext can find this one
  ScopedVariable locale("LC_ALL", "C.UTF-8");  // gettext ignores LANGUAGE in plain C
  ScopedVariable language("LANGUAGE", "de");
  EXPECT_EQ("Keep Existing", Localized("No"));
}

TEST_F(CFBundleCopyLocalizedStringTest, DamagedCatalogHoldsNothing) {
  ASSERT_GT(m_english.size(), 28u);
  ScopedVariable folder("KESTRAIL_LOCALEDIR", m_temp.Path().c_str());
  const std::string key = "Error Source and Destination Same";
  const std::string text = "This setting is already in its settings folder.";
  for (std::size_t n = 0; n <= m_english.size(); ++n) {
    Install("en", m_english.substr(0, n));  // every prefix, the whole catalog last
    const std::string found = Localized(key);
    EXPECT_TRUE(found == text || (n < m_english.size() && found == key)) << n << ": " << found;
  }
}

}  // namespace
