// The application's alerts, its open-documents handler and its import flow, against a scripted
// dialog backend: what each alert shows, which button is the default, what each answer means,
// and what the flow does when the disk, a signal or another process interferes.
#include <gtest/gtest.h>
#include <signal.h>

#include <chrono>
#include <set>

#include "mac/Kestrail.h"
#include "platform/EventLoop.h"
#include "tests/FaultyDisk.h"
#include "tests/ScriptedDialogBackend.h"
#include "tests/ovlib/SettingsHome.h"

namespace {

namespace fs = std::filesystem;

const std::string kFolder = "home/data/Orvelle/Daubery/InkPuddle";
const std::string kInstalled = kFolder + "/Wash.xml";
const std::string kWash = "<setting set=\"Daubery\" filter=\"InkPuddle\" name=\"Wash\"/>";
const std::string kWashPackage =
    "<oldstyle_setting set=\"Daubery\" filter=\"InkPuddle\" name=\"Wash.xml\">"
    "<![CDATA[InkPuddle\rdepth=2\r]]></oldstyle_setting>";
const DialogItemIndex kKeep = kAlertStdAlertOKButton, kReplace = kAlertStdAlertCancelButton;

using KestrailAlertsTest = SettingsHomeTest;

TEST_F(KestrailAlertsTest, ReplaceQuestionKeepsTheFileOnReturn) {
  ScopedVariable catalogs("KESTRAIL_LOCALEDIR", nullptr);  // the built ones, beside the program
  m_alerts.m_queAnswers = {kReplace};
  EXPECT_EQ(0, ConfirmFileReplace(L"a b.xml"));
  EXPECT_EQ(1, ConfirmFileReplace(L"a b.xml"));  // the default, as on Return
  ASSERT_EQ(2u, m_alerts.m_vecAlerts.size());
  const AlertDescription& alert = m_alerts.m_vecAlerts[0];
  EXPECT_EQ(kAlertCautionAlert, alert.m_nKind);
  EXPECT_EQ("A setting named \"a b.xml\" is already installed. Do you want to replace it?",
            alert.m_strMessage);
  EXPECT_EQ((AlertButtons{{"Keep Existing", kKeep}, {"Replace", kReplace}}), Buttons(0));
  EXPECT_EQ(kKeep, alert.m_nDefaultItem);
  EXPECT_EQ(kKeep, alert.m_nCancelItem);  // Escape and closing keep it too
}

TEST_F(KestrailAlertsTest, HandlerImportsTheFirstFileOnly) {
  ASSERT_EQ(noErr, AEInstallEventHandler(kCoreEventClass, kAEOpenDocuments,
                                         KestrailHandleOpenAppleEvent, 0, false));
  // An event with files ends the application, one without keeps it running.
  struct Case {
    const char* label;
    std::vector<std::string> files;
    OSErr status;
  };
  m_temp.Write("in/one.xml", "<setting set=\"Daubery\" filter=\"WetDaub\" name=\"One\"/>");
  m_temp.Write("in/two.xml", "<setting set=\"Daubery\" filter=\"InkPuddle\" name=\"Two\"/>");
  const Case cases[] = {
      {"no files", {}, noErr},
      {"three files", {"in/one.xml", "in/two.xml", "in/two.xml"}, noErr},
      {"first is missing", {"in/missing.xml", "in/two.xml"}, errAECoercionFail},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.label);
    std::vector<std::string> paths;
    for (const std::string& file : c.files) paths.push_back(m_temp.Path(file));
    AppleEvent event, reply;
    AEInitializeDesc(&reply);
    ASSERT_EQ(noErr, MakeOpenDocumentsEvent(paths, &event));
    bool quit = false;
    EXPECT_EQ(c.status, DispatchAppleEvent(&event, &reply, quit));
    EXPECT_EQ(!c.files.empty(), quit);
    AEDisposeDesc(&event);
  }
  EXPECT_EQ(1u, m_alerts.m_vecAlerts.size());  // the one install's, and nothing else in any case
  EXPECT_TRUE(std::filesystem::exists(m_temp.Path("home/data/Orvelle/Daubery/WetDaub/one.xml")));
  EXPECT_FALSE(std::filesystem::exists(m_temp.Path("home/data/Orvelle/Daubery/InkPuddle")));
}

// A Kestrail ended by a signal while it writes a setting leaves the one installed before as it
// was, and no unfinished file.
TEST_F(KestrailAlertsTest, ASignalInMidWriteKeepsTheInstalledSetting) {
  m_temp.Write("in/Wash.xml", kWash + "<!--" + std::string(64 * 1024, 'x') + "-->");
  m_temp.Write("in/Wash.f1s", kWashPackage);
  for (const char* file : {"in/Wash.xml", "in/Wash.f1s"}) {
    for (int signal : {SIGHUP, SIGINT, SIGTERM}) {
      SCOPED_TRACE(testing::Message() << file << ", signal " << signal);
      fs::create_directories(m_temp.Path(kFolder));
      m_temp.Write(kInstalled, "the installed one");
      const auto import = [&] {
        FaultyDisk disk;
        disk.m_beforeWrite = [signal] { raise(signal); };
        ScopedDiskBackend held(disk);
        m_alerts.m_queAnswers = {kReplace};
        ImportOneSetting(*Ref(file));
      };
      EXPECT_EXIT(import(), testing::KilledBySignal(signal), "");
      EXPECT_EQ("the installed one", m_temp.Contents(kInstalled));
      EXPECT_EQ(std::set<std::string>{"Wash.xml"}, m_temp.Names(kFolder));
    }
  }
}

// What is installed is what was examined: a source written while the question is open fails the
// install, and the installed setting stays.
TEST_F(KestrailAlertsTest, ASourceWrittenWhileTheQuestionIsOpenIsNotInstalled) {
  struct Rewriter : ScriptedDialogBackend {
    DialogItemIndex RunAlert(const AlertDescription& alert) override {
      if (m_vecAlerts.empty()) m_rewrite();
      return ScriptedDialogBackend::RunAlert(alert);
    }
    std::function<void()> m_rewrite;
  };
  struct Case {
    const char* label;
    std::string file, contents, rewritten;
    bool inPlace;  // else a new file takes the old one's name
  };
  const std::string evil = "<setting set=\"Daubery\" filter=\"InkPuddle\" name=\"Evil\"/>";
  const Case cases[] = {
      {"rewritten in place, same length", "in/Wash.xml", kWash, evil, true},
      {"replaced by another file", "in/Wash.xml", kWash, kWash, false},
      {"package rewritten in place", "in/Wash.f1s", kWashPackage,
       std::string(kWashPackage).replace(kWashPackage.find("depth=2"), 7, "depth=9"), true},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.label);
    fs::create_directories(m_temp.Path(kFolder));
    m_temp.Write(kInstalled, "the installed one");
    m_temp.Write(c.file, c.contents);
    // Written long ago, so that the rewrite is seen even where clocks are coarse.
    fs::last_write_time(m_temp.Path(c.file),
                        fs::file_time_type::clock::now() - std::chrono::hours(1));
    Rewriter rewriter;
    rewriter.m_queAnswers = {kReplace};
    rewriter.m_rewrite = [&] {
      const std::string path = c.inPlace ? c.file : c.file + ".new";
      m_temp.Write(path, c.rewritten);
      if (!c.inPlace) fs::rename(m_temp.Path(path), m_temp.Path(c.file));
    };
    ScopedDialogBackend scripted(rewriter);
    ImportOneSetting(*Ref(c.file));
    ASSERT_EQ(2u, rewriter.m_vecAlerts.size());
    EXPECT_EQ("The setting could not be installed.", rewriter.m_vecAlerts[1].m_strMessage);
    EXPECT_EQ("the installed one", m_temp.Contents(kInstalled));
  }
}

// Another Kestrail installs a setting of the same name while this one writes its own: the
// question comes then, and only Replace replaces the other one.
TEST_F(KestrailAlertsTest, ANameTakenDuringTheWriteIsAskedAbout) {
  m_temp.Write("in/Wash.xml", kWash);
  for (DialogItemIndex answer : {kKeep, kReplace}) {
    SCOPED_TRACE(answer);
    fs::remove_all(m_temp.Path(kFolder));
    FaultyDisk disk;
    disk.m_beforeWrite = [this] {
      if (!fs::exists(m_temp.Path(kInstalled))) m_temp.Write(kInstalled, "the other one");
    };
    ScopedDiskBackend racing(disk);
    m_alerts.m_vecAlerts.clear();
    m_alerts.m_queAnswers = {answer};
    ImportOneSetting(*Ref("in/Wash.xml"));
    ASSERT_EQ(answer == kKeep ? 1u : 2u, m_alerts.m_vecAlerts.size());
    EXPECT_NE(std::string::npos, m_alerts.m_vecAlerts[0].m_strMessage.find("already installed"));
    EXPECT_EQ(answer == kKeep ? "the other one" : kWash, m_temp.Contents(kInstalled));
    EXPECT_EQ(std::set<std::string>{"Wash.xml"}, m_temp.Names(kFolder));
  }
}

}  // namespace
