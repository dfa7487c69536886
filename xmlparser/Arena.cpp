#include "xmlparser/Arena.h"

#include <sys/mman.h>

#include <cstdint>
#include <cstring>
#include <new>

#include "xmlparser/Private.h"

#if defined(__SANITIZE_ADDRESS__)
#define KESTRAIL_KEEP_SPARE_BLOCKS 0
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
#define KESTRAIL_KEEP_SPARE_BLOCKS 0
#endif
#endif
#ifndef KESTRAIL_KEEP_SPARE_BLOCKS
#define KESTRAIL_KEEP_SPARE_BLOCKS 1
#endif

namespace Xml {

struct ArenaBlock {
  ArenaBlock* next;
  std::size_t size;  // with this header
};

namespace {

const std::size_t kFirstBlock = 16 * 1024;
const std::size_t kLargestBlock = 64 * 1024 * 1024;
// Fresh blocks from this size on are faulted in with one call rather than a page at a time.
const std::size_t kPopulated = 256 * 1024;

// Blocks of released arenas, kept for the next document on this thread, as a program that
// parses once is likely to parse again something of the same size. Sanitizer builds free
// them instead, so that a node used after its document is gone is reported.
struct Spares {
  ArenaBlock* blocks = nullptr;
  bool gone = false;  // after this thread's exit: blocks are freed at once
  ~Spares();
};

thread_local Spares t_spares;

void FreeBlocks(ArenaBlock* block) {
  while (block != nullptr) {
    ArenaBlock* next = block->next;
    ::operator delete(block);
    block = next;
  }
}

Spares::~Spares() {
  FreeBlocks(blocks);
  blocks = nullptr;
  gone = true;
}

// The largest spare block, unlinked, when it holds `bytes`; null otherwise.
ArenaBlock* TakeSpare(std::size_t bytes) {
  ArenaBlock** largest = nullptr;
  for (ArenaBlock** link = &t_spares.blocks; *link != nullptr; link = &(*link)->next) {
    if (largest == nullptr || (*link)->size > (*largest)->size) largest = link;
  }
  if (largest == nullptr || (*largest)->size < bytes) return nullptr;
  ArenaBlock* block = *largest;
  *largest = block->next;
  return block;
}

void Populate(void* memory, std::size_t bytes) {
#ifdef MADV_POPULATE_WRITE
  const std::uintptr_t page = 4096;
  const std::uintptr_t begin = (reinterpret_cast<std::uintptr_t>(memory) + page - 1) & ~(page - 1);
  const std::uintptr_t end = (reinterpret_cast<std::uintptr_t>(memory) + bytes) & ~(page - 1);
  // Older kernels refuse the advice; the pages then fault in as they are used.
  if (end > begin) madvise(reinterpret_cast<void*>(begin), end - begin, MADV_POPULATE_WRITE);
#else
  (void)memory;
  (void)bytes;
#endif
}

std::size_t Hash(std::wstring_view name) {
  std::size_t hash = 2166136261u;
  for (wchar_t c : name) hash = (hash ^ static_cast<std::uint32_t>(c)) * 16777619u;
  return hash;
}

}  // namespace

Arena::~Arena() {
  ArenaBlock* blocks = m_pBlocks;
  if (!KESTRAIL_KEEP_SPARE_BLOCKS || t_spares.gone) {
    FreeBlocks(blocks);
    return;
  }
  while (blocks != nullptr) {
    ArenaBlock* next = blocks->next;
    blocks->next = t_spares.blocks;
    t_spares.blocks = blocks;
    blocks = next;
  }
}

void Arena::NewBlock(std::size_t bytes) {
  std::size_t size = m_nBlockBytes < kFirstBlock     ? kFirstBlock
                     : m_nBlockBytes > kLargestBlock ? kLargestBlock
                                                     : m_nBlockBytes;
  if (size < sizeof(ArenaBlock) + bytes) size = sizeof(ArenaBlock) + bytes;
  ArenaBlock* block = KESTRAIL_KEEP_SPARE_BLOCKS ? TakeSpare(size) : nullptr;
  if (block == nullptr) {
    block = static_cast<ArenaBlock*>(::operator new(size));
    block->size = size;
    if (size >= kPopulated) Populate(block, size);
  }
  block->next = m_pBlocks;
  m_pBlocks = block;
  m_nBlockBytes += block->size;
  m_pFree = reinterpret_cast<char*>(block) + sizeof(ArenaBlock);
  m_pEnd = reinterpret_cast<char*>(block) + block->size;
}

const StoredText& Arena::Copy(std::wstring_view text) {
  if (text.empty()) return Private::s_emptyText;
  auto* stored =
      static_cast<StoredText*>(Allocate(sizeof(StoredText) + text.size() * sizeof(wchar_t)));
  stored->length = static_cast<std::uint32_t>(text.size());
  std::memcpy(const_cast<wchar_t*>(stored->Data()), text.data(), text.size() * sizeof(wchar_t));
  return *stored;
}

const StoredText& Arena::Intern(std::wstring_view name) {
  if (m_nNames * 2 >= m_names.size()) {
    std::vector<const StoredText*> larger(m_names.empty() ? 64 : m_names.size() * 2, nullptr);
    for (const StoredText* stored : m_names) {
      if (stored == nullptr) continue;
      std::size_t slot = Hash(stored->View()) & (larger.size() - 1);
      while (larger[slot] != nullptr) slot = (slot + 1) & (larger.size() - 1);
      larger[slot] = stored;
    }
    m_names.swap(larger);
  }
  std::size_t slot = Hash(name) & (m_names.size() - 1);
  for (; m_names[slot] != nullptr; slot = (slot + 1) & (m_names.size() - 1)) {
    if (m_names[slot]->View() == name) return *m_names[slot];
  }
  const StoredText& stored = Copy(name);
  m_names[slot] = &stored;
  ++m_nNames;
  return stored;
}

}  // namespace Xml
