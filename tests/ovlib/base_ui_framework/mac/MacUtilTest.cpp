#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "ovlib/base_ui_framework/mac/MacUtil.h"
#include "ovlib/general_framework/OVFileSystemReferenceMac.h"
#include "tests/SettingsHome.h"

namespace {

using Bytes = std::vector<unsigned char>;

class OVAssertFailedTest : public SettingsHomeTest {};

// The report names the failed check; its buttons go on, try a debugger or lead to a second alert.
TEST_F(OVAssertFailedTest, ReportAndItsButtons) {
  const std::pair<const char*, std::vector<DialogItemIndex>> scripts[] = {
      {"Continue", {kAlertStdAlertOKButton}},
      {"Debug, with no debugger attached", {kAlertStdAlertCancelButton}},
      {"More Options, then Continue", {kAlertStdAlertOtherButton, kAlertStdAlertOKButton}},
  };
  for (const auto& [label, answers] : scripts) {
    SCOPED_TRACE(label);
    m_alerts.m_vecAlerts.clear();
    m_alerts.m_queAnswers.assign(answers.begin(), answers.end());
    OV_AssertFailed("mac/Kestrail", 42, "DisplayAlert");
    EXPECT_EQ(answers.size(), m_alerts.m_vecAlerts.size());  // an alert for each answer, no more
  }
  const AlertDescription& alert = m_alerts.m_vecAlerts[0];
  EXPECT_EQ(kAlertStopAlert, alert.m_nKind);
  EXPECT_EQ(
      "A bug has been detected in this filter.  Please report the information below to Orvelle "
      "at 1-800-555-0142 or support@example.com.  Thanks!",
      alert.m_strMessage);
  EXPECT_EQ("Failure at line 42 in file mac/Kestrail (function 'DisplayAlert')",
            alert.m_strExplanation);
  EXPECT_EQ((AlertButtons{{"Continue", 1}, {"Debug", 2}, {"More Options", 3}}), Buttons(0));
  EXPECT_EQ((AlertButtons{{"Continue", 1}, {"Ignore", 2}, {"Kill", 3}}), Buttons(1));
}

// Ignore and Kill change the whole process, so they run in a child process of their own: after
// Ignore a second failed check shows nothing, and Kill ends the process during the report.
TEST_F(OVAssertFailedTest, IgnoreSilencesLaterReportsAndKillEndsTheProcess) {
  const auto report = [this](DialogItemIndex second) {
    m_alerts.m_queAnswers = {kAlertStdAlertOtherButton, second};
    OV_AssertFailed("f", 1, "first");
    OV_AssertFailed("f", 2, "second");
    std::exit(m_alerts.m_vecAlerts.size() == 2 ? 0 : 2);
  };
  EXPECT_EXIT(report(kAlertStdAlertCancelButton), testing::ExitedWithCode(0), "");
  EXPECT_EXIT(report(kAlertStdAlertOtherButton), testing::ExitedWithCode(1), "");
}

class WholeFileTest : public SettingsHomeTest {};

TEST_F(WholeFileTest, ReadThenWriteElsewhereIsByteIdentical) {
  std::string contents;
  for (int i = 0; i < 70000; ++i) contents += static_cast<char>(i % 253);
  OVFileSystemReference copy;
  Bytes buffer;
  ASSERT_EQ(0, ReadDiskFileIntoBuffer(Input("original", contents), buffer));
  ASSERT_EQ(0, WriteBufferToDiskFile(Ref("in"), L"copy", buffer, false, copy));
  EXPECT_EQ(contents, m_temp.Contents("in/copy"));
  // Reading through a reference that names nothing is a bug of the caller's.
  EXPECT_EQ(-1, ReadDiskFileIntoBuffer(OVFileSystemReference(), buffer));
  EXPECT_TRUE(Reported("ReadDiskFileIntoBuffer"));
}

TEST(PlatformStringTest, OneUnitPerCharacterBothWays) {
  const TString wide = {L'a', 0x1F600, 0xE9};
  EXPECT_EQ((std::vector<UniChar>{'a', 0xF600, 0xE9}), CreateUniCharVectorFromTString(wide));
  CFStringRef pair = CreateCFStringRefFromTString(TString{0xD83D, 0xDE00});
  EXPECT_EQ((TString{0xD83D, 0xDE00}), CreateTStringFromCFStringRef(pair));
  EXPECT_EQ("\xF0\x9F\x98\x80", CreateStringFromCFStringRef(pair));
  CFRelease(pair);
  EXPECT_EQ(L"", CreateTStringFromCFStringRef(CFSTR("")));
}

}  // namespace
