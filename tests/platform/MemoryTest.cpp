// Large blocks: from the heap below 4 MB, mappings aligned to the large pages from there on.
#include "platform/Memory.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>

namespace {

TEST(MemoryTest, BlocksOfEverySizeCanBeFilledAndFreed) {
  const std::size_t kKilobyte = 1024, kMegabyte = 1024 * kKilobyte;
  for (const std::size_t bytes : {std::size_t{1}, 16 * kKilobyte, 4 * kMegabyte - 1, 4 * kMegabyte,
                                  5 * kMegabyte + 3, 64 * kMegabyte}) {
    auto* block = static_cast<char*>(AllocateMemoryBlock(bytes));
    ASSERT_NE(block, nullptr) << bytes;
    const std::uintptr_t alignment = bytes >= 4 * kMegabyte ? 2 * kMegabyte : alignof(max_align_t);
    EXPECT_EQ(reinterpret_cast<std::uintptr_t>(block) % alignment, 0u) << bytes;
    PrepareMemoryForWriting(block, bytes);
    std::memset(block, 0xA5, bytes);
    EXPECT_EQ(block[bytes - 1], static_cast<char>(0xA5));
    FreeMemoryBlock(block, bytes);
  }
}

}  // namespace
