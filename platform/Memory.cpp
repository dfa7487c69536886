#include "platform/Memory.h"

#include <sys/mman.h>
#include <unistd.h>

#include <cstdint>

void PrepareMemoryForWriting(void* memory, std::size_t bytes) {
#ifdef MADV_POPULATE_WRITE
  // Only whole pages can be advised; the partial ones at either end fault in as usual.
  static const std::uintptr_t page = static_cast<std::uintptr_t>(sysconf(_SC_PAGESIZE));
  const std::uintptr_t begin = (reinterpret_cast<std::uintptr_t>(memory) + page - 1) & ~(page - 1);
  const std::uintptr_t end = (reinterpret_cast<std::uintptr_t>(memory) + bytes) & ~(page - 1);
  if (end <= begin) return;
  // Memory this large is a mapping of its own (the heap maps anything from 32 MB on), so it
  // can take the large pages the system offers for the asking: far fewer faults, and far
  // cheaper address translation while it is written and read.
  if (end - begin >= 32 * 1024 * 1024) {
    madvise(reinterpret_cast<void*>(begin), end - begin, MADV_HUGEPAGE);
  }
  madvise(reinterpret_cast<void*>(begin), end - begin, MADV_POPULATE_WRITE);
#else
  (void)memory;
  (void)bytes;
#endif
}
