#include <gtest/gtest.h>

#include <filesystem>
#include <memory>
#include <string>

#include "platform/CoreFoundation.h"
#include "platform/Files.h"
#include "tests/TempFolder.h"

namespace {

using Holder = std::unique_ptr<const void, decltype(&CFRelease)>;

Holder Hold(CFTypeRef object) { return Holder(object, &CFRelease); }

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
  Holder url = Hold(CFURLCreateFromFSRef(nullptr, &ref));
  ASSERT_NE(nullptr, url);
  Holder path =
      Hold(CFURLCopyFileSystemPath(static_cast<CFURLRef>(url.get()), kCFURLPOSIXPathStyle));
  EXPECT_EQ(folder, Utf8(static_cast<CFStringRef>(path.get())));
  const FSRef nothing = {};
  EXPECT_EQ(nullptr, CFURLCreateFromFSRef(nullptr, &nothing));
}

}  // namespace
