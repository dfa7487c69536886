// Memory.h: the stand-in's own call for memory that is about to be filled whole.
#pragma once

#include <cstddef>

// Faults in the pages of the `bytes` at `memory` for writing with one call, rather than one
// trap per page as the first writes reach them; the contents stay as they are. Where the system
// cannot, nothing happens and the pages fault in as they are written.
void PrepareMemoryForWriting(void* memory, std::size_t bytes);
