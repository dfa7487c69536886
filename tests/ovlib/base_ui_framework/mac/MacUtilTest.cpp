#include <gtest/gtest.h>
#include <stdlib.h>

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <optional>
#include <string>
#include <vector>

#include "ovlib/base_ui_framework/mac/MacUtil.h"
#include "ovlib/general_framework/OVFileSystemReferenceMac.h"
#include "tests/TempFolder.h"
#include "tests/ovlib/ScriptedAlerts.h"

namespace {

namespace fs = std::filesystem;

using Bytes = std::vector<unsigned char>;

// Sets an environment variable until the end of the scope.
class ScopedVariable {
 public:
  ScopedVariable(const char* name, const std::string& value) : m_name(name) {
    if (const char* old = getenv(name)) m_old = old;
    setenv(name, value.c_str(), 1);
  }
  ~ScopedVariable() { m_old ? setenv(m_name, m_old->c_str(), 1) : unsetenv(m_name); }

 private:
  const char* m_name;
  std::optional<std::string> m_old;
};

std::string Read(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  return std::string(std::istreambuf_iterator<char>(in), {});
}

class OVAssertFailedTest : public ScriptedAlertsTest {
 protected:
  std::vector<std::string> Labels(std::size_t alert) const {
    std::vector<std::string> labels;
    for (const AlertDescription::Button& button : m_alerts.m_vecAlerts.at(alert).m_vecButtons)
      labels.push_back(button.m_strLabel);
    return labels;
  }
};

TEST_F(OVAssertFailedTest, ReportNamesTheCheckAndAsksForAReport) {
  OV_AssertFailed("mac/Kestrail", 42, "DisplayAlert");
  ASSERT_EQ(1u, m_alerts.m_vecAlerts.size());
  const AlertDescription& alert = m_alerts.m_vecAlerts[0];
  EXPECT_EQ(kAlertStopAlert, alert.m_nKind);
  EXPECT_EQ(
      "A bug has been detected in this filter.  Please report the information below to Orvelle "
      "at 1-800-555-0142 or support@example.com.  Thanks!",
      alert.m_strMessage);
  EXPECT_EQ("Failure at line 42 in file mac/Kestrail (function 'DisplayAlert')",
            alert.m_strExplanation);
  EXPECT_EQ((std::vector<std::string>{"Continue", "Debug", "More Options"}), Labels(0));
  EXPECT_EQ(kAlertStdAlertOKButton, alert.m_nDefaultItem);
}

TEST_F(OVAssertFailedTest, ButtonsLeadOnOrToTheSecondAlert) {
  struct Case {
    const char* label;
    std::vector<DialogItemIndex> answers;
    std::size_t alerts;
  };
  const Case cases[] = {
      {"Continue", {kAlertStdAlertOKButton}, 1},
      {"Debug, with no debugger attached", {kAlertStdAlertCancelButton}, 1},
      {"More Options, then Continue", {kAlertStdAlertOtherButton, kAlertStdAlertOKButton}, 2},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.label);
    m_alerts.m_vecAlerts.clear();
    m_alerts.m_queAnswers.assign(c.answers.begin(), c.answers.end());
    OV_AssertFailed("f", 1, "g");
    EXPECT_EQ(c.alerts, m_alerts.m_vecAlerts.size());
  }
  EXPECT_EQ((std::vector<std::string>{"Continue", "Ignore", "Kill"}), Labels(1));
}

// Ignore and Kill change the whole process, so they run in a child process of their own.
TEST_F(OVAssertFailedTest, IgnoreSilencesLaterReports) {
  const auto ignoreThenFailAgain = [this] {
    m_alerts.m_queAnswers = {kAlertStdAlertOtherButton, kAlertStdAlertCancelButton};
    OV_AssertFailed("f", 1, "first");
    OV_AssertFailed("f", 2, "second");
    std::exit(m_alerts.m_vecAlerts.size() == 2 ? 0 : 1);
  };
  EXPECT_EXIT(ignoreThenFailAgain(), testing::ExitedWithCode(0), "");
}

TEST_F(OVAssertFailedTest, KillEndsTheProcessDuringTheReport) {
  const auto kill = [this] {
    m_alerts.m_queAnswers = {kAlertStdAlertOtherButton, kAlertStdAlertOtherButton};
    OV_AssertFailed("f", 1, "g");
    std::exit(0);
  };
  EXPECT_EXIT(kill(), testing::ExitedWithCode(1), "");
}

class WholeFileTest : public ScriptedAlertsTest {
 protected:
  void SetUp() override {
    ASSERT_FALSE(m_temp.Path().empty());
    ASSERT_EQ(noErr, FSPathMakeRef(m_temp.PosixPath(), m_folder, nullptr));
  }

  TempFolder m_temp;
  OVFileSystemReference m_folder;
};

TEST_F(WholeFileTest, ReadThenWriteElsewhereIsByteIdentical) {
  std::string contents;
  for (int i = 0; i < 70000; ++i) contents += static_cast<char>(i % 253);
  std::ofstream(m_temp.Path("original"), std::ios::binary) << contents;
  OVFileSystemReference original, copy;
  ASSERT_EQ(0, m_folder.MakeSubobjectReference(L"original", original));
  Bytes buffer;
  ASSERT_EQ(0, ReadDiskFileIntoBuffer(original, buffer));
  EXPECT_EQ(contents.size(), buffer.size());
  ASSERT_EQ(0, WriteBufferToDiskFile(m_folder, L"copy", buffer, false, copy));
  EXPECT_EQ(contents, Read(m_temp.Path("copy")));
  TString name;
  ASSERT_EQ(0, copy.GetName(name));
  EXPECT_EQ(L"copy", name);
  FinderInfo info;
  ASSERT_EQ(noErr, FSGetFinderInfo(copy, &info, nullptr, nullptr));
  if (info.file.fileType != 0) {  // zero where the file system keeps no Finder information
    EXPECT_EQ(MakeFourCharCode("TEXT"), info.file.fileType);
  }
}

TEST_F(WholeFileTest, WriteOntoAnExistingName) {
  std::ofstream(m_temp.Path("setting")) << "old";
  const Bytes bytes = {'n', 'e', 'w'};
  OVFileSystemReference file;
  EXPECT_EQ(-1, WriteBufferToDiskFile(m_folder, L"setting", bytes, false, file));
  EXPECT_EQ("old", Read(m_temp.Path("setting")));
  EXPECT_EQ(0, WriteBufferToDiskFile(m_folder, L"setting", bytes, true, file));
  EXPECT_EQ("new", Read(m_temp.Path("setting")));
  EXPECT_EQ(-1, WriteBufferToDiskFile(m_folder, L"../setting", bytes, true, file));
  EXPECT_EQ(-1, WriteBufferToDiskFile(m_folder, L"", bytes, true, file));
  EXPECT_EQ(1, std::distance(fs::directory_iterator(m_temp.Path()), fs::directory_iterator()));
}

TEST_F(WholeFileTest, ReadingNothingIsReportedAndFails) {
  OVFileSystemReference nothing;
  Bytes buffer;
  EXPECT_EQ(-1, ReadDiskFileIntoBuffer(nothing, buffer));
  EXPECT_TRUE(Reported("ReadDiskFileIntoBuffer"));
}

TEST_F(WholeFileTest, FopenByNameCreatesAMissingFile) {
  HFSUniStr255 name = {3, {'l', 'o', 'g'}};
  FILE* created = FSRefParentAndFilename_fopen(m_folder, &name, "w");
  ASSERT_NE(nullptr, created);
  std::fputs("line", created);
  EXPECT_EQ(0, std::fclose(created));
  FILE* existing = FSRefParentAndFilename_fopen(m_folder, &name, "r");
  ASSERT_NE(nullptr, existing);
  char text[8] = {};
  EXPECT_NE(nullptr, std::fgets(text, sizeof text, existing));
  EXPECT_STREQ("line", text);
  std::fclose(existing);
  HFSUniStr255 bad = {2, {'.', '.'}};
  EXPECT_EQ(nullptr, FSRefParentAndFilename_fopen(m_folder, &bad, "w"));
}

TEST(PlatformStringTest, OneUnitPerCharacterBothWays) {
  const TString wide = {L'a', 0x1F600, 0xE9};
  EXPECT_EQ((std::vector<UniChar>{'a', 0xF600, 0xE9}), CreateUniCharVectorFromTString(wide));
  EXPECT_EQ(255u, CreateUniCharVectorFromWString(TString(255, 0x10041)).size());
  // Strings made from units and from bytes are read by different paths.
  CFStringRef fromUnits = CreateCFStringRefFromTString(TString{0xD83D, 0xDE00});
  CFStringRef fromBytes =
      CFStringCreateWithCString(nullptr, "\xF0\x9F\x98\x80", kCFStringEncodingUTF8);
  EXPECT_EQ((TString{0xD83D, 0xDE00}), CreateTStringFromCFStringRef(fromUnits));
  EXPECT_EQ((TString{0xD83D, 0xDE00}), CreateTStringFromCFStringRef(fromBytes));
  EXPECT_EQ("\xF0\x9F\x98\x80", CreateStringFromCFStringRef(fromUnits));
  CFRelease(fromUnits);
  CFRelease(fromBytes);
  EXPECT_EQ(L"", CreateTStringFromCFStringRef(CFSTR("")));
  UniChar units[] = {'o', 'k'};
  EXPECT_EQ(L"ok", CreateWStringFromUniCharArray(units, 2));
  EXPECT_EQ("ok", CreateStringFromUniCharArray(units, 2));
}

TEST(PlatformStringTest, NarrowStringsInAreAscii) {
  EXPECT_EQ(L"plain", ConvertCharStringToWideCharString("plain"));
  EXPECT_EQ(L"", ConvertCharStringToWideCharString("caf\xC3\xA9"));
  EXPECT_TRUE(CreateUniCharVectorFromString("caf\xC3\xA9").empty());
  EXPECT_EQ(nullptr, CreateCFStringRefFromString("\xA9"));
  EXPECT_EQ("caf\xC3\xA9", ConvertWideCharStringToCharString(L"caf\u00E9"));
  EXPECT_EQ("", ConvertWideCharStringToCharString(TString{0xD800}));  // no UTF-8 form
}

TEST(PlatformStringTest, Str255HoldsUnitsInHostOrder) {
  Str255 pascal;
  ASSERT_EQ(0, CopyWStringToStr255(L"Hi", pascal));
  EXPECT_EQ(4, pascal[0]);
  EXPECT_EQ(std::string("H\0i\0", 4), std::string(reinterpret_cast<char*>(pascal + 1), 4));
  EXPECT_EQ(-1, CopyWStringToStr255(TString(128, L'x'), pascal));
}

TEST(ControlTitleTest, NumbersAndTextShareTheTitle) {
  OpaqueControlRef control;
  int value = 0;
  ASSERT_EQ(noErr, SetControlTitleWithInt(&control, -42));
  ASSERT_EQ(noErr, GetControlTitleAsInt(&control, value));
  EXPECT_EQ(-42, value);
  ASSERT_EQ(noErr, SetControlTitleWithTString(&control, L" 7 px"));
  ASSERT_EQ(noErr, GetControlTitleAsInt(&control, value));
  EXPECT_EQ(7, value);
  EXPECT_EQ(paramErr, GetControlTitleAsInt(nullptr, value));
}

class OpenURLTest : public testing::Test {
 protected:
  // An opener that records its argument and exits with `status`, first on the search path.
  void InstallOpener(int status) {
    const std::string script = m_temp.Path("xdg-open");
    std::ofstream(script) << "#!/bin/sh\nprintf '%s' \"$1\" > '" << m_temp.Path("opened")
                          << "'\nexit " << status << "\n";
    fs::permissions(script, fs::perms::owner_all);
  }

  TempFolder m_temp;
  ScopedVariable m_path{"PATH", m_temp.Path() + ":" + (getenv("PATH") ? getenv("PATH") : "")};
};

TEST_F(OpenURLTest, HandsTheURLToTheOpener) {
  InstallOpener(0);
  EXPECT_EQ(0, OpenURL(L"https://example.com/support?topic=settings"));
  EXPECT_EQ("https://example.com/support?topic=settings", Read(m_temp.Path("opened")));
}

TEST_F(OpenURLTest, FailsWhenTheOpenerFailsOrTheURLIsBad) {
  InstallOpener(3);
  EXPECT_EQ(-1, OpenURL(L"https://example.com/"));
  fs::remove(m_temp.Path("opened"));
  EXPECT_EQ(-1, OpenURL(L"https://example.com/a b"));
  EXPECT_FALSE(fs::exists(m_temp.Path("opened")));  // never handed over
}

TEST(LoadFrameworkBundleTest, LoadsFromTheFrameworksFolder) {
  TempFolder temp;
  ASSERT_FALSE(temp.Path().empty());
  ScopedVariable dataHome("XDG_DATA_HOME", temp.Path());
  CFBundleRef bundle = reinterpret_cast<CFBundleRef>(1);
  EXPECT_EQ(coreFoundationUnknownErr, LoadFrameworkBundle(CFSTR("TestKit.framework"), &bundle));
  EXPECT_EQ(nullptr, bundle);
  EXPECT_TRUE(fs::is_directory(temp.Path("Frameworks")));
  fs::create_directory(temp.Path("Frameworks/TestKit.framework"));
  fs::copy_file(TEST_FRAMEWORK_EXECUTABLE, temp.Path("Frameworks/TestKit.framework/TestKit"));
  ASSERT_EQ(noErr, LoadFrameworkBundle(CFSTR("TestKit.framework"), &bundle));
  EXPECT_NE(nullptr, bundle);
  CFRelease(bundle);
}

TEST(SystemVersionTest, ComparesWithTheReportedVersion) {
  EXPECT_TRUE(MacOSXOrLaterPresent());
  EXPECT_TRUE(MacOSVersionNumberAtLeast(0x1040));
  EXPECT_FALSE(MacOSVersionNumberAtLeast(0x1050));
}

}  // namespace
