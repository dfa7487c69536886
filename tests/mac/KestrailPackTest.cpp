// kestrail-pack, run as a user runs it.
#include <gtest/gtest.h>
#include <sys/stat.h>

#include "mac/Version.h"
#include "tests/SettingsHome.h"
#include "tests/mac/RunProgram.h"

namespace {

class KestrailPackTest : public SettingsHomeTest {
 protected:
  ProgramRun Pack(std::vector<std::string> arguments) {
    return RunProgram(KESTRAIL_PACK, arguments);
  }
  ScopedVariable m_ui{"KESTRAIL_UI", "text"};
};

// What goes into a package, and that it unpacks, is the library's round trip; here, where it goes
// and why a file was not packaged.
TEST_F(KestrailPackTest, PackagesOrSaysWhyNot) {
  m_temp.Write("in/good", "Cyclonix\rx");
  m_temp.Write("in/unknown", "Whirlpool\rx");
  m_temp.Write("in/done", "Cyclonix\ry");
  m_temp.Write("in/done.f1s", "kept");
  ASSERT_EQ(0, mkfifo(m_temp.Path("in/fifo").c_str(), 0600));  // answered at once, never waited on
  ProgramRun run =
      Pack({m_temp.Path("in/good"), m_temp.Path("in/unknown"), m_temp.Path("in/missing"),
            m_temp.Path("in/done"), m_temp.Path("in/fifo")});
  EXPECT_EQ(1, run.status);
  EXPECT_EQ(m_temp.Path("in/good.f1s") + "\n", run.out);
  EXPECT_NE(std::string::npos, run.err.find("unknown: unknown filter \"Whirlpool\""));
  EXPECT_NE(std::string::npos, run.err.find("missing: no such file"));
  EXPECT_NE(std::string::npos, run.err.find("done: a package already exists"));
  EXPECT_NE(std::string::npos, run.err.find("fifo: not a settings file")) << run.err;
  EXPECT_EQ("kept", m_temp.Contents("in/done.f1s"));
  EXPECT_FALSE(std::filesystem::exists(m_temp.Path("in/unknown.f1s")));

  std::filesystem::create_directory(m_temp.Path("out"));
  run = Pack({"--into", m_temp.Path("out"), m_temp.Path("in/good")});
  EXPECT_EQ(0, run.status) << run.err;
  EXPECT_EQ(m_temp.Path("out/good.f1s") + "\n", run.out);  // read back from the package made

  // The program's own command line; the reader's rules are its own table's.
  EXPECT_EQ(2, Pack({}).status);
  for (const std::string& into : {m_temp.Path("in/good"), std::string()}) {
    EXPECT_EQ(2, Pack({"--into", into, m_temp.Path("in/good")}).status) << "--into " << into;
  }
  EXPECT_NE(std::string::npos, Pack({"--help"}).out.find("--into FOLDER"));
  EXPECT_EQ(std::string("kestrail-pack ") + kVersion + "\n", Pack({"--version"}).out);
}

}  // namespace
