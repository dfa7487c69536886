// Memory.h: the stand-in's own calls for large memory that a program fills over time: blocks
// that the system backs with its large pages, and pages faulted in ahead of their first write.
#pragma once

#include <cstddef>

// A block of `bytes`, aligned for any object; null when there is no memory. From 4 MB on it is
// a mapping of its own, aligned to the large pages the system offers and advised into them:
// a tree of hundreds of megabytes in small pages spends much of its time translating addresses.
// Below, it comes from the heap.
void* AllocateMemoryBlock(std::size_t bytes);
// Gives back a block of AllocateMemoryBlock, with the `bytes` it was asked for.
void FreeMemoryBlock(void* block, std::size_t bytes);

// Faults in the pages of the `bytes` at `memory` for writing with one call, rather than one
// trap per page as the first writes reach them; the contents stay as they are. Where the system
// cannot, nothing happens and the pages fault in as they are written.
void PrepareMemoryForWriting(void* memory, std::size_t bytes);
