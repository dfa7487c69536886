// Memory.h: where the XML library's documents get their memory. A document's nodes, names and
// texts live in blocks of 16 KB to 64 MB, which the library gets from three routines that a
// program may replace: to take its memory from a pool of its own, or to ready large blocks
// in ways the standard library cannot.
#pragma once

#include <cstddef>

namespace Xml {

struct MemoryFunctions {
  // `bytes` of memory aligned for any object, or null when there is none (the parse then throws
  // std::bad_alloc).
  void* (*allocate)(std::size_t bytes);
  // Gives back a block that `allocate` gave, with its size.
  void (*deallocate)(void* block, std::size_t bytes);
  // Called on each part of a block, a few megabytes at most, just before the parser begins to
  // fill it, for the memory to be made ready in one go; null when there is nothing to do.
  void (*prepare)(void* memory, std::size_t bytes);
};

// The standard library's operator new and delete, and no preparation.
MemoryFunctions DefaultMemoryFunctions();

// Blocks allocated from now on come from `functions`; each block is given back to the routine
// that gave it, so this may be called at any time, though not while another thread parses.
void SetMemoryFunctions(const MemoryFunctions& functions);

}  // namespace Xml
