// kestrail-pack, run as a user runs it.
#include <gtest/gtest.h>

#include "mac/Version.h"
#include "tests/mac/RunProgram.h"
#include "tests/ovlib/ps_filter_framework/SettingsHome.h"

namespace {

class KestrailPackTest : public SettingsHomeTest {
 protected:
  ProgramRun Pack(std::vector<std::string> arguments) {
    return RunProgram(KESTRAIL_PACK, arguments);
  }
  ScopedVariable m_ui{"KESTRAIL_UI", "text"};
};

// What goes into a package, and that it unpacks, is the library's round trip; here, where it goes.
TEST_F(KestrailPackTest, PackagesIntoTheChosenFolder) {
  m_temp.Write("in/gentle", "WindCombe\r\rstrength=0.4\r");
  std::filesystem::create_directory(m_temp.Path("out"));
  ProgramRun run = Pack({"--into", m_temp.Path("out"), m_temp.Path("in/gentle")});
  EXPECT_EQ(0, run.status) << run.err;
  EXPECT_EQ(m_temp.Path("out/gentle.f1s") + "\n", run.out);
  EXPECT_TRUE(std::filesystem::exists(m_temp.Path("out/gentle.f1s")));
}

TEST_F(KestrailPackTest, SaysWhyAFileWasNotPackaged) {
  m_temp.Write("in/good", "Cyclonix\rx");
  m_temp.Write("in/unknown", "Whirlpool\rx");
  m_temp.Write("in/done", "Cyclonix\ry");
  m_temp.Write("in/done.f1s", "kept");
  ProgramRun run = Pack({m_temp.Path("in/good"), m_temp.Path("in/unknown"),
                         m_temp.Path("in/missing"), m_temp.Path("in/done")});
  EXPECT_EQ(1, run.status);
  EXPECT_EQ(m_temp.Path("in/good.f1s") + "\n", run.out);
  EXPECT_NE(std::string::npos, run.err.find("unknown: unknown filter \"Whirlpool\""));
  EXPECT_NE(std::string::npos, run.err.find("missing: no such file"));
  EXPECT_NE(std::string::npos, run.err.find("done: a package already exists"));
  EXPECT_EQ("kept", m_temp.Contents("in/done.f1s"));
  EXPECT_FALSE(std::filesystem::exists(m_temp.Path("in/unknown.f1s")));

  EXPECT_EQ(2, Pack({}).status);
  EXPECT_EQ(2, Pack({"--into", m_temp.Path("in/good"), m_temp.Path("in/good")}).status);
  run = Pack({"--help"});
  EXPECT_EQ(0, run.status);
  EXPECT_NE(std::string::npos, run.out.find("--into FOLDER"));
  run = Pack({"--version"});
  EXPECT_EQ(std::string("kestrail-pack ") + kVersion + "\n", run.out);
  // After "--" a name that looks like an option is a file.
  run = Pack({"--", "-x"});
  EXPECT_EQ(1, run.status);
  EXPECT_NE(std::string::npos, run.err.find("-x: no such file")) << run.err;
}

}  // namespace
