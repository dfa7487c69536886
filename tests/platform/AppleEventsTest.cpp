#include <gtest/gtest.h>

#include <filesystem>
#include <sstream>
#include <string>
#include <vector>

#include "platform/AppleEvents.h"
#include "platform/EventLoop.h"
#include "platform/Files.h"
#include "tests/TempFolder.h"

namespace {

TEST(AEGetNthPtrTest, ItemsComeBackByIndexAndType) {
  const DescType text = MakeFourCharCode("TEXT");
  AEDescList list;
  ASSERT_EQ(noErr, AECreateList(nullptr, 0, false, &list));
  ASSERT_EQ(noErr, AEPutPtr(&list, 0, text, "one", 3));
  ASSERT_EQ(noErr, AEPutPtr(&list, 0, text, "three", 5));
  struct Case {
    const char* label;
    long index;
    DescType type;
    Size maximumSize;
    OSErr status;
    std::string bytes;
    Size actualSize;
  };
  const Case cases[] = {
      {"first", 1, text, 16, noErr, "one", 3},
      {"cut to the buffer", 2, text, 2, noErr, "th", 5},
      {"index 0", 0, text, 16, errAEIllegalIndex, "", -1},
      {"past the end", 3, text, 16, errAEIllegalIndex, "", -1},
      {"text is no file", 1, typeFSRef, 16, errAECoercionFail, "", -1},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.label);
    char buffer[16] = {};
    Size actualSize = -1;
    EXPECT_EQ(c.status, AEGetNthPtr(&list, c.index, c.type, nullptr, nullptr, buffer, c.maximumSize,
                                    &actualSize));
    EXPECT_EQ(c.bytes, std::string(buffer));
    EXPECT_EQ(c.actualSize, actualSize);
  }
  EXPECT_EQ(noErr, AEDisposeDesc(&list));
  long count = 0;
  EXPECT_EQ(errAEWrongDataType, AECountItems(&list, &count));  // now a null descriptor
}

// What the open-documents handler saw, read the way the application reads its event.
struct Seen {
  long count = -1;  // until the handler counts the items
  OSErr firstItem = 1;
  FSRef first = {};
};
Seen s_seen;

OSErr RecordOpenDocuments(const AppleEvent* event, AppleEvent*, long) {
  AEDescList list;
  AEInitializeDesc(&list);
  OSErr err = AEGetParamDesc(event, keyDirectObject, typeAEList, &list);
  if (err == noErr) err = AECountItems(&list, &s_seen.count);
  if (err == noErr && s_seen.count > 0)
    err = s_seen.firstItem = AEGetNthPtr(&list, 1, typeFSRef, nullptr, nullptr, &s_seen.first,
                                         sizeof s_seen.first, nullptr);
  AEDisposeDesc(&list);
  QuitApplicationEventLoop();
  return err;
}

int StopReader(const std::vector<std::string>&, std::ostream& out, std::ostream&,
               std::vector<std::string>&) {
  out << "stopped\n";
  return 3;
}

TEST(EventLoopTest, CommandLine) {
  TempFolder temp;
  ASSERT_EQ(noErr, AEInstallEventHandler(kCoreEventClass, kAEOpenDocuments, RecordOpenDocuments, 0,
                                         false));
  temp.Write("a.xml", "<setting/>");
  FSRef a;
  ASSERT_EQ(noErr,
            FSPathMakeRef(reinterpret_cast<const UInt8*>(temp.Path("a.xml").c_str()), &a, nullptr));
  const std::string noGone =
      ProgramName() + ": " + temp.Path("gone") + ": No such file or directory\n";
  struct Case {
    const char* label;
    std::vector<std::string> arguments;
    int status;
    std::string out, err;
    long count;  // items of the event; -1 when there was none
    OSErr firstItem;
  };
  // Without a reader every argument is a file; a reader's status ends the loop before any event.
  const Case cases[] = {
      {"three files, relative", {"a.xml", "gone", "a.xml"}, -1, "", "", 3, noErr},
      {"missing file", {"gone", "a.xml"}, -1, "", noGone, 2, errAECoercionFail},
      {"no file", {}, -1, "", "", 0, 1},
      {"the reader ends it", {"stop", "a.xml"}, 3, "stopped\n", "", -1, 1},
  };
  const std::filesystem::path outer = std::filesystem::current_path();
  std::filesystem::current_path(temp.Path());
  for (const Case& c : cases) {
    SCOPED_TRACE(c.label);
    s_seen = Seen();
    std::ostringstream out, err;
    SetCommandLineReader(c.arguments.empty() || c.arguments[0] != "stop" ? nullptr : StopReader);
    EXPECT_EQ(c.status, RunEventLoop(c.arguments, out, err));
    EXPECT_EQ(c.out, out.str());
    EXPECT_EQ(c.err, err.str());
    EXPECT_EQ(c.count, s_seen.count);
    EXPECT_EQ(c.firstItem, s_seen.firstItem);
    EXPECT_TRUE(c.firstItem != noErr || FSCompareFSRefs(&a, &s_seen.first) == noErr);
  }
  std::filesystem::current_path(outer);
  SetCommandLineReader(nullptr);
}

}  // namespace
