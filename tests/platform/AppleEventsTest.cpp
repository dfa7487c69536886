#include <gtest/gtest.h>

#include <string>

#include "platform/AppleEvents.h"

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

}  // namespace
