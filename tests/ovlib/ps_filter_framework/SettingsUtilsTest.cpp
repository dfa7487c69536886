#include <gtest/gtest.h>

#include "ovlib/ps_filter_framework/SettingsUtils.h"
#include "tests/FaultyDisk.h"
#include "tests/ovlib/ps_filter_framework/SettingsHome.h"

namespace {

using namespace std::string_literals;

const char* const kAppSupport = "home/data/Orvelle/";

// The bytes of `text` as UTF-16 with a byte-order mark, in either order.
std::string Utf16(const std::u16string& text, bool bigEndian) {
  std::string bytes = bigEndian ? "\xFE\xFF" : "\xFF\xFE";
  for (char16_t unit : text) {
    const char high = static_cast<char>(unit >> 8), low = static_cast<char>(unit & 0xFF);
    bytes += bigEndian ? std::string{high, low} : std::string{low, high};
  }
  return bytes;
}

class SettingsUtilsTest : public SettingsHomeTest {
 protected:
  // Examines `contents`; the flags start out true, so that a false one was written.
  struct Examination {
    int status;
    bool isOldStyle = true, needsGlimmerboxFolder = true;
    TString setName, filterName, settingName;
    std::string folder;
  };
  Examination Examine(const std::string& contents) {
    Examination result;
    OVFileSystemReference destination;
    result.status = SettingsUtils::LocateFolderForSetting(
        Input("setting", contents), destination, result.settingName, result.setName,
        result.filterName, result.isOldStyle, result.needsGlimmerboxFolder);
    result.folder = Relative(destination);
    return result;
  }
  void WritePreferences(const std::string& domain, const std::string& value) {
    m_temp.Write("home/config/" + domain + ".plist",
                 "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
                 "<!DOCTYPE plist PUBLIC \"-//Orvelle//DTD PLIST 1.0//EN\" \"plist.dtd\">\n"
                 "<plist version=\"1.0\"><dict><key>User Folder</key>" +
                     value + "</dict></plist>\n");
  }
};

TEST_F(SettingsUtilsTest, ExaminesTheThreeForms) {
  struct Case {
    const char* label;
    std::string contents;
    bool isOldStyle, needsGlimmerboxFolder;
    const wchar_t* filterName;
    std::string folder;  // below the Application Support folder's "Orvelle"; "" for none
  };
  const Case cases[] = {
      {"xml setting", "<setting set=\"Daubery\" filter=\"F\" name=\"N\"/>", false, false, L"F",
       "Daubery/F"},
      {"old-style package",
       "<oldstyle_setting filter=\"F\" name=\"N\" set=\"Mendora\"><![CDATA[x]]></oldstyle_setting>",
       true, false, L"F", "Mendora/F"},
      {"legacy set", "<setting set=\"Glimmerbox\" filter=\"F\"/>", false, true, L"F", ""},
      {"text keys must match exactly", "[{\"set\":\"Mendora\", \"Filter\": \"F\"}]", false, false,
       L"filter", "set/filter"},
      {"empty text value runs on", "[{\"set\": \"\", \"filter\": \"F\"}]", false, false, L"F",
       "\", /F"},
      {"text keys in any order, unclosed value", "[{\"filter\": \"F\", \"set\": \"Mendora", false,
       false, L"F", "Mendora/F"},
      {"text form of the legacy set, after a utf-8 mark",
       "\xEF\xBB\xBF[\"set\": \"Glimmerbox\", \"filter\": \"F\"]", false, false, L"F",
       "Glimmerbox/F"},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.label);
    Examination result = Examine(c.contents);
    EXPECT_EQ(0, result.status);
    EXPECT_EQ(c.isOldStyle, result.isOldStyle);
    EXPECT_EQ(c.needsGlimmerboxFolder, result.needsGlimmerboxFolder);
    EXPECT_EQ(c.filterName, result.filterName);
    EXPECT_EQ(c.folder.empty() ? "" : kAppSupport + c.folder, result.folder);
  }
}

TEST_F(SettingsUtilsTest, UserSettingsFolder) {
  std::filesystem::create_directory(m_temp.Path("presets"));
  struct Case {
    const char* label;
    std::string value;  // of the "User Folder" preference; "" writes no preferences file
    bool followed;      // else the folder is below Application Support
  };
  const Case cases[] = {
      {"a folder path", "<string>" + m_temp.Path("presets") + "</string>", true},
      {"not a string", "<array><string>/</string></array>", false},
      {"a path that does not exist", "<string>" + m_temp.Path("missing") + "</string>", false},
      {"malformed", "<string>unclosed", false},
      {"no preferences file", "", false},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.label);
    std::filesystem::remove(m_temp.Path("home/config/com.orvelle.daubery.plist"));
    if (!c.value.empty()) WritePreferences("com.orvelle.daubery", c.value);
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

  // A file where a folder belongs is not walked into.
  m_temp.Write("home/data/Orvelle/Mendora", "not a folder");
  EXPECT_EQ(-1, SettingsUtils::GetUserSettingsFolderForFilter(L"Mendora", L"F", folder));
}

TEST_F(SettingsUtilsTest, RefusedFilesAndNamesThatWouldLeaveTheirFolder) {
  const std::string refused[] = {
      "<setting filter=\"F\" name=\"N\"/>",       // no set: the empty name
      "<Setting set=\"Daubery\" filter=\"F\"/>",  // the root's name is matched exactly
      " [{\"set\": \"Mendora\"}]",                // the text form starts at the first byte
      "<setting set=\"Daub\xFF\"/>",              // not UTF-8
      "[ab",                                      // under four bytes
      "<setting set=\"../../escape\" filter=\"F\"/>",
      "<setting set=\"Daubery\" filter=\"..\"/>",
      "[\"set\": \"Mendora\", \"filter\": \"a\0escape\"]"s,  // only the text form carries a NUL
  };
  for (const std::string& contents : refused) {
    SCOPED_TRACE(contents);
    EXPECT_EQ(-1, Examine(contents).status);
  }
  OVFileSystemReference unpacked, folder = Ref("home/data");
  OVFileSystemReference package =
      Input("p.f1s", "<oldstyle_setting name=\"../escape\"><![CDATA[x]]></oldstyle_setting>");
  EXPECT_EQ(-1, SettingsUtils::UnpackageOldSettingsFile(package, folder, unpacked));

  for (const auto& entry : std::filesystem::recursive_directory_iterator(m_temp.Path()))
    EXPECT_EQ(std::string::npos, entry.path().string().find("escape", m_temp.Path().size()))
        << entry.path();
}

TEST_F(SettingsUtilsTest, PackageRoundTrip) {
  const std::string old = "BristleDrag\rradius=3\r\rcolour=\xE9\xFF \"q\" <&>\r";
  OVFileSystemReference oldFile = Input("old setting", old), package;
  std::filesystem::create_directory(m_temp.Path("out"));
  ASSERT_EQ(0, SettingsUtils::PackageOldSettingsFile(oldFile, Ref("out"), package));
  EXPECT_EQ(
      Utf16(u"<?xml version=\"1.0\" encoding=\"UTF-16\"?>\n"
            u"<oldstyle_setting filter=\"BristleDrag\" name=\"old setting\" set=\"Daubery\">\n"
            u"  <![CDATA[BristleDrag\rradius=3\r\rcolour=\u00E9\u00FF \"q\" <&>\r]]>\n"
            u"</oldstyle_setting>",
            false),
      m_temp.Contents("out/old setting.f1s"));

  // The application examines the package and unpacks it under the setting's own name.
  Examination result = Examine(m_temp.Contents("out/old setting.f1s"));
  EXPECT_EQ(L"old setting", result.settingName);
  ASSERT_EQ("home/data/Orvelle/Daubery/BristleDrag", result.folder);
  OVFileSystemReference destination = Ref(result.folder), unpacked;
  ASSERT_EQ(0, SettingsUtils::UnpackageOldSettingsFile(package, destination, unpacked));
  EXPECT_EQ("home/data/Orvelle/Daubery/BristleDrag/old setting", Relative(unpacked));
  EXPECT_EQ(old, m_temp.Contents(result.folder + "/old setting"));
}

// A package carries an old file up to its first zero byte; before that, what character data
// cannot hold is refused.
TEST_F(SettingsUtilsTest, PackagesUpToTheFirstZeroByte) {
  struct Case {
    std::string old;
    int status;
    std::string unpacked;
  };
  const Case cases[] = {
      {"BristleDrag\rends with a zero\r\0"s, 0, "BristleDrag\rends with a zero\r"},
      {"BristleDrag\rzero\0\x01]]> after it"s, 0, "BristleDrag\rzero"},
      {"BristleDrag\rcontrol\x01", -1, ""},
      {"BristleDrag\rends]]>early\0", -1, ""},
  };
  OVFileSystemReference folder = Ref("in");
  for (const Case& c : cases) {
    SCOPED_TRACE(c.old);
    std::filesystem::remove(m_temp.Path("in/old.f1s"));
    OVFileSystemReference package, unpacked;
    EXPECT_EQ(c.status,
              SettingsUtils::PackageOldSettingsFile(Input("old", c.old), folder, package));
    EXPECT_EQ(c.status == 0, std::filesystem::exists(m_temp.Path("in/old.f1s")));
    if (c.status != 0) continue;
    ASSERT_EQ(0, SettingsUtils::UnpackageOldSettingsFile(package, folder, unpacked));
    EXPECT_EQ(c.unpacked, m_temp.Contents("in/old"));
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
    m_temp.Write("in/setting", head);
    std::filesystem::resize_file(m_temp.Path("in/setting"), 64 << 20);
    FaultyDisk disk;
    ScopedDiskBackend counted(disk);
    OVFileSystemReference destination;
    TString settingName, setName, filterName;
    bool isOldStyle, needsGlimmerboxFolder;
    EXPECT_EQ(-1, SettingsUtils::LocateFolderForSetting(Ref("in/setting"), destination, settingName,
                                                        setName, filterName, isOldStyle,
                                                        needsGlimmerboxFolder));
    EXPECT_GE(4096u, disk.m_nBytesRead);
  }
  // White space before the root of an XML setting is still white space.
  EXPECT_EQ(0, Examine(" \r\n<setting set=\"Daubery\" filter=\"F\"/>").status);
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
      {"big-endian utf-16",
       Utf16(u"<oldstyle_setting name=\"n\"><![CDATA[abc]]></oldstyle_setting>", true), 0, "abc"},
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
