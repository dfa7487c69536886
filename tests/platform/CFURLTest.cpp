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

CFURLRef Url(const char* text) {
  Holder string = Hold(CFStringCreateWithCString(nullptr, text, kCFStringEncodingUTF8));
  return CFURLCreateWithString(nullptr, static_cast<CFStringRef>(string.get()), nullptr);
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

TEST(CFURLTest, CreateWithStringRefusesWhatAURLCannotHold) {
  struct Case {
    const char* label;
    const char* text;
    bool valid;
  };
  const Case cases[] = {
      {"web page", "https://example.com/support?q=a+b#top", true},
      {"escape", "https://example.com/a%20b", true},
      {"mail", "mailto:support@example.com", true},
      {"space", "https://example.com/a b", false},
      {"broken escape", "https://example.com/%2", false},
      {"non-hex escape", "https://example.com/%zz", false},
      {"non-ASCII", "https://example.com/\xC3\xA9", false},
      {"empty", "", false},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.label);
    Holder url = Hold(Url(c.text));
    EXPECT_EQ(c.valid, url != nullptr);
  }
}

TEST(CFURLTest, AppendedComponentStaysOneComponent) {
  Holder base = Hold(Url("file:///opt/Frameworks/"));
  Holder noSlash = Hold(Url("file:///opt/Frameworks"));
  Holder component = Hold(CFSTR("../Kit 2.framework"));
  for (const Holder* url : {&base, &noSlash}) {
    Holder appended = Hold(
        CFURLCreateCopyAppendingPathComponent(nullptr, static_cast<CFURLRef>(url->get()),
                                              static_cast<CFStringRef>(component.get()), false));
    Holder path =
        Hold(CFURLCopyFileSystemPath(static_cast<CFURLRef>(appended.get()), kCFURLPOSIXPathStyle));
    EXPECT_EQ("/opt/Frameworks/../Kit 2.framework", Utf8(static_cast<CFStringRef>(path.get())));
  }
  Holder web = Hold(Url("https://example.com/"));
  EXPECT_EQ(nullptr,
            CFURLCopyFileSystemPath(static_cast<CFURLRef>(web.get()), kCFURLPOSIXPathStyle));
}

TEST(CFBundleTest, BundleNeedsAFolderAndLoadNeedsItsExecutable) {
  TempFolder temp;
  ASSERT_FALSE(temp.Path().empty());
  std::filesystem::create_directory(temp.Path("Empty.framework"));
  Holder missing = Hold(Url(("file://" + temp.Path("Missing.framework")).c_str()));
  Holder empty = Hold(Url(("file://" + temp.Path("Empty.framework")).c_str()));
  EXPECT_EQ(nullptr, CFBundleCreate(nullptr, static_cast<CFURLRef>(missing.get())));
  CFBundleRef bundle = CFBundleCreate(nullptr, static_cast<CFURLRef>(empty.get()));
  ASSERT_NE(nullptr, bundle);
  EXPECT_FALSE(CFBundleLoadExecutable(bundle));
  CFRelease(bundle);
}

}  // namespace
