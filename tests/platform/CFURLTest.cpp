#include <gtest/gtest.h>

#include <filesystem>
#include <memory>
#include <string>

#include "platform/CFHolder.h"
#include "platform/CoreFoundation.h"
#include "platform/Files.h"
#include "tests/TempFolder.h"

namespace {

std::string Utf8(CFStringRef string) {
  if (string == nullptr) return "(null)";
  char buffer[4096];
  if (!CFStringGetCString(string, buffer, sizeof buffer, kCFStringEncodingUTF8)) return "(bad)";
  return buffer;
}

TEST(CFURLTest, FileURLOfAReferenceGivesBackItsPath) {
  TempFolder temp;
  ASSERT_FALSE(temp.Path().empty());
  const std::string folder = temp.Path("a b%\xC3\xA9");
  std::filesystem::create_directory(folder);
  FSRef ref;
  ASSERT_EQ(noErr, FSPathMakeRef(reinterpret_cast<const UInt8*>(folder.c_str()), &ref, nullptr));
  auto url = CFHold(CFURLCreateFromFSRef(nullptr, &ref));
  ASSERT_NE(nullptr, url);
  auto path = CFHold(CFURLCopyFileSystemPath(url.get(), kCFURLPOSIXPathStyle));
  EXPECT_EQ(folder, Utf8(path.get()));
  const FSRef nothing = {};
  EXPECT_EQ(nullptr, CFURLCreateFromFSRef(nullptr, &nothing));
}

}  // namespace
