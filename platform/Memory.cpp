#include "platform/Memory.h"

#include <sys/mman.h>
#include <unistd.h>

#include <cstdint>
#include <new>

namespace {

// The large page of x86-64 and of arm64 with 4 KB pages: the only size their kernels make
// transparently.
const std::uintptr_t kLargePage = 2 * 1024 * 1024;
const std::size_t kSmallestMappedBlock = 2 * kLargePage;

std::uintptr_t RoundUp(std::uintptr_t value, std::uintptr_t unit) {
  return (value + unit - 1) & ~(unit - 1);
}

// Gives the kernel `advice` for the whole pages among the `bytes` at `memory`; the partial ones
// at either end are left as they are. Advice the kernel refuses (an older kernel's) changes
// nothing but speed.
void AdvisePages(void* memory, std::size_t bytes, int advice) {
  static const std::uintptr_t page = static_cast<std::uintptr_t>(sysconf(_SC_PAGESIZE));
  const std::uintptr_t begin = RoundUp(reinterpret_cast<std::uintptr_t>(memory), page);
  const std::uintptr_t end = (reinterpret_cast<std::uintptr_t>(memory) + bytes) & ~(page - 1);
  if (end > begin) madvise(reinterpret_cast<void*>(begin), end - begin, advice);
}

}  // namespace

void* AllocateMemoryBlock(std::size_t bytes) {
  if (bytes < kSmallestMappedBlock) return ::operator new(bytes, std::nothrow);
  const std::size_t size = RoundUp(bytes, kLargePage);
  void* mapped =
      mmap(nullptr, size + kLargePage, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
  if (mapped == MAP_FAILED) return nullptr;
  // Trimmed to whole large pages.
  auto* start = static_cast<char*>(mapped);
  auto* aligned =
      reinterpret_cast<char*>(RoundUp(reinterpret_cast<std::uintptr_t>(start), kLargePage));
  if (aligned > start) munmap(start, aligned - start);
  munmap(aligned + size, start + kLargePage - aligned);
#ifdef MADV_HUGEPAGE
  AdvisePages(aligned, size, MADV_HUGEPAGE);
#endif
  return aligned;
}

void FreeMemoryBlock(void* block, std::size_t bytes) {
  if (bytes < kSmallestMappedBlock) {
    ::operator delete(block);
  } else {
    munmap(block, RoundUp(bytes, kLargePage));
  }
}

void PrepareMemoryForWriting(void* memory, std::size_t bytes) {
#ifdef MADV_POPULATE_WRITE
  // Memory this large is a mapping of its own (the heap maps anything from 32 MB on), so it
  // can take the large pages the system offers for the asking: far fewer faults, and far
  // cheaper address translation while it is written and read.
  if (bytes >= 32 * 1024 * 1024) AdvisePages(memory, bytes, MADV_HUGEPAGE);
  AdvisePages(memory, bytes, MADV_POPULATE_WRITE);
#else
  (void)memory;
  (void)bytes;
#endif
}
