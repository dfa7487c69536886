// Kestrail's import, with a fresh home. The program run as the desktop runs it, one settings file
// on its command line, answering its dialogs on standard input: every outcome of an import. And
// in this process against a scripted dialog backend: what each alert shows, which button is the
// default, what each answer means, and what the flow does when the disk, a signal or another
// process interferes.
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <unistd.h>

#include <chrono>
#include <cstring>
#include <deque>
#include <functional>
#include <iostream>
#include <set>

#include "mac/Kestrail.h"
#include "platform/EventLoop.h"
#include "tests/FaultyDisk.h"
#include "tests/ScriptedDialogBackend.h"
#include "tests/SettingsHome.h"
#include "tests/mac/RunProgram.h"

namespace {

namespace fs = std::filesystem;

const std::string kExamining = "This file is not a settings file that can be installed.";
const std::string kLocating =
    "No Glimmerbox folder was chosen. Choose the folder that holds \"Glimmerbox Settings\".";
const std::string kFailure = "The setting could not be installed.";
const std::string kSame = "This setting is already in its settings folder.";
const std::string kInstalled = "The setting was installed at ";
const std::string kGlimmerboxQuestion = "Please choose your Glimmerbox folder.";

const std::string kDaubery = "<setting set=\"Daubery\" filter=\"InkPuddle\" name=\"Wash\"/>";
const std::string kDauberyFolder = "home/data/Orvelle/Daubery/InkPuddle";
const std::string kInstalledWash = kDauberyFolder + "/Wash.xml";
const std::string kWashPackage =
    "<oldstyle_setting set=\"Daubery\" filter=\"InkPuddle\" name=\"Wash.xml\">"
    "<![CDATA[InkPuddle\rdepth=2\r]]></oldstyle_setting>";
const DialogItemIndex kKeep = kAlertStdAlertOKButton, kReplace = kAlertStdAlertCancelButton,
                      kBoth = kAlertStdAlertOtherButton;

// The alert for a settings folder that could not be had, as the terminal shows it.
std::string FolderProblem(const std::string& path, const std::string& reason) {
  return "The folder \"" + path + "\" could not be found or made: " + reason + ".";
}

class KestrailTest : public SettingsHomeTest {
 protected:
  ProgramRun Open(const std::string& file, const std::string& answers = "") {
    return RunProgram(KESTRAIL, {m_temp.Path(file)}, answers);
  }
  // The files of that name below the temporary folder, the opened ones in in/ aside.
  int CountInstalled(const std::string& name) const {
    int count = 0;
    for (const auto& entry : fs::recursive_directory_iterator(m_temp.Path()))
      count += entry.path().filename() == name &&
               entry.path().string().rfind(m_temp.Path("in/"), 0) != 0;
    return count;
  }

  // Dialogs on the terminal, in English whatever the machine's language.
  ScopedVariable m_ui{"KESTRAIL_UI", "text"}, m_language{"LC_ALL", "C"};
};

// Every outcome of an import. Opened again, an installed setting is asked about under the name it
// was installed under, and Replace replaces it. A "%1" in a name reaches every message as it is:
// no message reads a text it was not given.
TEST_F(KestrailTest, Outcomes) {
  struct Case {
    const char* label;
    std::string file, contents;
    std::string alert;      // the one alert the import ends with
    std::string installed;  // the file that holds the setting afterwards; "" for none
    std::string holds;      // what it holds, when that is not the contents
  };
  const Case cases[] = {
      {"xml setting, a marker in its filter", "in/p1.xml",
       "<setting set=\"Daubery\" filter=\"Ink%1Puddle\" name=\"n\"/>", kInstalled,
       "home/data/Orvelle/Daubery/Ink%1Puddle/p1.xml", ""},
      {"markers in the file name", "in/%1%2%3%4%5%6%7%8%9.xml", kDaubery, kInstalled,
       kDauberyFolder + "/%1%2%3%4%5%6%7%8%9.xml", ""},
      {"text setting", "in/t", "[{\"set\": \"Zephyrine\", \"filter\": \"%1%2%3\"}]", kInstalled,
       "home/data/Orvelle/Zephyrine/%1%2%3/t", ""},
      {"old-style, under its setting's name", "in/Pack.f1s",
       "<oldstyle_setting filter=\"Tessellane\" name=\"p%1\" set=\"Mendora\">"
       "<![CDATA[Tessellane\rsize=3\r]]></oldstyle_setting>",
       kInstalled, "home/data/Orvelle/Mendora/Tessellane/p%1", "Tessellane\rsize=3\r"},
      {"already in its folder", kInstalledWash, kDaubery, kSame, kInstalledWash, ""},
      {"no setting", "in/notes.txt", "not a setting", kExamining, "", ""},
      {"old-style name that is no name", "in/bad.f1s",
       "<oldstyle_setting set=\"Daubery\" filter=\"F\" name=\"../x\"><![CDATA[x]]>"
       "</oldstyle_setting>",
       kFailure, "", ""},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.label);
    fs::remove_all(m_temp.Path("home/data/Orvelle"));
    fs::create_directories(fs::path(m_temp.Path(c.file)).parent_path());
    m_temp.Write(c.file, c.contents);
    ProgramRun run = Open(c.file);
    EXPECT_EQ(0, run.status) << run.err;
    EXPECT_EQ(std::string::npos, run.err.find("bug")) << run.err;
    // An install names the file it made.
    const std::string alert =
        c.alert == kInstalled ? kInstalled + m_temp.Path(c.installed) : c.alert;
    EXPECT_NE(std::string::npos, run.out.find(alert)) << run.out;
    if (c.installed.empty()) continue;
    const std::string holds = c.holds.empty() ? c.contents : c.holds;
    EXPECT_EQ(holds, m_temp.Contents(c.installed));
    if (c.alert != kInstalled) continue;
    m_temp.Write(c.installed, "the installed one");
    run = Open(c.file, "r\n");
    const std::string name = c.installed.substr(c.installed.rfind('/') + 1);
    EXPECT_NE(std::string::npos, run.out.find("named \"" + name + "\" is already")) << run.out;
    EXPECT_EQ(holds, m_temp.Contents(c.installed));
  }
}

// A pack opened at once, as the terminal shows it: every file's outcome, one question per name
// taken until one answer is given for all, the Glimmerbox folder asked for once, and one summary.
TEST_F(KestrailTest, AMixedBatch) {
  const std::string wash2 = "<setting set=\"Daubery\" filter=\"InkPuddle\" name=\"Wash too\"/>";
  const std::string grain = "<setting set=\"Mendora\" filter=\"Grain\" name=\"G\"/>";
  const std::string glow = "<setting set=\"Glimmerbox\" filter=\"Glow\" name=\"G\"/>";
  for (const std::string& folder : {std::string("in/sub"), kDauberyFolder})
    fs::create_directories(m_temp.Path(folder));
  m_temp.Write("in/Wash.xml", kDaubery);
  m_temp.Write("in/sub/Wash.xml", wash2);
  m_temp.Write("in/G.xml", grain);
  m_temp.Write("in/Soak.f1s",
               std::string(kWashPackage).replace(kWashPackage.find("Wash.xml"), 8, "Soak.xml"));
  m_temp.Write("in/Old.xml", kDaubery);
  m_temp.Write("in/notes.txt", "not a setting");
  fs::create_directory(m_temp.Path("in/folder"));
  ASSERT_EQ(0, mkfifo(m_temp.Path("in/fifo").c_str(), 0600));
  m_temp.Write("in/gb1.xml", glow);
  m_temp.Write("in/gb2.xml", glow);
  m_temp.Write("in/sub/G.xml", "<setting set=\"Mendora\" filter=\"Grain\" name=\"G too\"/>");
  m_temp.Write(kDauberyFolder + "/Old.xml", "the installed one");
  fs::create_directories(m_temp.Path("gbox/Glimmerbox Settings/Glow"));
  std::vector<std::string> files;
  for (const char* file : {"Wash.xml", "sub/Wash.xml", "G.xml", "Soak.f1s", "Old.xml", "notes.txt",
                           "folder", "fifo", "gone%1.xml", "gb1.xml", "gb2.xml", "sub/G.xml"})
    files.push_back(m_temp.Path(std::string("in/") + file));
  // Keep Both for the second Wash.xml; Keep Existing for Old.xml and every later name taken.
  const ProgramRun run = RunProgram(KESTRAIL, files, "b\ne+\n" + m_temp.Path("gbox") + "\n");
  EXPECT_EQ(0, run.status) << run.err;
  // $D, $M and $G stand for the filters' folders.
  std::string summary = R"(6 of 12 files opened were installed.
6 settings installed:
  Wash.xml in $D
  Wash.xml as Wash 2.xml in $D
  G.xml in $M
  Soak.f1s as Soak.xml in $D
  gb1.xml in $G
  gb2.xml in $G

2 files not installed, the installed settings kept:
  Old.xml
  G.xml

3 files are not settings files:
  notes.txt
  folder
  fifo

1 file could not be installed:
  gone%1.xml: This file could not be read: it does not exist.
)";
  const std::pair<std::string, std::string> folders[] = {
      {"$D", m_temp.Path(kDauberyFolder)},
      {"$M", m_temp.Path("home/data/Orvelle/Mendora/Grain")},
      {"$G", m_temp.Path("gbox/Glimmerbox Settings/Glow")}};
  for (const auto& [mark, folder] : folders) {
    for (std::size_t at; (at = summary.find(mark)) != std::string::npos;)
      summary.replace(at, mark.size(), folder);
  }
  EXPECT_NE(std::string::npos, run.out.find(summary)) << run.out;
  const auto count = [&run](const std::string& text) {
    std::size_t n = 0;
    for (std::size_t at = run.out.find(text); at != std::string::npos;
         at = run.out.find(text, at + 1))
      ++n;
    return n;
  };
  EXPECT_EQ(2u, count("is already installed"));
  EXPECT_EQ(2u, count("To choose \"Apply to all\" too"));
  EXPECT_EQ(1u, count(kGlimmerboxQuestion));
  EXPECT_EQ(kDaubery, m_temp.Contents(kInstalledWash));
  EXPECT_EQ(wash2, m_temp.Contents(kDauberyFolder + "/Wash 2.xml"));
  EXPECT_EQ("the installed one", m_temp.Contents(kDauberyFolder + "/Old.xml"));
  EXPECT_EQ(grain, m_temp.Contents("home/data/Orvelle/Mendora/Grain/G.xml"));
  EXPECT_EQ((std::set<std::string>{"Old.xml", "Soak.xml", "Wash 2.xml", "Wash.xml"}),
            m_temp.Names(kDauberyFolder));
  EXPECT_EQ((std::set<std::string>{"gb1.xml", "gb2.xml"}),
            m_temp.Names("gbox/Glimmerbox Settings/Glow"));
}

TEST_F(KestrailTest, GlimmerboxFolder) {
  m_temp.Write("in/Glow.xml", "<setting set=\"Glimmerbox\" filter=\"Sparkwash\" name=\"Glow\"/>");
  const std::string chosen = m_temp.Path("Glimmerbox") + "\n";
  struct Case {
    const char* label;
    std::string layout;  // the folders inside the Glimmerbox folder
    std::string answer, alert;
    bool installed;
  };
  const std::string filter = "Glimmerbox Settings/Sparkwash";
  const Case cases[] = {
      {"cancelled", filter, "\n", kLocating, false},
      {"no Glimmerbox Settings in it", "", chosen, kLocating, false},
      {"no filter folder", "Glimmerbox Settings", chosen,
       FolderProblem(m_temp.Path("Glimmerbox/" + filter), "it does not exist"), false},
      {"chosen", filter, chosen, kInstalled, true},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.label);
    fs::remove_all(m_temp.Path("Glimmerbox"));
    fs::create_directories(m_temp.Path("Glimmerbox/" + c.layout));
    ProgramRun run = Open("in/Glow.xml", c.answer);
    EXPECT_NE(std::string::npos, run.out.find(kGlimmerboxQuestion)) << run.out;
    EXPECT_NE(std::string::npos, run.out.find(c.alert)) << run.out;
    EXPECT_EQ(c.installed, fs::exists(m_temp.Path("Glimmerbox/" + filter + "/Glow.xml")));
  }
  EXPECT_FALSE(fs::exists(m_temp.Path("home/data/Orvelle/Glimmerbox")));
}

// Whoever answers on the terminal, the question ends: endless input without a line end takes the
// default, and keeps the installed setting. A name that holds a line feed and a right-to-left
// override shows both as escapes, so that it cannot pass for more of the question.
TEST_F(KestrailTest, TheTerminalQuestionCannotBeHeldOrFaked) {
  const std::string name = "Wash\nReplace is safe.\u202Elmx.hsaW";
  const std::string shown = "Wash\\x0aReplace is safe.\\u202elmx.hsaW";
  m_temp.Write("in/" + name, kDaubery);
  fs::create_directories(m_temp.Path(kDauberyFolder));
  m_temp.Write(kDauberyFolder + "/" + name, "the installed one");
  ProgramRun run = Open("in/" + name, std::string(10 << 20, '\0'));
  EXPECT_EQ(0, run.status);
  EXPECT_NE(std::string::npos,
            run.out.find("A setting named \"" + shown + "\" is already installed."))
      << run.out;
  EXPECT_NE(std::string::npos, run.out.find("No line end in 4096 bytes; taking Keep Existing."));
  EXPECT_EQ("the installed one", m_temp.Contents(kDauberyFolder + "/" + name));
  run = Open("in/" + name, "r\n");
  EXPECT_NE(std::string::npos, run.out.find(kInstalled + m_temp.Path(kDauberyFolder) + "/" + shown +
                                            ". The setting it replaced is in the Trash.\n"))
      << run.out;
}

// A display that cannot be opened costs the windows, not the import: one line on standard error
// says why, and the questions come on the terminal.
TEST_F(KestrailTest, UnreachableDisplayFallsBackToTheTerminal) {
  m_temp.Write("in/Wash.xml", kDaubery);
  ScopedVariable ui("KESTRAIL_UI", ""), display("DISPLAY", ":4093"), wayland("WAYLAND_DISPLAY", "");
  ProgramRun run = Open("in/Wash.xml");
  EXPECT_EQ(0, run.status);
  EXPECT_NE(std::string::npos, run.err.find("kestrail: no dialog windows (")) << run.err;
  EXPECT_NE(std::string::npos, run.out.find(kInstalled)) << run.out;
}

// Every way a setting can fail to find its folder, each told as it is; and the user's own links
// to where the settings really are, followed. A "User Folder" that cannot serve, and preferences
// that are no file to read, are said on standard error while the setting goes to the data folder.
TEST_F(KestrailTest, EachProblemIsToldAsItIs) {
  const std::string data = m_temp.Path("home/data"), elsewhere = m_temp.Path("elsewhere");
  const std::string preferences = m_temp.Path("home/config/com.orvelle.daubery.plist");
  const std::string inData = kDauberyFolder + "/Wash.xml", fileHome = m_temp.Path("home/file");
  const auto userFolder = [&](const std::string& path) {
    m_temp.Write("home/config/com.orvelle.daubery.plist",
                 "<plist><dict><key>User Folder</key><string>" + path + "</string></dict></plist>");
    return true;
  };
  const auto unused = [](const std::string& path, const std::string& reason) {  // on the terminal
    return "kestrail: The \"User Folder\" preference \"" + path + "\" is not used: " + reason +
           ". Settings go into the data folder instead.";
  };
  const auto foreign = [](const std::string& path) {  // only root can give a link away
    return geteuid() == 0 && lchown(path.c_str(), 4242, 4242) == 0;
  };
  std::deque<ScopedVariable> variables;  // those a case sets, until the next case
  const auto setVariable = [&](const char* name, const char* value) {  // a null value unsets
    return variables.emplace_back(name, value), true;
  };
  const std::string longSet(256, 's');
  std::string longPath = data, deepFolder = m_temp.Path("deep");
  while (longPath.size() < 5000) longPath += "/" + std::string(200, 'd');
  while (deepFolder.size() < 2000) deepFolder += "/" + std::string(200, 'e');
  struct Case {
    const char* label;
    std::string out;
    std::string installed = "";  // the file that holds kDaubery afterwards; "" for none
    std::string err = "";
    // Runs once in/Wash.xml holds kDaubery; false when it cannot be arranged here.
    std::function<bool()> arrange = [] { return true; };
  };
  const Case cases[] = {
      {"a link to where the maker's folder is",
       kInstalled + elsewhere + "/Orvelle/Daubery/InkPuddle/Wash.xml",
       "elsewhere/Orvelle/Daubery/InkPuddle/Wash.xml", "",
       [&] {
         return fs::create_directories(elsewhere + "/Orvelle"),
                fs::create_directory_symlink(elsewhere + "/Orvelle", data + "/Orvelle"), true;
       }},
      {"another user's link",
       FolderProblem(data + "/Orvelle", "it is a link that belongs to another user"), "", "",
       [&] {
         return fs::create_directories(elsewhere),
                fs::create_directory_symlink(elsewhere, data + "/Orvelle"),
                foreign(data + "/Orvelle");
       }},
      {"no home", "there is no home folder", "", "",
       [&] { return setVariable("HOME", nullptr) && setVariable("XDG_DATA_HOME", nullptr); }},
      {"a data home that is a file", FolderProblem(fileHome, "it is not a folder"), "", "",
       [&] {
         return m_temp.Write("home/file", ""), setVariable("XDG_DATA_HOME", fileHome.c_str());
       }},
      {"a data home path too long", FolderProblem(longPath, "its name or path is too long"), "", "",
       [&] { return setVariable("XDG_DATA_HOME", longPath.c_str()); }},
      {"a read-only data home", FolderProblem(data + "/Orvelle", "the disk is read-only"), "", "",
       [&] { return mount("kestrail-test", data.c_str(), "tmpfs", MS_RDONLY, "") == 0; }},
      {"a set's name too long",
       FolderProblem(data + "/Orvelle/" + longSet.substr(0, 64) + "\u2026",
                     "its name or path is too long"),
       "", "",
       [&] {
         return m_temp.Write("in/Wash.xml", "<setting set=\"" + longSet + "\" filter=\"F\"/>"),
                true;
       }},
      {"a file where the filter's folder belongs",
       FolderProblem(m_temp.Path(kDauberyFolder), "it is not a folder"), "", "",
       [&] {
         return fs::create_directories(data + "/Orvelle/Daubery"), m_temp.Write(kDauberyFolder, ""),
                true;
       }},
      // Sparse: its size alone must refuse it.
      {"a file too large to be a setting", "This file is too large to be a settings file.", "", "",
       [&] { return fs::resize_file(m_temp.Path("in/Wash.xml"), (64 << 20) + 1), true; }},
      {"a \"User Folder\" that is a file", kInstalled, inData,
       unused(m_temp.Path("in/Wash.xml"), "it is not a folder"),
       [&] { return userFolder(m_temp.Path("in/Wash.xml")); }},
      {"a relative \"User Folder\"", kInstalled, inData,
       unused("Presets", "it is not an absolute path"), [&] { return userFolder("Presets"); }},
      {"a long \"User Folder\"", kInstalled + deepFolder,
       deepFolder.substr(m_temp.Path().size() + 1) + "/Orvelle/Daubery/InkPuddle/Wash.xml", "",
       [&] { return fs::create_directories(deepFolder), userFolder(deepFolder); }},
      {"preferences that are a pipe", kInstalled, inData, preferences + ": not a regular file",
       [&] { return mkfifo(preferences.c_str(), 0600) == 0; }},
      {"preferences that lead to endless zeros", kInstalled, inData,
       preferences + ": not a regular file",
       [&] { return fs::create_symlink("/dev/zero", preferences), true; }},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.label);
    variables.clear();
    for (const char* folder : {"home/data", "home/config", "elsewhere", "deep"})
      fs::remove_all(m_temp.Path(folder));
    fs::create_directories(data);
    fs::create_directories(m_temp.Path("home/config"));
    m_temp.Write("in/Wash.xml", kDaubery);
    if (!c.arrange()) {
      std::cout << "not arranged here: " << c.label << "\n";
      continue;
    }
    const ProgramRun run = Open("in/Wash.xml");
    umount2(data.c_str(), MNT_DETACH);
    EXPECT_EQ(0, run.status) << run.err;
    EXPECT_NE(std::string::npos, run.out.find(c.out)) << run.out;
    EXPECT_EQ(std::string::npos, run.out.find("bug")) << run.out;
    EXPECT_NE(std::string::npos, run.err.find(c.err)) << run.err;
    EXPECT_EQ(c.installed.empty() ? 0 : 1, CountInstalled("Wash.xml"));
    if (!c.installed.empty()) {
      EXPECT_EQ(kDaubery, m_temp.Contents(c.installed));
    }
  }
}

// What root cannot meet for real, through the disk seam: a folder that may not be made, and a
// setting that may not be read.
TEST_F(KestrailTest, DeniedPermissionIsToldAsSuch) {
  struct Denying : FaultyDisk {
    int Open(int folder, const char* name, int flags, mode_t mode, int& fd) override {
      const bool readsData =
          (flags & (O_PATH | O_DIRECTORY)) == 0 && (flags & O_ACCMODE) == O_RDONLY;
      return m_bDenyReading && readsData ? EACCES : FaultyDisk::Open(folder, name, flags, mode, fd);
    }
    int MakeFolder(int folder, const char* name, mode_t mode) override {
      struct stat existing;  // an existing folder is told as such whatever the permissions
      if (!m_bDenyMaking || fstatat(folder, name, &existing, AT_SYMLINK_NOFOLLOW) == 0)
        return FaultyDisk::MakeFolder(folder, name, mode);
      return EACCES;
    }
    bool m_bDenyReading = false, m_bDenyMaking = false;
  };
  m_temp.Write("in/Wash.xml", kDaubery);
  for (bool reading : {true, false}) {
    SCOPED_TRACE(reading ? "reading" : "making");
    Denying disk;
    (reading ? disk.m_bDenyReading : disk.m_bDenyMaking) = true;
    m_alerts.m_vecAlerts.clear();
    {
      ScopedDiskBackend denying(disk);
      ImportOneSetting(*Ref("in/Wash.xml"));
    }
    ASSERT_EQ(1u, m_alerts.m_vecAlerts.size());
    EXPECT_EQ(reading ? "This file could not be read: permission denied."
                      : "The folder \"\u2068" + m_temp.Path("home/data/Orvelle") +
                            "\u2069\" could not be found or made: permission denied.",
              m_alerts.m_vecAlerts[0].m_strMessage);
  }
  EXPECT_FALSE(fs::exists(m_temp.Path("home/data/Orvelle")));
}

// A folder on the setting's way swapped for another user's link to a folder elsewhere (or any
// folder above it, up to the maker's), at each disk call of an install in turn, through both ways
// of installing: nothing is ever written elsewhere, the filter's folder holds the older setting or
// the new one whole and nothing else, no bug is reported, and the alert tells what happened.
TEST_F(KestrailTest, AFolderSwappedForALinkAtAnyMomentRedirectsNothing) {
  if (geteuid() != 0) GTEST_SKIP() << "only root can give a link away, as a planted one would be";
  const std::string copied = kDaubery + "<!--" + std::string(3 * 4096, 'x') + "-->";
  m_temp.Write("in/Wash.xml", copied);
  m_temp.Write("in/Wash.f1s", kWashPackage);
  const std::string elsewhere = m_temp.Path("elsewhere");
  int runs = 0;
  for (const std::string file : {"in/Wash.xml", "in/Wash.f1s"}) {
    const std::string newer = file == "in/Wash.xml" ? copied : "InkPuddle\rdepth=2\r";
    for (const std::string& level : {std::string("home/data/Orvelle"),
                                     std::string("home/data/Orvelle/Daubery"), kDauberyFolder}) {
      for (int swapAt = 1;; ++swapAt) {
        SCOPED_TRACE(testing::Message() << file << ", " << level << ", call " << swapAt);
        fs::remove_all(m_temp.Path("home/data"));
        fs::remove_all(elsewhere);
        fs::create_directories(m_temp.Path(kDauberyFolder));
        fs::create_directory(elsewhere);
        m_temp.Write(kInstalledWash, "the installed one");
        const OVFileSystemReference source = Ref(file);
        int calls = 0;
        FaultyDisk disk;
        disk.m_beforeCall = [&](DiskCall) {
          if (++calls != swapAt) return;
          fs::rename(m_temp.Path(level), m_temp.Path(level + ".moved"));
          fs::create_directory_symlink(elsewhere, m_temp.Path(level));
          lchown(m_temp.Path(level).c_str(), 4242, 4242);
        };
        m_alerts.m_vecAlerts.clear();
        m_alerts.m_queAnswers = {kReplace};
        {
          ScopedDiskBackend swapping(disk);
          ImportOneSetting(*source);
        }
        if (calls < swapAt) break;  // every call has had its turn
        ++runs;
        std::string folder = kDauberyFolder;
        folder.replace(0, level.size(), level + ".moved");
        EXPECT_TRUE(fs::is_empty(elsewhere));
        EXPECT_EQ(std::set<std::string>{"Wash.xml"}, m_temp.Names(folder));
        const std::string now = m_temp.Contents(folder + "/Wash.xml");
        EXPECT_TRUE(now == "the installed one" || now == newer) << now;
        ASSERT_FALSE(m_alerts.m_vecAlerts.empty());
        for (const AlertDescription& alert : m_alerts.m_vecAlerts)
          EXPECT_NE(kAlertStopAlert, alert.m_nKind) << alert.m_strExplanation;
        const std::string& told = m_alerts.m_vecAlerts.back().m_strMessage;
        EXPECT_EQ(now == newer, told.find(kInstalled) == 0) << told;
        if (now == newer) {
          EXPECT_NE(std::string::npos, told.find(m_temp.Path(folder + "/Wash.xml"))) << told;
        }
      }
    }
  }
  EXPECT_GE(runs, 100);
}

// On a disk without a Trash (a tmpfs, where the desktop keeps none), the question says first that
// replacing deletes the installed setting for good, for a copy and an unpacked package alike. The
// Trash itself is proved by the library's fault sweep and, as a file manager sees it, by
// trash-test.
TEST_F(KestrailTest, ReplaceOnADiskWithoutATrashWarnsFirst) {
  m_temp.Write("in/Wash.xml", kDaubery);
  m_temp.Write("in/Wash.f1s", kWashPackage);
  const std::string folder = m_temp.Path(kDauberyFolder);
  fs::create_directories(folder);
  if (mount("kestrail-test", folder.c_str(), "tmpfs", 0, "") != 0)
    GTEST_SKIP() << "no tmpfs: mount: " << std::strerror(errno);
  struct Unmount {
    ~Unmount() { umount2(m_path.c_str(), MNT_DETACH); }
    std::string m_path;
  } unmount{folder};
  for (const char* file : {"in/Wash.xml", "in/Wash.f1s"}) {
    SCOPED_TRACE(file);
    m_temp.Write(kInstalledWash, "the installed one");
    const ProgramRun run = Open(file, "r\n");
    EXPECT_NE(std::string::npos,
              run.out.find("cannot be moved to the Trash: replacing it deletes it for good"))
        << run.out;
    EXPECT_EQ(std::string::npos, run.out.find("The setting it replaced is in the Trash."));
    EXPECT_NE("the installed one", m_temp.Contents(kInstalledWash));
    EXPECT_EQ(std::set<std::string>{"Wash.xml"}, m_temp.Names(kDauberyFolder));  // no Trash there
    EXPECT_FALSE(fs::exists(m_temp.Path("home/data/Trash")));
  }
}

// Twenty Kestrails at once into a fresh home, as a desktop starts one for each file selected:
// ten distinct settings, in two filters, and ten of one name. Folders that another one made first
// are found; each distinct setting arrives whole; of the same-named, one installs and every other
// one asks before it would replace that, and keeps it on the end of input.
TEST_F(KestrailTest, TwentyAtOnce) {
  const std::string folder = "home/data/Orvelle/Mendora/";
  for (int round = 0; round < 3; ++round) {
    SCOPED_TRACE(round);
    fs::remove_all(m_temp.Path("home/data/Orvelle"));
    std::deque<StartedProgram> programs;
    std::vector<std::string> contents, installed;
    for (int i = 0; i < 20; ++i) {
      const std::string n = std::to_string(i);
      const std::string filter = i < 10 && i % 2 ? "ShardLattice" : "Tessellane";
      const std::string name = i < 10 ? n + ".xml" : "Same.xml", file = "in/" + n + "/" + name;
      fs::create_directory(m_temp.Path("in/" + n));
      contents.push_back("<setting set=\"Mendora\" filter=\"" + filter + "\" name=\"" + n + "\"/>");
      installed.push_back(folder + filter + "/" + name);
      m_temp.Write(file, contents[i]);
      programs.emplace_back(KESTRAIL, std::vector<std::string>{m_temp.Path(file)});
    }
    int sameInstalled = -1;
    for (int i = 0; i < 20; ++i) {
      SCOPED_TRACE(i);
      ProgramRun run = programs[i].Finish();
      EXPECT_EQ(0, run.status) << run.err;
      const bool asked = run.out.find("is already installed") != std::string::npos;
      const bool done = run.out.find(kInstalled + m_temp.Path(installed[i])) != std::string::npos;
      EXPECT_NE(asked, done) << run.out;
      if (i < 10) {
        EXPECT_TRUE(done) << run.out;
        EXPECT_EQ(contents[i], m_temp.Contents(installed[i]));
      } else if (done) {
        EXPECT_EQ(-1, sameInstalled) << "installed by two";
        sameInstalled = i;
      }
    }
    ASSERT_NE(-1, sameInstalled);
    EXPECT_EQ(contents[sameInstalled], m_temp.Contents(installed[sameInstalled]));
    for (const auto& entry : fs::recursive_directory_iterator(m_temp.Path("home")))
      EXPECT_NE('.', entry.path().filename().string()[0]) << "left behind: " << entry.path();
  }
}

// In this process, against the scripted dialog backend.

TEST_F(KestrailTest, ReplaceQuestionKeepsTheFileOnReturn) {
  ScopedVariable catalogs("KESTRAIL_LOCALEDIR", nullptr);  // the built ones, beside the program
  m_alerts.m_queAnswers = {kReplace, kBoth};
  EXPECT_EQ(kReplaceAnswerYes, ConfirmFileReplace(L"a b.xml"));
  bool forAll = false;
  m_alerts.m_bTickCheckBoxes = true;
  EXPECT_EQ(kReplaceAnswerKeepBoth, ConfirmFileReplace(L"a b.xml", &forAll));
  EXPECT_TRUE(forAll);
  EXPECT_EQ(kReplaceAnswerNo, ConfirmFileReplace(L"a b.xml"));  // the default, as on Return
  ASSERT_EQ(3u, m_alerts.m_vecAlerts.size());
  const AlertDescription& alert = m_alerts.m_vecAlerts[0];
  EXPECT_EQ(kAlertCautionAlert, alert.m_nKind);
  EXPECT_EQ(
      "A setting named \"\u2068a b.xml\u2069\" is already installed. Do you want to replace it?",
      alert.m_strMessage);
  EXPECT_EQ((AlertButtons{{"Keep Existing", kKeep}, {"Replace", kReplace}, {"Keep Both", kBoth}}),
            Buttons(0));
  EXPECT_EQ(kKeep, alert.m_nDefaultItem);
  EXPECT_EQ(kKeep, alert.m_nCancelItem);  // Escape and closing keep it too
  // The box for all the files still to come is offered only when asked for, and off at first.
  EXPECT_EQ("", alert.m_strCheckBox);
  EXPECT_EQ("Apply to all", m_alerts.m_vecAlerts[1].m_strCheckBox);
  EXPECT_FALSE(m_alerts.m_vecAlerts[1].m_bChecked);
}

// Every file of an event is installed and, with two or more, summed up in one alert; one file
// that cannot be had is no import at all, as before.
TEST_F(KestrailTest, HandlerImportsEveryFile) {
  ASSERT_EQ(noErr, AEInstallEventHandler(kCoreEventClass, kAEOpenDocuments,
                                         KestrailHandleOpenAppleEvent, 0, false));
  struct Case {
    const char* label;
    std::vector<std::string> files;
    OSErr status;
    std::string alert;  // the one alert shown, if any
  };
  m_temp.Write("in/two.xml", "<setting set=\"Daubery\" filter=\"InkPuddle\" name=\"Two\"/>");
  const Case cases[] = {
      {"no files", {}, noErr, ""},
      {"one that is missing", {"in/missing.xml"}, errAECoercionFail, ""},
      {"two, the first missing",
       {"in/missing.xml", "in/two.xml"},
       noErr,
       "1 of 2 files opened was installed."},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.label);
    fs::remove_all(m_temp.Path("home/data/Orvelle"));
    m_alerts.m_vecAlerts.clear();
    std::vector<std::string> paths;
    for (const std::string& file : c.files) paths.push_back(m_temp.Path(file));
    AppleEvent event, reply;
    AEInitializeDesc(&reply);
    ASSERT_EQ(noErr, MakeOpenDocumentsEvent(paths, &event));
    bool quit = false;
    EXPECT_EQ(c.status, DispatchAppleEvent(&event, &reply, quit));
    EXPECT_EQ(!c.files.empty(), quit);
    AEDisposeDesc(&event);
    ASSERT_EQ(c.alert.empty() ? 0u : 1u, m_alerts.m_vecAlerts.size());
    if (!c.alert.empty()) {
      EXPECT_EQ(c.alert, m_alerts.m_vecAlerts[0].m_strMessage);
    }
  }
  EXPECT_TRUE(fs::exists(m_temp.Path("home/data/Orvelle/Daubery/InkPuddle/two.xml")));
}

// A Kestrail ended by a signal while it writes a setting leaves the one installed before as it
// was, and no unfinished file.
TEST_F(KestrailTest, ASignalInMidWriteKeepsTheInstalledSetting) {
  m_temp.Write("in/Wash.xml", kDaubery + "<!--" + std::string(64 * 1024, 'x') + "-->");
  m_temp.Write("in/Wash.f1s", kWashPackage);
  for (const char* file : {"in/Wash.xml", "in/Wash.f1s"}) {
    for (int signal : {SIGHUP, SIGINT, SIGTERM}) {
      SCOPED_TRACE(testing::Message() << file << ", signal " << signal);
      fs::create_directories(m_temp.Path(kDauberyFolder));
      m_temp.Write(kInstalledWash, "the installed one");
      const auto import = [&] {
        FaultyDisk disk;
        disk.m_beforeCall = [signal](DiskCall call) {
          if (call == DiskCall::kWrite) raise(signal);
        };
        ScopedDiskBackend held(disk);
        m_alerts.m_queAnswers = {kReplace};
        ImportOneSetting(*Ref(file));
      };
      EXPECT_EXIT(import(), testing::KilledBySignal(signal), "");
      EXPECT_EQ("the installed one", m_temp.Contents(kInstalledWash));
      EXPECT_EQ(std::set<std::string>{"Wash.xml"}, m_temp.Names(kDauberyFolder));
    }
  }
}

// A batch ended by a signal at any step of naming its files leaves every setting named before,
// the one in flight old or new, and no unfinished file; a failed flush names none of them.
TEST_F(KestrailTest, ABatchStoppedMidwayKeepsWhatWasInstalled) {
  m_temp.Write("in/A.xml", "<setting set=\"Daubery\" filter=\"InkPuddle\" name=\"A\"/>");
  m_temp.Write("in/B.xml", "<setting set=\"Daubery\" filter=\"InkPuddle\" name=\"B\"/>");
  m_temp.Write("in/Wash.xml", kDaubery);
  struct Case {
    DiskCall call;
    int nth;  // the call that the signal comes before, or that fails
    std::set<std::string> names;
    std::string wash;  // what Wash.xml holds afterwards
  };
  // A and B take their names before Replace is asked, Wash.xml once it is answered.
  const Case cases[] = {
      {DiskCall::kFlushFileSystem, 1, {"Wash.xml"}, "the installed one"},
      {DiskCall::kRename, 1, {"Wash.xml"}, "the installed one"},
      {DiskCall::kRename, 2, {"A.xml", "Wash.xml"}, "the installed one"},
      {DiskCall::kFlushFileSystem, 2, {"A.xml", "B.xml", "Wash.xml"}, "the installed one"},
      {DiskCall::kRename, 3, {"A.xml", "B.xml", "Wash.xml"}, "the installed one"},
  };
  std::vector<std::string> paths;
  for (const char* file : {"in/A.xml", "in/B.xml", "in/Wash.xml"})
    paths.push_back(m_temp.Path(file));
  const auto import = [&](FaultyDisk& disk) {
    ScopedDiskBackend held(disk);
    m_alerts.m_queAnswers = {kReplace};
    AppleEvent event, reply;
    AEInitializeDesc(&reply);
    MakeOpenDocumentsEvent(paths, &event);
    KestrailHandleOpenAppleEvent(&event, &reply, 0);
    AEDisposeDesc(&event);
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(testing::Message() << static_cast<int>(c.call) << " #" << c.nth);
    fs::remove_all(m_temp.Path(kDauberyFolder));
    fs::create_directories(m_temp.Path(kDauberyFolder));
    m_temp.Write(kInstalledWash, "the installed one");
    int calls = 0;
    FaultyDisk signalling;
    signalling.m_beforeCall = [&](DiskCall call) {
      if (call == c.call && ++calls == c.nth) raise(SIGTERM);
    };
    EXPECT_EXIT(import(signalling), testing::KilledBySignal(SIGTERM), "");
    EXPECT_EQ(c.names, m_temp.Names(kDauberyFolder));
    EXPECT_EQ(c.wash, m_temp.Contents(kInstalledWash));
  }
  // A flush that fails leaves the settings of its batch uninstalled, each one said to have failed.
  fs::remove_all(m_temp.Path(kDauberyFolder));
  fs::create_directories(m_temp.Path(kDauberyFolder));
  m_temp.Write(kInstalledWash, "the installed one");
  FaultyDisk failing(DiskCall::kFlushFileSystem, 1);
  import(failing);
  EXPECT_EQ(std::set<std::string>{"Wash.xml"}, m_temp.Names(kDauberyFolder));
  ASSERT_FALSE(m_alerts.m_vecAlerts.empty());
  EXPECT_NE(std::string::npos, m_alerts.m_vecAlerts.back().m_strExplanation.find(
                                   "\u2068A.xml\u2069: The setting could not be installed."));
}

// What is installed is what was examined: a source rewritten in place while the question is open
// fails the install, and the installed setting stays.
TEST_F(KestrailTest, ASourceWrittenWhileTheQuestionIsOpenIsNotInstalled) {
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
  };
  const std::string evil = "<setting set=\"Daubery\" filter=\"InkPuddle\" name=\"Evil\"/>";
  const Case cases[] = {
      {"a setting, same length", "in/Wash.xml", kDaubery, evil},
      {"a package, same length", "in/Wash.f1s", kWashPackage,
       std::string(kWashPackage).replace(kWashPackage.find("depth=2"), 7, "depth=9")},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.label);
    fs::create_directories(m_temp.Path(kDauberyFolder));
    m_temp.Write(kInstalledWash, "the installed one");
    m_temp.Write(c.file, c.contents);
    // Written long ago, so that the rewrite is seen even where clocks are coarse.
    fs::last_write_time(m_temp.Path(c.file),
                        fs::file_time_type::clock::now() - std::chrono::hours(1));
    Rewriter rewriter;
    rewriter.m_queAnswers = {kReplace};
    rewriter.m_rewrite = [&] { m_temp.Write(c.file, c.rewritten); };
    ScopedDialogBackend scripted(rewriter);
    ImportOneSetting(*Ref(c.file));
    ASSERT_EQ(2u, rewriter.m_vecAlerts.size());
    EXPECT_EQ(kFailure, rewriter.m_vecAlerts[1].m_strMessage);
    EXPECT_EQ("the installed one", m_temp.Contents(kInstalledWash));
  }
}

// Another Kestrail installs a setting of the same name while this one writes its own: the
// question comes then, and only Replace replaces the other one.
TEST_F(KestrailTest, ANameTakenDuringTheWriteIsAskedAbout) {
  m_temp.Write("in/Wash.xml", kDaubery);
  for (DialogItemIndex answer : {kKeep, kReplace}) {
    SCOPED_TRACE(answer);
    fs::remove_all(m_temp.Path(kDauberyFolder));
    FaultyDisk disk;
    disk.m_beforeCall = [this](DiskCall call) {
      if (call == DiskCall::kWrite && !fs::exists(m_temp.Path(kInstalledWash)))
        m_temp.Write(kInstalledWash, "the other one");
    };
    ScopedDiskBackend racing(disk);
    m_alerts.m_vecAlerts.clear();
    m_alerts.m_queAnswers = {answer};
    ImportOneSetting(*Ref("in/Wash.xml"));
    ASSERT_EQ(answer == kKeep ? 1u : 2u, m_alerts.m_vecAlerts.size());
    EXPECT_NE(std::string::npos, m_alerts.m_vecAlerts[0].m_strMessage.find("already installed"));
    EXPECT_EQ(answer == kKeep ? "the other one" : kDaubery, m_temp.Contents(kInstalledWash));
    EXPECT_EQ(std::set<std::string>{"Wash.xml"}, m_temp.Names(kDauberyFolder));
  }
}

}  // namespace
