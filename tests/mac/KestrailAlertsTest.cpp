// The application's alerts and its open-documents handler, against a scripted dialog backend:
// what each alert shows, which button is the default, and what each answer means.
#include <gtest/gtest.h>

#include "mac/Kestrail.h"
#include "platform/EventLoop.h"
#include "tests/ovlib/ps_filter_framework/SettingsHome.h"

namespace {

class KestrailAlertsTest : public SettingsHomeTest {};

TEST_F(KestrailAlertsTest, DisplayAlertIsACautionWithOneButton) {
  DisplayAlert(CFSTR("Something happened."));
  ASSERT_EQ(1u, m_alerts.m_vecAlerts.size());
  const AlertDescription& alert = m_alerts.m_vecAlerts[0];
  EXPECT_EQ(kAlertCautionAlert, alert.m_nKind);
  EXPECT_EQ("Something happened.", alert.m_strMessage);
  EXPECT_EQ((AlertButtons{{"OK", kAlertStdAlertOKButton}}), Buttons(0));
  EXPECT_EQ(kAlertStdAlertOKButton, alert.m_nDefaultItem);
}

TEST_F(KestrailAlertsTest, ReplaceQuestionKeepsTheFileOnReturn) {
  ScopedVariable catalogs("KESTRAIL_LOCALEDIR", nullptr);  // the built ones, beside the program
  m_alerts.m_queAnswers = {kAlertStdAlertOKButton, kAlertStdAlertCancelButton};
  EXPECT_EQ(1, ConfirmFileReplace(L"a b.xml"));
  EXPECT_EQ(0, ConfirmFileReplace(L"a b.xml"));
  EXPECT_EQ(1, ConfirmFileReplace(L"a b.xml"));  // the default, as on Return
  ASSERT_EQ(3u, m_alerts.m_vecAlerts.size());
  const AlertDescription& alert = m_alerts.m_vecAlerts[0];
  EXPECT_EQ(kAlertCautionAlert, alert.m_nKind);
  EXPECT_EQ("A setting named \"a b.xml\" is already installed. Do you want to replace it?",
            alert.m_strMessage);
  EXPECT_EQ((AlertButtons{{"Keep Existing", kAlertStdAlertOKButton},
                          {"Replace", kAlertStdAlertCancelButton}}),
            Buttons(0));
  EXPECT_EQ(kAlertStdAlertOKButton, alert.m_nDefaultItem);
  EXPECT_EQ(kAlertStdAlertCancelButton, alert.m_nCancelItem);
}

TEST_F(KestrailAlertsTest, HandlerImportsTheFirstFileOnly) {
  ASSERT_EQ(noErr, AEInstallEventHandler(kCoreEventClass, kAEOpenDocuments,
                                         KestrailHandleOpenAppleEvent, 0, false));
  struct Case {
    const char* label;
    std::vector<std::string> files;
    OSErr status;
    bool quit;
    size_t alerts;
  };
  m_temp.Write("in/one.xml", "<setting set=\"Daubery\" filter=\"WetDaub\" name=\"One\"/>");
  m_temp.Write("in/two.xml", "<setting set=\"Daubery\" filter=\"InkPuddle\" name=\"Two\"/>");
  const Case cases[] = {
      {"no files: keep running", {}, noErr, false, 0},
      {"three files", {"in/one.xml", "in/two.xml", "in/two.xml"}, noErr, true, 1},
      {"first is missing", {"in/missing.xml", "in/two.xml"}, errAECoercionFail, true, 0},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.label);
    std::vector<std::string> paths;
    for (const std::string& file : c.files) paths.push_back(m_temp.Path(file));
    AppleEvent event, reply;
    AEInitializeDesc(&reply);
    ASSERT_EQ(noErr, MakeOpenDocumentsEvent(paths, &event));
    m_alerts.m_vecAlerts.clear();
    bool quit = false;
    EXPECT_EQ(c.status, DispatchAppleEvent(&event, &reply, quit));
    EXPECT_EQ(c.quit, quit);
    EXPECT_EQ(c.alerts, m_alerts.m_vecAlerts.size());
    AEDisposeDesc(&event);
  }
  EXPECT_TRUE(std::filesystem::exists(m_temp.Path("home/data/Orvelle/Daubery/WetDaub/one.xml")));
  EXPECT_FALSE(std::filesystem::exists(m_temp.Path("home/data/Orvelle/Daubery/InkPuddle")));
}

}  // namespace
