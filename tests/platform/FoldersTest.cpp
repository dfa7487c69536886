#include <gtest/gtest.h>
#include <stdlib.h>

#include <filesystem>
#include <optional>
#include <string>

#include "platform/Files.h"
#include "tests/TempFolder.h"

namespace {

namespace fs = std::filesystem;

// Sets an environment variable (or unsets it, for null) until the end of the scope.
class ScopedVariable {
 public:
  ScopedVariable(const char* name, const char* value) : m_name(name) {
    if (const char* old = getenv(name)) m_old = old;
    value != nullptr ? setenv(name, value, 1) : unsetenv(name);
  }
  ~ScopedVariable() { m_old ? setenv(m_name, m_old->c_str(), 1) : unsetenv(m_name); }

 private:
  const char* m_name;
  std::optional<std::string> m_old;
};

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

TEST(FSFindFolderTest, FailsWithoutABaseDirectory) {
  ScopedVariable home("HOME", nullptr);
  ScopedVariable dataHome("XDG_DATA_HOME", nullptr);
  FSRef folder;
  EXPECT_EQ(fnfErr,
            FSFindFolder(kUserDomain, kApplicationSupportFolderType, kCreateFolder, &folder));
}

TEST(FSFindFolderTest, UnknownFolderTypeIsNotFound) {
  FSRef folder;
  EXPECT_EQ(fnfErr, FSFindFolder(kUserDomain, MakeFourCharCode("pref"), kCreateFolder, &folder));
}

}  // namespace
