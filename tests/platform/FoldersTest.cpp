#include <gtest/gtest.h>

#include <filesystem>
#include <optional>
#include <string>

#include "platform/Files.h"
#include "tests/ScopedVariable.h"
#include "tests/TempFolder.h"

namespace {

namespace fs = std::filesystem;

std::string PathOf(const FSRef& ref) {
  UInt8 path[1024];
  if (FSRefMakePath(&ref, path, sizeof path) != noErr) return std::string();
  return reinterpret_cast<const char*>(path);
}

TEST(FSFindFolderTest, ApplicationSupportFollowsTheDesktopBaseDirectory) {
  TempFolder temp;
  ASSERT_FALSE(temp.Path().empty());
  struct Case {
    const char* label;
    std::optional<std::string> dataHome;
    FSVolumeRefNum domain;
    OSType type;
    std::string expected;
  };
  const Case cases[] = {
      {"XDG_DATA_HOME", temp.Path("data/deep"), kUserDomain, kApplicationSupportFolderType,
       temp.Path("data/deep")},
      {"unset: HOME/.local/share", std::nullopt, kOnSystemDisk, kApplicationSupportFolderType,
       temp.Path("home/.local/share")},
      {"relative value ignored", "relative/data", kUserDomain, kApplicationSupportFolderType,
       temp.Path("home/.local/share")},
      {"frameworks", temp.Path("data"), kOnAppropriateDisk, kFrameworksFolderType,
       temp.Path("data/Frameworks")},
  };
  fs::create_directory(temp.Path("home"));
  ScopedVariable home("HOME", temp.Path("home").c_str());
  for (const Case& c : cases) {
    SCOPED_TRACE(c.label);
    ScopedVariable dataHome("XDG_DATA_HOME", c.dataHome ? c.dataHome->c_str() : nullptr);
    FSRef folder;
    EXPECT_EQ(fnfErr, FSFindFolder(c.domain, c.type, kDontCreateFolder, &folder));
    ASSERT_EQ(noErr, FSFindFolder(c.domain, c.type, kCreateFolder, &folder));
    EXPECT_EQ(c.expected, PathOf(folder));
    EXPECT_EQ(noErr, FSFindFolder(c.domain, c.type, kDontCreateFolder, &folder));
    fs::remove_all(temp.Path("home/.local"));
  }
}

}  // namespace
