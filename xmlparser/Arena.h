// Arena.h: the memory of one parsed document, inside the XML library only. The parser builds
// the document's nodes, names and texts here, in large blocks, and the document releases it
// whole: millions of small nodes cost neither one allocation nor one free each.
#pragma once

#include <cstddef>
#include <string_view>
#include <vector>

#include "xmlparser/Node.h"

namespace Xml {

struct ArenaBlock;

class Arena {
 public:
  Arena() = default;
  Arena(const Arena&) = delete;
  Arena& operator=(const Arena&) = delete;
  // Hands the blocks to this thread's spares, for the next document.
  ~Arena();

  // `bytes` of memory aligned for any node, valid until the arena is destroyed.
  void* Allocate(std::size_t bytes) {
    bytes = (bytes + kAlignment - 1) & ~(kAlignment - 1);
    if (static_cast<std::size_t>(m_pEnd - m_pFree) < bytes) Refill(bytes);
    void* memory = m_pFree;
    m_pFree += bytes;
    return memory;
  }
  // A copy of `text`, narrow where it can be; the empty text is shared.
  const StoredText& Copy(std::wstring_view text);
  // Room for a text of `length` characters, one byte each when `narrow`, else four, for the
  // caller to fill with StoredText::Set; never shared.
  StoredText& MakeText(std::size_t length, bool narrow);
  // The one copy of `name` in this arena.
  const StoredText& Intern(std::wstring_view name);

 private:
  static constexpr std::size_t kAlignment = alignof(Node);
  // Makes room for `bytes` at m_pFree: more of the current block, or another block.
  void Refill(std::size_t bytes);
  const StoredText& CopyWide(std::wstring_view text);

  ArenaBlock* m_pBlocks = nullptr;
  char* m_pFree = nullptr;
  char* m_pEnd = nullptr;         // of the part of the newest block that is ready for use
  std::size_t m_nBlockBytes = 0;  // all blocks so far, which sets the size of the next
  // The interned names: open addressing over a power-of-two table, half full at most.
  std::vector<const StoredText*> m_names;
  std::size_t m_nNames = 0;
};

// Frees the blocks this thread keeps for its next document.
void ReleaseSpareBlocks();

}  // namespace Xml
