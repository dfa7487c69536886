#include <gtest/gtest.h>

#include <cstring>

#include "ovlib/general_framework/OVUtil.h"
#include "ovlib/ps_filter_framework/SettingsUtils.h"
#include "tests/FaultyDisk.h"
#include "tests/SettingsHome.h"

namespace {

namespace fs = std::filesystem;
using namespace std::string_literals;

const char* const kAppSupport = "home/data/Orvelle/";

// The bytes of `text` as little-endian UTF-16 after its byte-order mark.
std::string Utf16(const std::u16string& text) {
  std::string bytes = "\xFF\xFE";
  for (char16_t unit : text)
    bytes += {static_cast<char>(unit & 0xFF), static_cast<char>(unit >> 8)};
  return bytes;
}

class SettingsUtilsTest : public SettingsHomeTest {
 protected:
  // What examining `contents` (padded with zeros to `size`) finds: "refused", or the filter and
  // the folder below Application Support's "Orvelle", after the setting's name for an old-style
  // package. The flags start out true, so that one left unwritten shows.
  std::string Examine(const std::string& contents, std::uintmax_t size = 0) {
    OVFileSystemReference source = Input("setting", contents), destination;
    if (size > 0) fs::resize_file(m_temp.Path("in/setting"), size);
    TString settingName, setName, filterName;
    bool isOldStyle = true, needsGlimmerboxFolder = true;
    if (SettingsUtils::LocateFolderForSetting(source, destination, settingName, setName, filterName,
                                              isOldStyle, needsGlimmerboxFolder) != 0)
      return "refused";
    std::string folder = Relative(destination);
    if (folder.rfind(kAppSupport, 0) == 0) folder.erase(0, std::strlen(kAppSupport));
    if (needsGlimmerboxFolder) folder = "the chosen Glimmerbox folder" + folder;
    const std::string old = "old-style \"" + ConvertToCharString(settingName) + "\" of ";
    return (isOldStyle ? old : "") + ConvertToCharString(filterName) + " in " + folder;
  }
  void WritePreferences(const std::string& domain, const std::string& value) {
    m_temp.Write("home/config/" + domain + ".plist",
                 "<plist><dict><key>User Folder</key>" + value + "</dict></plist>");
  }
};

// The three forms, and the files refused, names that would leave their folder included.
TEST_F(SettingsUtilsTest, Examination) {
  struct Case {
    const char* label;
    std::string contents, found;
  };
  const Case cases[] = {
      {"xml setting", "<setting set=\"Daubery\" filter=\"F\" name=\"N\"/>", "F in Daubery/F"},
      {"white space before the root", " \r\n<setting set=\"Daubery\" filter=\"F\"/>",
       "F in Daubery/F"},
      {"old-style package",
       "<oldstyle_setting filter=\"F\" name=\"N\" set=\"Mendora\"><![CDATA[x]]></oldstyle_setting>",
       "old-style \"N\" of F in Mendora/F"},
      {"legacy set", "<setting set=\"Glimmerbox\" filter=\"F\"/>",
       "F in the chosen Glimmerbox folder"},
      {"text keys must match exactly", "[{\"set\":\"Mendora\", \"Filter\": \"F\"}]",
       "filter in set/filter"},
      {"empty text value runs on", "[{\"set\": \"\", \"filter\": \"F\"}]", "F in \", /F"},
      {"text keys in any order, unclosed value", "[{\"filter\": \"F\", \"set\": \"Mendora",
       "F in Mendora/F"},
      {"text form of the legacy set, after a utf-8 mark",
       "\xEF\xBB\xBF[\"set\": \"Glimmerbox\", \"filter\": \"F\"]", "F in Glimmerbox/F"},
      {"no set: the empty name", "<setting filter=\"F\" name=\"N\"/>", "refused"},
      {"the root's name is matched exactly", "<Setting set=\"Daubery\" filter=\"F\"/>", "refused"},
      {"a set that leaves its folder", "<setting set=\"../../escape\" filter=\"F\"/>", "refused"},
      {"a NUL, which only the text form carries",
       "[\"set\": \"Mendora\", \"filter\": \"a\0escape\"]"s, "refused"},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.label);
    EXPECT_EQ(c.found, Examine(c.contents));
  }
  for (const auto& entry : fs::recursive_directory_iterator(m_temp.Path()))
    EXPECT_EQ(std::string::npos, entry.path().string().find("escape", m_temp.Path().size()))
        << entry.path();
}

TEST_F(SettingsUtilsTest, UserSettingsFolder) {
  fs::create_directory(m_temp.Path("presets"));
  struct Case {
    const char* label;
    std::string value;  // of the "User Folder" preference
    bool followed;      // else the folder is below Application Support
  };
  const Case cases[] = {
      {"a folder path", "<string>" + m_temp.Path("presets") + "</string>", true},
      {"not a string", "<array><string>/</string></array>", false},
      {"a path that does not exist", "<string>" + m_temp.Path("missing") + "</string>", false},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.label);
    WritePreferences("com.orvelle.daubery", c.value);
    OVFileSystemReference folder;
    EXPECT_EQ(0, SettingsUtils::GetUserSettingsFolderForFilter(L"Daubery", L"F", folder));
    EXPECT_EQ(c.followed ? "presets/Orvelle/Daubery/F" : kAppSupport + "Daubery/F"s,
              Relative(folder));
  }

  // The domain uses the reduced set name; the folder keeps the name as it is.
  WritePreferences("com.orvelle.bigset3", "<string>" + m_temp.Path("presets") + "</string>");
  OVFileSystemReference folder;
  EXPECT_EQ(0, SettingsUtils::GetUserSettingsFolderForFilter(L"Big Set 3", L"F", folder));
  EXPECT_EQ("presets/Orvelle/Big Set 3/F", Relative(folder));
}

// A package carries an old file up to its first zero byte, as character data in UTF-16; before
// that byte, what character data cannot hold is refused. The application's examination sends the
// package to its filter's folder, where it unpacks under the old file's name.
TEST_F(SettingsUtilsTest, PackageRoundTrip) {
  const std::string characters = "BristleDrag\rradius=3\r\rcolour=\xE9\xFF \"q\" <&>\r";
  struct Case {
    std::string old;
    int status;
    std::string carried;
  };
  const Case cases[] = {
      {characters, 0, characters},
      {"BristleDrag\rends with a zero\r\0"s, 0, "BristleDrag\rends with a zero\r"},
      {"BristleDrag\rzero\0\x01]]> after it"s, 0, "BristleDrag\rzero"},
      {"BristleDrag\rcontrol\x01", -1, ""},
      {"BristleDrag\rends]]>early\0", -1, ""},
  };
  const std::string folder = kAppSupport + "Daubery/BristleDrag"s;
  fs::create_directory(m_temp.Path("out"));
  for (const Case& c : cases) {
    SCOPED_TRACE(c.old);
    fs::remove(m_temp.Path("out/old setting.f1s"));
    OVFileSystemReference package, unpacked;
    EXPECT_EQ(c.status, SettingsUtils::PackageOldSettingsFile(Input("old setting", c.old),
                                                              Ref("out"), package));
    EXPECT_EQ(c.status == 0, fs::exists(m_temp.Path("out/old setting.f1s")));
    if (c.status != 0) continue;
    std::u16string carried;
    for (unsigned char byte : c.carried) carried += byte;
    EXPECT_EQ(Utf16(u"<?xml version=\"1.0\" encoding=\"UTF-16\"?>\n<oldstyle_setting "
                    u"filter=\"BristleDrag\" name=\"old setting\" set=\"Daubery\">\n  <![CDATA[" +
                    carried + u"]]>\n</oldstyle_setting>"),
              m_temp.Contents("out/old setting.f1s"));
    ASSERT_EQ("old-style \"old setting\" of BristleDrag in Daubery/BristleDrag",
              Examine(m_temp.Contents("out/old setting.f1s")));
    OVFileSystemReference destination = Ref(folder);
    ASSERT_EQ(0, SettingsUtils::UnpackageOldSettingsFile(package, destination, unpacked));
    EXPECT_EQ(folder + "/old setting", Relative(unpacked));
    EXPECT_EQ(c.carried, m_temp.Contents(folder + "/old setting"));
  }
}

// A file that cannot be a setting by its first character is answered without reading it whole;
// one that can is read as before.
TEST_F(SettingsUtilsTest, WhatCannotBeASettingIsNotReadWhole) {
  const std::pair<const char*, std::string> cases[] = {
      // Each is followed by enough zeros to fill 64 MB.
      {"zeros", ""},
      {"white space, then not XML", "  \r\nx"},
      {"utf-16 zeros after a mark", "\xFF\xFE"},
      {"a text setting's bracket after spaces", "  ["},
  };
  for (const auto& [label, head] : cases) {
    SCOPED_TRACE(label);
    FaultyDisk disk;
    ScopedDiskBackend counted(disk);
    EXPECT_EQ("refused", Examine(head, 64 << 20));
    EXPECT_GE(4096u, disk.m_nBytesRead);
  }
}

TEST_F(SettingsUtilsTest, UnpacksWhatAReaderAccepts) {
  struct Case {
    const char* label;
    std::string package;
    int status;
    std::string written;  // the bytes of the file "n"
  };
  const Case cases[] = {
      {"utf-8 without a mark",
       "<oldstyle_setting name=\"n\"><![CDATA[abc\r\n]]></oldstyle_setting>", 0, "abc\r\n"},
      {"characters beyond a byte keep their low byte",
       "<oldstyle_setting name=\" n \"><![CDATA[\xC5\x81x]]></oldstyle_setting>", 0, "Ax"},
      {"only the first section",
       "<oldstyle_setting name=\"n\">\n<![CDATA[one]]><![CDATA[two]]></oldstyle_setting>", 0,
       "one"},
      {"no section", "<oldstyle_setting name=\"n\"/>", 0, ""},
      {"no name", "<oldstyle_setting><![CDATA[x]]></oldstyle_setting>", -1, "old"},
      {"not XML", "<oldstyle_setting name=\"n\"><![CDATA[x]]>", -1, "old"},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.label);
    m_temp.Write("in/n", "old");
    OVFileSystemReference package = Input("p.f1s", c.package), folder = Ref("in"), unpacked;
    EXPECT_EQ(c.status, SettingsUtils::UnpackageOldSettingsFile(package, folder, unpacked));
    EXPECT_EQ(c.written, m_temp.Contents("in/n"));
  }
}

TEST(SettingsNamesTest, ReducedSetNames) {
  struct Case {
    const wchar_t *name, *reduced;
  };
  const Case cases[] = {
      {L"Big Set 3", L"bigset3"}, {L"   ", L""}, {L"A\tB", L"a\tb"}, {L"\u00C4Z", L"\u00C4z"}};
  for (const Case& c : cases) EXPECT_EQ(c.reduced, ToLowerCaseAndStripSpaces(c.name)) << c.name;
}

TEST(SettingsNamesTest, SetOfAnOldFilter) {
  TString setName;
  EXPECT_EQ(0, SettingsUtils::SetNameFromFilterName(L"Opaline_Wash", setName));
  EXPECT_EQ(L"Glimmerbox", setName);
  EXPECT_EQ(-1, SettingsUtils::SetNameFromFilterName(L"opaline_wash", setName));
}

}  // namespace
