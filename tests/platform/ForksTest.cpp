#include <gtest/gtest.h>

#include <fstream>
#include <string>

#include "platform/Files.h"
#include "tests/TempFolder.h"

namespace {

class ForksTest : public testing::Test {
 protected:
  void SetUp() override {
    ASSERT_FALSE(m_temp.Path().empty());
    std::ofstream(m_temp.Path("file"), std::ios::binary) << "0123456789";
    const std::string path = m_temp.Path("file");
    ASSERT_EQ(noErr, FSPathMakeRef(reinterpret_cast<const UInt8*>(path.c_str()), &m_file, nullptr));
  }

  TempFolder m_temp;
  FSRef m_file;
};

TEST_F(ForksTest, ReadsStopAtTheEndWithEofErr) {
  SInt16 fork;
  ASSERT_EQ(noErr, FSOpenFork(&m_file, 0, nullptr, fsRdPerm, &fork));
  char buffer[16] = {};
  ByteCount got = 0;
  EXPECT_EQ(noErr, FSReadFork(fork, fsFromStart | noCacheMask, 2, 3, buffer, &got));
  EXPECT_EQ(3u, got);
  EXPECT_EQ("234", std::string(buffer, got));
  EXPECT_EQ(noErr, FSReadFork(fork, fsAtMark, 0, 2, buffer, &got));  // the mark moved on
  EXPECT_EQ("56", std::string(buffer, got));
  EXPECT_EQ(eofErr, FSReadFork(fork, fsFromLEOF, -3, 8, buffer, &got));
  EXPECT_EQ("789", std::string(buffer, got));
  EXPECT_EQ(posErr, FSSetForkPosition(fork, fsFromStart, -1));
  EXPECT_EQ(noErr, FSCloseFork(fork));
  EXPECT_EQ(rfNumErr, FSCloseFork(fork));
  EXPECT_EQ(rfNumErr, FSReadFork(fork, fsAtMark, 0, 1, buffer, &got));
}

TEST_F(ForksTest, WritesAndSizesTheFork) {
  SInt16 fork;
  ASSERT_EQ(noErr, FSOpenFork(&m_file, 0, nullptr, fsWrPerm, &fork));
  EXPECT_EQ(noErr, FSSetForkSize(fork, fsFromStart, 4));
  ByteCount put = 0;
  EXPECT_EQ(noErr, FSWriteFork(fork, fsFromLEOF, 0, 2, "ab", &put));
  EXPECT_EQ(2u, put);
  SInt64 size = 0;
  EXPECT_EQ(noErr, FSGetForkSize(fork, &size));
  EXPECT_EQ(6, size);
  EXPECT_EQ(noErr, FSCloseFork(fork));
  std::ifstream in(m_temp.Path("file"), std::ios::binary);
  EXPECT_EQ("0123ab", std::string(std::istreambuf_iterator<char>(in), {}));
}

TEST_F(ForksTest, OnlyTheDataForkOfAFileOpens) {
  FSRef folder;
  ASSERT_EQ(noErr, FSPathMakeRef(m_temp.PosixPath(), &folder, nullptr));
  const UniChar resource[] = {'R'};
  SInt16 fork;
  EXPECT_EQ(notAFileErr, FSOpenFork(&folder, 0, nullptr, fsRdPerm, &fork));
  EXPECT_EQ(errFSForkNotFound, FSOpenFork(&m_file, 1, resource, fsRdPerm, &fork));
  HFSUniStr255 dataFork;
  ASSERT_EQ(noErr, FSGetDataForkName(&dataFork));
  EXPECT_EQ(0, dataFork.length);
}

}  // namespace
