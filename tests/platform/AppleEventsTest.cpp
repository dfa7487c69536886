#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <utility>

#include "platform/AppleEvents.h"
#include "platform/EventLoop.h"
#include "platform/Files.h"
#include "tests/TempFolder.h"

namespace {

const DescType kText = MakeFourCharCode("TEXT");

TEST(AEGetNthPtrTest, ItemsComeBackByIndexAndType) {
  AEDescList list;
  ASSERT_EQ(noErr, AECreateList(nullptr, 0, false, &list));
  ASSERT_EQ(noErr, AEPutPtr(&list, 0, kText, "one", 3));
  ASSERT_EQ(noErr, AEPutPtr(&list, 0, kText, "two", 3));
  ASSERT_EQ(noErr, AEPutPtr(&list, 3, kText, "three", 5));
  ASSERT_EQ(noErr, AEPutPtr(&list, 2, kText, "TWO", 3));  // replaces
  EXPECT_EQ(errAEIllegalIndex, AEPutPtr(&list, 5, kText, "five", 4));
  long count = 0;
  ASSERT_EQ(noErr, AECountItems(&list, &count));
  EXPECT_EQ(3, count);

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
      {"first", 1, kText, 16, noErr, "one", 3},
      {"replaced", 2, kText, 16, noErr, "TWO", 3},
      {"cut to the buffer", 3, kText, 2, noErr, "th", 5},
      {"index 0", 0, kText, 16, errAEIllegalIndex, "", -1},
      {"past the end", 4, kText, 16, errAEIllegalIndex, "", -1},
      {"text is no file", 1, typeFSRef, 16, errAECoercionFail, "", -1},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.label);
    char buffer[16] = {};
    Size actualSize = -1;
    DescType type = 0;
    EXPECT_EQ(c.status, AEGetNthPtr(&list, c.index, c.type, nullptr, &type, buffer, c.maximumSize,
                                    &actualSize));
    EXPECT_EQ(c.bytes, std::string(buffer));
    EXPECT_EQ(c.actualSize, actualSize);
    if (c.status == noErr) {
      EXPECT_EQ(c.type, type);
    }
  }
  EXPECT_EQ(noErr, AEDisposeDesc(&list));
  EXPECT_EQ(typeNull, list.descriptorType);
  EXPECT_EQ(errAEWrongDataType, AECountItems(&list, &count));
}

TEST(AEGetParamDescTest, ParametersAreCopiesOfTheirOwnType) {
  AppleEvent event;
  ASSERT_EQ(noErr, AECreateAppleEvent(kCoreEventClass, kAEOpenDocuments, nullptr,
                                      kAutoGenerateReturnID, kAnyTransactionID, &event));
  AEDescList list;
  ASSERT_EQ(noErr, AECreateList(nullptr, 0, false, &list));
  ASSERT_EQ(noErr, AEPutPtr(&list, 0, kText, "x", 1));
  ASSERT_EQ(noErr, AEPutParamDesc(&event, keyDirectObject, &list));
  AEDisposeDesc(&list);  // the event holds its own copy

  AEDescList got;
  AEInitializeDesc(&got);
  EXPECT_EQ(errAECoercionFail, AEGetParamDesc(&event, keyDirectObject, typeFSRef, &got));
  EXPECT_EQ(errAEDescNotFound, AEGetParamDesc(&event, MakeFourCharCode("prdt"), typeAEList, &got));
  ASSERT_EQ(noErr, AEGetParamDesc(&event, keyDirectObject, typeAEList, &got));
  AEDisposeDesc(&event);  // and so does the caller
  long count = 0;
  EXPECT_EQ(noErr, AECountItems(&got, &count));
  EXPECT_EQ(1, count);
  AEDisposeDesc(&got);
}

TEST(MakeOpenDocumentsEventTest, FilesBecomeReferencesWhenAskedFor) {
  TempFolder temp;
  ASSERT_FALSE(temp.Path().empty());
  temp.Write("a.xml", "<setting/>");
  const std::filesystem::path outer = std::filesystem::current_path();
  std::filesystem::current_path(temp.Path());  // relative paths start here
  AppleEvent event;
  const OSErr made = MakeOpenDocumentsEvent({"a.xml", temp.Path("b.xml"), "gone.xml"}, &event);
  std::filesystem::current_path(outer);
  ASSERT_EQ(noErr, made);
  temp.Write("b.xml", "made after the event");

  AEDescList list;
  ASSERT_EQ(noErr, AEGetParamDesc(&event, keyDirectObject, typeAEList, &list));
  long count = 0;
  ASSERT_EQ(noErr, AECountItems(&list, &count));
  EXPECT_EQ(3, count);
  const std::pair<long, std::string> files[] = {{1, "a.xml"}, {2, "b.xml"}};
  for (const auto& [index, name] : files) {
    SCOPED_TRACE(name);
    FSRef item, expected;
    Size size = 0;
    ASSERT_EQ(noErr,
              AEGetNthPtr(&list, index, typeFSRef, nullptr, nullptr, &item, sizeof item, &size));
    EXPECT_EQ(static_cast<Size>(sizeof item), size);
    const std::string path = temp.Path(name);
    ASSERT_EQ(noErr,
              FSPathMakeRef(reinterpret_cast<const UInt8*>(path.c_str()), &expected, nullptr));
    EXPECT_EQ(noErr, FSCompareFSRefs(&item, &expected));
  }
  AEDisposeDesc(&list);
  AEDisposeDesc(&event);
}

}  // namespace
