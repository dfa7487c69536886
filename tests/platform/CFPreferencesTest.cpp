#include <gtest/gtest.h>

#include <filesystem>
#include <string>

#include "platform/CoreFoundation.h"
#include "tests/ScopedVariable.h"
#include "tests/TempFolder.h"

namespace {

class CFPreferencesTest : public testing::Test {
 protected:
  // The value of "User Folder" in the preferences file holding `contents`, as "type:text"
  // ("string:..." or "other") or "none".
  std::string Read(const std::string& contents, const char* id = "com.orvelle.daubery") {
    m_temp.Write(std::string(id) + ".plist", contents);
    CFStringRef domain = CFStringCreateWithCString(nullptr, id, kCFStringEncodingUTF8);
    CFPropertyListRef value = CFPreferencesCopyAppValue(CFSTR("User Folder"), domain);
    CFRelease(domain);
    if (value == nullptr) return "none";
    std::string result = "other";
    if (CFGetTypeID(value) == CFStringGetTypeID()) {
      char text[256];
      EXPECT_TRUE(CFStringGetCString(static_cast<CFStringRef>(value), text, sizeof text,
                                     kCFStringEncodingUTF8));
      result = std::string("string:") + text;
    }
    CFRelease(value);
    return result;
  }

  TempFolder m_temp;
  ScopedVariable m_config{"XDG_CONFIG_HOME", m_temp.Path().c_str()};
};

std::string Plist(const std::string& dict) {
  return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
         "<!DOCTYPE plist PUBLIC \"-//Orvelle//DTD PLIST 1.0//EN\" \"plist.dtd\">\n"
         "<plist version=\"1.0\"><dict>" +
         dict + "</dict></plist>\n";
}

TEST_F(CFPreferencesTest, ValuesKeepTheirTypes) {
  struct Case {
    const char* label;
    std::string contents;
    std::string value;
  };
  const Case cases[] = {
      {"string", Plist("<key>User Folder</key><string>/a  b/&amp;c</string>"), "string:/a  b/&c"},
      {"later key wins",
       Plist("<key>User Folder</key><string>/1</string><key>User Folder</key><string>/2</string>"),
       "string:/2"},
      {"integer", Plist("<key>User Folder</key><integer>3</integer>"), "other"},
      {"array", Plist("<key>User Folder</key><array><string>/p</string></array>"), "other"},
      {"key without a value", Plist("<key>User Folder</key>"), "none"},
      {"malformed", Plist("<key>User Folder</key><string>/p"), "none"},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.label);
    EXPECT_EQ(c.value, Read(c.contents));
  }
}

TEST_F(CFPreferencesTest, ApplicationIDNamesOneFileInTheFolder) {
  m_temp.Write("escape.plist", Plist("<key>User Folder</key><string>/p</string>"));
  std::filesystem::create_directory(m_temp.Path("config"));
  ScopedVariable config("XDG_CONFIG_HOME", m_temp.Path("config").c_str());
  for (const char* id : {"../escape", "..", ""}) {
    SCOPED_TRACE(id);
    CFStringRef domain = CFStringCreateWithCString(nullptr, id, kCFStringEncodingUTF8);
    EXPECT_EQ(nullptr, CFPreferencesCopyAppValue(CFSTR("User Folder"), domain));
    CFRelease(domain);
  }
}

}  // namespace
