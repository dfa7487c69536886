#include <gtest/gtest.h>

#include <filesystem>
#include <set>
#include <string>
#include <vector>

#include "ovlib/base_ui_framework/mac/MacUtil.h"
#include "ovlib/general_framework/OVFileSystemReferenceMac.h"
#include "ovlib/ps_filter_framework/SettingsUtils.h"
#include "tests/FaultyDisk.h"
#include "tests/SettingsHome.h"

namespace {

namespace fs = std::filesystem;

class OVFileSystemReferenceTest : public SettingsHomeTest {
 protected:
  void SetUp() override {
    SettingsHomeTest::SetUp();
    ASSERT_EQ(0, Ref("in").CreateDirectory(L"destination", m_destination));
  }

  OVFileSystemReference m_destination;  // in/destination, made by the library
};

// A missing child is an answer and a bad name a failure, neither of them a bug; a file's parent
// is its folder, and the root's names nothing.
TEST_F(OVFileSystemReferenceTest, LookupsAndParents) {
  OVFileSystemReference in = Ref("in"), root, parent;
  ASSERT_EQ(0, Input("present", "x").MakeParentReference(parent));
  EXPECT_EQ(noErr, FSCompareFSRefs(parent, in));
  bool exists = false;
  EXPECT_EQ(0, in.SubobjectExists(L"present", exists));
  EXPECT_TRUE(exists);
  EXPECT_EQ(0, in.SubobjectExists(L"missing", exists));
  EXPECT_FALSE(exists);
  exists = true;
  EXPECT_EQ(-1, in.SubobjectExists(L"..", exists));
  EXPECT_FALSE(exists);
  EXPECT_TRUE(m_alerts.m_vecAlerts.empty());
  ASSERT_EQ(noErr, FSPathMakeRef(reinterpret_cast<const UInt8*>("/"), root, nullptr));
  EXPECT_EQ(0, root.MakeParentReference(parent));
  EXPECT_FALSE(parent.Exists());
}

TEST_F(OVFileSystemReferenceTest, MisuseIsReportedAndTheOperationFails) {
  OVFileSystemReference file = Input("file", "x"), nothing, child;
  bool exists;
  EXPECT_FALSE(nothing.IsFile());
  EXPECT_TRUE(Reported("IsFile"));
  EXPECT_FALSE(nothing.IsFolder());
  EXPECT_TRUE(Reported("IsFolder"));
  EXPECT_EQ(-1, file.MakeSubobjectReference(L"x", child));
  EXPECT_TRUE(Reported("MakeSubobjectReference"));
  EXPECT_EQ(-1, nothing.SubobjectExists(L"x", exists));
  EXPECT_TRUE(Reported("SubobjectExists"));
  EXPECT_EQ(-1, file.CreateDirectory(L"x", child));
  EXPECT_TRUE(Reported("CreateDirectory"));

  // A folder that another process removed is the disk's doing, not a bug: it fails unreported.
  m_alerts.m_vecAlerts.clear();
  fs::remove(m_temp.Path("in/destination"));
  EXPECT_FALSE(m_destination.IsFolder());
  EXPECT_EQ(-1, m_destination.SubobjectExists(L"x", exists));
  EXPECT_EQ(-1, m_destination.MakeSubobjectReference(L"x", child));
  EXPECT_TRUE(m_alerts.m_vecAlerts.empty());
}

TEST_F(OVFileSystemReferenceTest, CopyIsByteIdenticalAndTyped) {
  std::string large;  // more than the copy's buffer, NULs included
  for (int i = 0; i < 10000; ++i) large += static_cast<char>(i * 7 % 256);
  for (const std::string& contents : {large, std::string()}) {
    SCOPED_TRACE(contents.size());
    OVFileSystemReference source = Input("source", contents), copy;
    fs::permissions(m_temp.Path("in/source"), fs::perms::owner_read);  // a read-only source copies
    ASSERT_EQ(0, source.Copy(m_destination, copy, true));
    EXPECT_EQ(contents, m_temp.Contents("in/destination/source"));
    EXPECT_EQ("in/destination/source", Relative(copy));
    FinderInfo info;
    ASSERT_EQ(noErr, FSGetFinderInfo(copy, &info, nullptr, nullptr));
    if (info.file.fileType != 0) {  // zero where the file system keeps no Finder information
      EXPECT_EQ(MakeFourCharCode("TEXT"), info.file.fileType);
      EXPECT_EQ(MakeFourCharCode("    "), info.file.fileCreator);
    }
    fs::remove(m_temp.Path("in/source"));
  }
}

TEST_F(OVFileSystemReferenceTest, CopyOntoAnExistingName) {
  m_temp.Write("in/destination/setting", "old");
  OVFileSystemReference source = Input("setting", "new"), copy;
  EXPECT_EQ(-1, source.Copy(m_destination, copy, false));
  EXPECT_EQ("old", m_temp.Contents("in/destination/setting"));
  EXPECT_FALSE(copy.Exists());
  EXPECT_EQ(0, source.Copy(m_destination, copy, true));
  EXPECT_EQ("new", m_temp.Contents("in/destination/setting"));
  // A source written since the state its caller saw is not what the caller means to copy.
  OVFileVersion seen;
  ASSERT_EQ(0, source.GetVersion(seen));
  m_temp.Write("in/setting", "newer");
  EXPECT_EQ(-1, source.Copy(m_destination, copy, true, &seen));
  EXPECT_EQ("new", m_temp.Contents("in/destination/setting"));
  // Into its own folder, the existing object is the source itself: it must survive.
  EXPECT_EQ(-1, source.Copy(Ref("in"), copy, true));
  EXPECT_EQ("newer", m_temp.Contents("in/setting"));
}

// Kept beside a setting of its name, a copy takes the first free numbered name, the number before
// the extension, and never replaces anything.
TEST_F(OVFileSystemReferenceTest, CopyUnderANumberedName) {
  const struct {
    const char* name;
    std::vector<std::string> taken;
    const char* numbered;
  } cases[] = {
      {"Soft Edges.xml", {"Soft Edges.xml"}, "Soft Edges 2.xml"},
      {"a.b.xml", {"a.b.xml", "a.b 2.xml", "a.b 3.xml"}, "a.b 4.xml"},
      {"NoExtension", {"NoExtension"}, "NoExtension 2"},
      {".xml", {".xml"}, ".xml 2"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    fs::remove_all(m_temp.Path("in/destination"));
    fs::create_directory(m_temp.Path("in/destination"));
    for (const std::string& name : c.taken) m_temp.Write("in/destination/" + name, "taken");
    OVFileSystemReference source = Input(c.name, "new"), copy;
    ASSERT_EQ(0, source.Copy(Ref("in/destination"), copy, false, nullptr, {true, false, nullptr}));
    EXPECT_EQ("in/destination/" + std::string(c.numbered), Relative(copy));
    EXPECT_EQ("new", m_temp.Contents("in/destination/" + std::string(c.numbered)));
    for (const std::string& name : c.taken)
      EXPECT_EQ("taken", m_temp.Contents("in/destination/" + name));
  }
}

// Both ways a setting is installed over an older one, a copy and an unpacked package, with each
// disk call they make failed in turn, the older one deleted or put in the Trash: the older setting
// survives byte for byte and nothing else is left in the folder, unless the failure came after the
// new file took its name; and the older one is at its place or in the Trash.
TEST_F(OVFileSystemReferenceTest, InstallsThatFailLeaveTheFolderAsItWas) {
  const std::string older = "the older setting", newer(3 * 4096 + 7, 'n');
  OVFileSystemReference source = Input("setting", newer);
  OVFileSystemReference package = Input(
      "package", "<oldstyle_setting name=\"setting\"><![CDATA[" + newer + "]]></oldstyle_setting>");
  int tried[2] = {};  // failure points, without the Trash and with it
  for (bool trash : {false, true}) {
    for (bool unpacking : {false, true}) {
      for (int call = 0; call < static_cast<int>(DiskCall::kCount); ++call) {
        for (int nth = 1;; ++nth) {
          SCOPED_TRACE(testing::Message()
                       << (trash ? "to the Trash, " : "") << (unpacking ? "unpacking" : "copy")
                       << ", call " << call << ", #" << nth);
          m_temp.Write("in/destination/setting", older);
          fs::remove_all(m_temp.Path("home/data/Trash"));
          FaultyDisk disk(static_cast<DiskCall>(call), nth);
          ScopedDiskBackend faulty(disk);
          OVFileSystemReference installed;
          const OVNewFileOptions options = {false, trash, nullptr};
          const int status = unpacking
                                 ? SettingsUtils::UnpackageOldSettingsFile(
                                       package, m_destination, installed, true, nullptr, options)
                                 : source.Copy(m_destination, installed, true, nullptr, options);
          const std::string there = m_temp.Contents("in/destination/setting");
          const std::string trashed = m_temp.Contents("home/data/Trash/files/setting");
          if (!disk.Failed()) {
            EXPECT_EQ(0, status);
            EXPECT_EQ(trash ? older : "", trashed);
            break;
          }
          ++tried[trash];
          EXPECT_EQ(status == 0 ? newer : older, there);
          EXPECT_EQ(std::set<std::string>{"setting"}, m_temp.Names("in/destination"));
          EXPECT_TRUE(!trash || there == older || trashed == older);
        }
      }
    }
  }
  RecordProperty("FailurePointsDeleting", tried[0]);
  RecordProperty("FailurePointsTrashing", tried[1]);
  EXPECT_GT(tried[1], tried[0]);
}

// In its folder the reference follows the file, and a taken name leaves it where it was.
TEST_F(OVFileSystemReferenceTest, Rename) {
  OVFileSystemReference file = Input("before", "x");
  Input("taken", "y");
  EXPECT_EQ(-1, file.Rename(L"taken"));
  ASSERT_EQ(0, file.Rename(L"after"));
  EXPECT_FALSE(fs::exists(m_temp.Path("in/before")));
  EXPECT_EQ("y", m_temp.Contents("in/taken"));
  EXPECT_TRUE(m_alerts.m_vecAlerts.empty());
}

}  // namespace
