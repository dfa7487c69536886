#include <gtest/gtest.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <chrono>
#include <cstring>
#include <filesystem>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "platform/Files.h"
#include "tests/ScopedVariable.h"
#include "tests/TempFolder.h"

namespace {

namespace fs = std::filesystem;

class FilesTest : public testing::Test {
 protected:
  void SetUp() override {
    // The folder under test lies one level down, so that anything that escapes it shows.
    fs::create_directory(m_temp.Path("inner"));
    ASSERT_EQ(noErr, PathRef(m_temp.Path("inner"), m_inner));
  }

  static OSErr PathRef(const std::string& path, FSRef& ref) {
    return FSPathMakeRef(reinterpret_cast<const UInt8*>(path.c_str()), &ref, nullptr);
  }
  static OSErr Child(const FSRef& folder, const std::u16string& name, FSRef& child) {
    const std::vector<UniChar> units = Units(name);
    return FSMakeFSRefUnicode(&folder, units.size(), units.data(), kTextEncodingUnicodeDefault,
                              &child);
  }
  static OSErr Info(const FSRef& ref) {
    return FSGetCatalogInfo(&ref, kFSCatInfoNone, nullptr, nullptr, nullptr, nullptr);
  }
  static OSErr CreateFile(const FSRef& folder, const std::u16string& name, FSRef* file,
                          const FSCatalogInfo* info = nullptr) {
    const std::vector<UniChar> units = Units(name);
    return FSCreateFileUnicode(&folder, units.size(), units.data(),
                               info ? kFSCatInfoFinderInfo : kFSCatInfoNone, info, file, nullptr);
  }

  TempFolder m_temp;
  FSRef m_inner;
};

TEST_F(FilesTest, BadNamesAreRefusedAndNothingLeavesTheFolder) {
  struct Case {
    const char* label;
    std::u16string name;
    OSErr status;
  };
  const Case cases[] = {
      {"empty", u"", bdNamErr},
      {"dot", u".", bdNamErr},
      {"dot dot", u"..", bdNamErr},
      {"slash", u"a/b", bdNamErr},
      {"NUL", std::u16string(u"a\0b", 3), bdNamErr},
      {"lone high surrogate", u"a\xD800", bdNamErr},
      {"lone low surrogate", u"\xDC00z", bdNamErr},
      {"a temporary file's", u".kestrail-unfinished-1-1-0", bdNamErr},
      {"256 units", std::u16string(256, u'n'), errFSNameTooLong},
      {"256 bytes in UTF-8", std::u16string(128, u'\u00e9'), errFSNameTooLong},
  };
  FSRef existing;
  ASSERT_EQ(noErr, CreateFile(m_inner, u"existing", &existing));
  for (const Case& c : cases) {
    SCOPED_TRACE(c.label);
    const std::vector<UniChar> name = Units(c.name);
    FSRef ref;
    EXPECT_EQ(c.status, Child(m_inner, c.name, ref));
    EXPECT_EQ(c.status, CreateFile(m_inner, c.name, &ref));
    EXPECT_EQ(c.status, FSCreateDirectoryUnicode(&m_inner, name.size(), name.data(), 0, nullptr,
                                                 &ref, nullptr, nullptr));
    EXPECT_EQ(c.status, FSRenameUnicode(&existing, name.size(), name.data(), 0, &ref));
  }
  EXPECT_EQ(std::set<std::string>{"inner"}, m_temp.Names("."));
  EXPECT_EQ(std::set<std::string>{"existing"}, m_temp.Names("inner"));
  FSRef longest;
  EXPECT_EQ(noErr, CreateFile(m_inner, std::u16string(255, u'n'), &longest));
}

TEST_F(FilesTest, LookupTellsMissingFromMisuseAndFromGone) {
  FSRef file, deleted, replaced, ref;
  ASSERT_EQ(noErr, CreateFile(m_inner, u"file", &file));
  const FSRef nothing = {};
  EXPECT_EQ(fnfErr, Child(m_inner, u"missing", ref));
  EXPECT_EQ(dirNFErr, Child(file, u"x", ref));
  EXPECT_EQ(nsvErr, Child(nothing, u"x", ref));
  EXPECT_EQ(fnfErr, PathRef(m_temp.Path("inner/missing"), ref));

  // A reference outlives its object, but answers for no other object that takes its name.
  ASSERT_EQ(noErr, CreateFile(m_inner, u"deleted", &deleted));
  ASSERT_EQ(noErr, CreateFile(m_inner, u"replaced", &replaced));
  ASSERT_EQ(noErr, FSDeleteObject(&deleted));
  m_temp.Write("inner/new", "new");
  fs::rename(m_temp.Path("inner/new"), m_temp.Path("inner/replaced"));
  EXPECT_EQ(fnfErr, Info(deleted));
  EXPECT_EQ(fnfErr, Info(replaced));
  EXPECT_EQ(dirNFErr, CreateFile(deleted, u"x", &ref));
}

// References compare by object, through links; links inside the folder lead nowhere outside unless
// resolved, and only a link of the user's own (or root's) is resolved.
TEST_F(FilesTest, Links) {
  m_temp.Write("inner/target", "x");
  fs::create_symlink("target", m_temp.Path("inner/soft"));
  fs::create_hard_link(m_temp.Path("inner/target"), m_temp.Path("inner/hard"));
  fs::create_directory(m_temp.Path("outside"));
  fs::create_directory_symlink(m_temp.Path("outside"), m_temp.Path("inner/folder-link"));
  fs::create_symlink(m_temp.Path("outside/planted"), m_temp.Path("inner/dangling"));
  FSRef target, viaPath, hard, link, folderLink, outside, ref;
  ASSERT_EQ(noErr, Child(m_inner, u"target", target));
  ASSERT_EQ(noErr, PathRef(m_temp.Path("inner/soft"), viaPath));
  ASSERT_EQ(noErr, Child(m_inner, u"hard", hard));
  ASSERT_EQ(noErr, Child(m_inner, u"soft", link));
  EXPECT_EQ(noErr, FSCompareFSRefs(&target, &viaPath));  // a path follows the link
  EXPECT_EQ(noErr, FSCompareFSRefs(&target, &hard));
  EXPECT_EQ(errFSRefsDifferent, FSCompareFSRefs(&target, &link));  // a name is the link itself
  ASSERT_EQ(noErr, Child(m_inner, u"folder-link", folderLink));
  EXPECT_EQ(dirNFErr, CreateFile(folderLink, u"x", &ref));
  EXPECT_EQ(dupFNErr, CreateFile(m_inner, u"dangling", &ref));
  EXPECT_TRUE(fs::is_empty(m_temp.Path("outside")));

  ASSERT_EQ(noErr, PathRef(m_temp.Path("outside"), outside));
  struct Case {
    const char* label;
    std::u16string name;
    bool foreign;  // the link belongs to another user
    OSErr status;
    bool aliased, folder;
  };
  const Case cases[] = {
      {"not a link", u"target", false, noErr, false, false},
      {"a link to a folder", u"folder-link", false, noErr, true, true},
      {"a link to nothing", u"dangling", false, fnfErr, true, false},
      {"another user's link", u"folder-link", true, untrustedLinkErr, true, true},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.label);
    const std::string path = m_temp.Path("inner/") + fs::path(c.name).string();
    // Only root can give a link away.
    if (c.foreign && (geteuid() != 0 || lchown(path.c_str(), 4242, 4242) != 0)) continue;
    ASSERT_EQ(noErr, Child(m_inner, c.name, ref));
    Boolean aliased = false, folder = false;
    EXPECT_EQ(c.status, FSResolveAliasFile(&ref, true, &folder, &aliased));
    EXPECT_EQ(c.aliased, aliased != 0);
    if (c.status != noErr) continue;
    EXPECT_EQ(c.folder, folder != 0);
    if (c.folder) {
      EXPECT_EQ(noErr, FSCompareFSRefs(&ref, &outside));
    }
  }
}

// A folder, once found, is the one every later call works in: moved, and its place taken by a link
// to another folder, it still receives what is made in it, and its path says where it is now.
// Removed, it is gone for its references.
TEST_F(FilesTest, AFolderFoundIsHeldWhereverItGoes) {
  const std::vector<UniChar> name = Units(u"held");
  FSRef held, file;
  ASSERT_EQ(noErr, FSCreateDirectoryUnicode(&m_inner, name.size(), name.data(), 0, nullptr, &held,
                                            nullptr, nullptr));
  fs::create_directory(m_temp.Path("elsewhere"));
  fs::rename(m_temp.Path("inner/held"), m_temp.Path("moved"));
  fs::create_directory_symlink(m_temp.Path("elsewhere"), m_temp.Path("inner/held"));
  ASSERT_EQ(noErr, CreateFile(held, u"made", &file));
  EXPECT_TRUE(fs::is_empty(m_temp.Path("elsewhere")));
  EXPECT_TRUE(fs::exists(m_temp.Path("moved/made")));
  UInt8 path[1024];
  ASSERT_EQ(noErr, FSRefMakePath(&file, path, sizeof path));
  EXPECT_EQ(m_temp.Path("moved/made"), reinterpret_cast<const char*>(path));
  HFSUniStr255 heldName;
  ASSERT_EQ(noErr, FSGetCatalogInfo(&held, kFSCatInfoNone, nullptr, &heldName, nullptr, nullptr));
  EXPECT_EQ(u"moved", std::u16string(heldName.unicode, heldName.unicode + heldName.length));

  fs::remove_all(m_temp.Path("moved"));
  FSRef ref;
  EXPECT_EQ(fnfErr, Info(held));
  EXPECT_EQ(fnfErr, Info(file));
  EXPECT_EQ(dirNFErr, CreateFile(held, u"x", &ref));
}

TEST_F(FilesTest, CreatedFileCarriesFinderInfoOnDisk) {
  FSCatalogInfo info = {};
  FileInfo finder = {MakeFourCharCode("TEXT"), MakeFourCharCode("    "), 0, {0, 0}, 0};
  std::memcpy(info.finderInfo, &finder, sizeof finder);
  FSRef file;
  ASSERT_EQ(noErr, CreateFile(m_inner, u"typed", &file, &info));
  unsigned char raw[32];
  const std::string path = m_temp.Path("inner/typed");
  if (getxattr(path.c_str(), "user.com.apple.FinderInfo", raw, sizeof raw) < 0)
    GTEST_SKIP() << "no extended attributes on this file system";
  EXPECT_EQ(0, std::memcmp(raw, "TEXT    ", 8));
}

// A temporary file that a killed process left behind goes once it has not changed for ten
// minutes; a newer one may still have a writer. Only files of exactly the form Kestrail makes, of
// this user's, are its own: a user's file that merely begins like one stays.
TEST_F(FilesTest, StaleTemporaryFilesGo) {
  const std::string prefix = ".kestrail-unfinished-";
  const auto now = fs::file_time_type::clock::now();
  struct Case {
    std::string name;
    int minutes;
    bool folder, otherOwner, goes;
  };
  const Case cases[] = {
      {prefix + "41-7-0123456789abcdef", 11, false, false, true},
      {prefix + "42-7-0123456789abcdef", 9, false, false, false},
      {prefix + "notes.txt", 60, false, false, false},
      {prefix + "43-7-0123456789ABCDEF", 60, false, false, false},
      {prefix + "44-7-0123456789abcdef0", 60, false, false, false},
      {prefix + "45-7-0123456789abcdef", 60, true, false, false},
      {prefix + "46-7-0123456789abcdef", 60, false, true, false},
  };
  std::set<std::string> staying;
  for (const Case& c : cases) {
    const std::string path = m_temp.Path("inner/" + c.name);
    if (c.folder)
      fs::create_directory(path);
    else
      m_temp.Write("inner/" + c.name, "x");
    // Only root can give a file away; others have no one else's file to tell apart.
    if (c.otherOwner && (geteuid() != 0 || lchown(path.c_str(), 4242, 4242) != 0)) {
      fs::remove(path);
      continue;
    }
    fs::last_write_time(path, now - std::chrono::minutes(c.minutes));
    if (!c.goes) staying.insert(c.name);
  }
  FSRef temporary;
  ASSERT_EQ(noErr, FSCreateTemporaryFile(&m_inner, kFSCatInfoNone, nullptr, &temporary));
  ASSERT_EQ(noErr, FSDeleteObject(&temporary));
  EXPECT_EQ(staying, m_temp.Names("inner"));
}

TEST_F(FilesTest, ApplicationSupportFollowsTheDesktopBaseDirectory) {
  const std::string data = m_temp.Path("data"), share = m_temp.Path("home/.local/share");
  struct Case {
    const char* label;
    std::optional<std::string> dataHome;
    FSVolumeRefNum domain;
    std::string expected;
  };
  const Case cases[] = {
      {"XDG_DATA_HOME", data + "/deep", kUserDomain, data + "/deep"},
      {"unset: under HOME", std::nullopt, kOnSystemDisk, share},
      {"relative: ignored", "relative/data", kUserDomain, share},
  };
  fs::create_directory(m_temp.Path("home"));
  ScopedVariable home("HOME", m_temp.Path("home").c_str());
  for (const Case& c : cases) {
    SCOPED_TRACE(c.label);
    ScopedVariable dataHome("XDG_DATA_HOME", c.dataHome ? c.dataHome->c_str() : nullptr);
    const OSType type = kApplicationSupportFolderType;
    FSRef folder;
    UInt8 path[1024];
    EXPECT_EQ(fnfErr, FSFindFolder(c.domain, type, kDontCreateFolder, &folder));
    ASSERT_EQ(noErr, FSFindFolder(c.domain, type, kCreateFolder, &folder));
    ASSERT_EQ(noErr, FSRefMakePath(&folder, path, sizeof path));
    EXPECT_EQ(c.expected, reinterpret_cast<const char*>(path));
    EXPECT_EQ(noErr, FSFindFolder(c.domain, type, kDontCreateFolder, &folder));
    fs::remove_all(m_temp.Path("home/.local"));
  }
}

}  // namespace
