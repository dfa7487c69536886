#include "xmlparser/Arena.h"

#include <sys/mman.h>

#include <cstdint>
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
  std::size_t size;   // with this header
  std::size_t ready;  // the bytes from the block's start whose pages are in memory
};

namespace {

const std::size_t kFirstBlock = 16 * 1024;
const std::size_t kLargestBlock = 64 * 1024 * 1024;
const std::size_t kLargePage = 2 * 1024 * 1024;
// Pages are faulted in a large page at a time with one call, rather than one by one as they
// are first written; a block's unused end costs no memory.
const std::size_t kReadyStep = kLargePage;

// Blocks of released arenas, kept for the next document on this thread, as a program that
// parses once is likely to parse again something of the same size. Sanitizer builds free
// them instead, so that a node used after its document is gone is reported.
struct Spares {
  ArenaBlock* blocks = nullptr;
  bool gone = false;  // after this thread's exit: blocks are freed at once
  ~Spares();
};

thread_local Spares t_spares;

std::uintptr_t RoundUp(std::uintptr_t value, std::uintptr_t unit) {
  return (value + unit - 1) & ~(unit - 1);
}

// Whether a block of `size` bytes is a mapping of its own, in large pages, rather than from the
// heap.
bool IsMapped(std::size_t size) { return size >= 2 * kLargePage; }

// A new block of `size` bytes. From two large pages on, a block is a mapping of its own,
// aligned to and advised into the large pages the system offers: a tree of hundreds of
// megabytes in small pages spends much of its time translating addresses (a 64 MB setting
// parsed at 150-210 MB/s against 250 for a 1 MB one; in large pages at 220-235).
ArenaBlock* AllocateBlock(std::size_t size) {
  ArenaBlock* block;
  if (!IsMapped(size)) {
    block = static_cast<ArenaBlock*>(::operator new(size));
  } else {
    size = RoundUp(size, kLargePage);
    void* mapped = mmap(nullptr, size + kLargePage, PROT_READ | PROT_WRITE,
                        MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (mapped == MAP_FAILED) throw std::bad_alloc();
    // Trimmed to whole large pages.
    auto* start = static_cast<char*>(mapped);
    auto* aligned =
        reinterpret_cast<char*>(RoundUp(reinterpret_cast<std::uintptr_t>(start), kLargePage));
    if (aligned > start) munmap(start, aligned - start);
    munmap(aligned + size, start + kLargePage - aligned);
#ifdef MADV_HUGEPAGE
    madvise(aligned, size, MADV_HUGEPAGE);
#endif
    block = reinterpret_cast<ArenaBlock*>(aligned);
  }
  block->size = size;
  block->ready = sizeof(ArenaBlock);
  return block;
}

void FreeBlocks(ArenaBlock* block) {
  while (block != nullptr) {
    ArenaBlock* next = block->next;
    if (IsMapped(block->size)) {
      munmap(block, block->size);
    } else {
      ::operator delete(block);
    }
    block = next;
  }
}

Spares::~Spares() {
  FreeBlocks(blocks);
  blocks = nullptr;
  gone = true;
}

// The smallest spare block that holds `bytes`, unlinked; null when none does. Taking the
// smallest keeps the large ones for the large texts that need them.
ArenaBlock* TakeSpare(std::size_t bytes) {
  ArenaBlock** best = nullptr;
  for (ArenaBlock** link = &t_spares.blocks; *link != nullptr; link = &(*link)->next) {
    if ((*link)->size >= bytes && (best == nullptr || (*link)->size < (*best)->size)) best = link;
  }
  if (best == nullptr) return nullptr;
  ArenaBlock* block = *best;
  *best = block->next;
  return block;
}

void Populate(void* memory, std::size_t bytes) {
#ifdef MADV_POPULATE_WRITE
  const std::uintptr_t page = 4096;
  const std::uintptr_t begin = RoundUp(reinterpret_cast<std::uintptr_t>(memory), page);
  const std::uintptr_t end = (reinterpret_cast<std::uintptr_t>(memory) + bytes) & ~(page - 1);
  // Older kernels refuse the advice; the pages then fault in as they are used.
  if (end > begin) madvise(reinterpret_cast<void*>(begin), end - begin, MADV_POPULATE_WRITE);
#else
  (void)memory;
  (void)bytes;
#endif
}

const int kMaxProbes = 16;

std::size_t Hash(std::wstring_view name) {
  std::size_t hash = 2166136261u;
  for (wchar_t c : name) hash = (hash ^ static_cast<std::uint32_t>(c)) * 16777619u;
  return hash;
}

}  // namespace

void ReleaseSpareBlocks() {
  FreeBlocks(t_spares.blocks);
  t_spares.blocks = nullptr;
}

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

void Arena::Refill(std::size_t bytes) {
  ArenaBlock* block = m_pBlocks;
  char* blockEnd = block != nullptr ? reinterpret_cast<char*>(block) + block->size : nullptr;
  if (block == nullptr || static_cast<std::size_t>(blockEnd - m_pFree) < bytes) {
    // A spare block serves whenever it holds the request; fresh blocks grow with the
    // document, so that a large one needs few of them.
    block = KESTRAIL_KEEP_SPARE_BLOCKS ? TakeSpare(sizeof(ArenaBlock) + bytes) : nullptr;
    if (block == nullptr) {
      std::size_t size = m_nBlockBytes < kFirstBlock     ? kFirstBlock
                         : m_nBlockBytes > kLargestBlock ? kLargestBlock
                                                         : m_nBlockBytes;
      if (size < sizeof(ArenaBlock) + bytes) size = sizeof(ArenaBlock) + bytes;
      block = AllocateBlock(size);
    }
    block->next = m_pBlocks;
    m_pBlocks = block;
    m_nBlockBytes += block->size;
    m_pFree = m_pEnd = reinterpret_cast<char*>(block) + sizeof(ArenaBlock);
    blockEnd = reinterpret_cast<char*>(block) + block->size;
  }
  // Ready at least the request, and a step beyond it.
  char* const start = reinterpret_cast<char*>(block);
  const std::size_t wanted = static_cast<std::size_t>(m_pFree - start) + bytes;
  std::size_t ready = wanted + kReadyStep < block->size ? wanted + kReadyStep : block->size;
  if (ready > block->ready) {
    Populate(start + block->ready, ready - block->ready);
    block->ready = ready;
  }
  m_pEnd = start + (block->ready > ready ? block->ready : ready);
  if (m_pEnd > blockEnd) m_pEnd = blockEnd;
}

const StoredText& Arena::Copy(std::wstring_view text) {
  if (text.empty()) return Private::s_emptyText;
  for (wchar_t c : text) {
    if (static_cast<std::uint32_t>(c) > 0xFF) return CopyWide(text);
  }
  auto* stored = static_cast<StoredText*>(Allocate(sizeof(StoredText) + text.size()));
  stored->length = static_cast<std::uint32_t>(text.size());
  stored->narrow = 1;
  auto* bytes = const_cast<unsigned char*>(stored->Bytes());
  for (std::size_t i = 0; i < text.size(); ++i) bytes[i] = static_cast<unsigned char>(text[i]);
  return *stored;
}

StoredText& Arena::MakeText(std::size_t length, bool narrow) {
  auto* stored = static_cast<StoredText*>(
      Allocate(sizeof(StoredText) + length * (narrow ? 1 : sizeof(wchar_t))));
  stored->length = static_cast<std::uint32_t>(length);
  stored->narrow = narrow;
  return *stored;
}

const StoredText& Arena::CopyWide(std::wstring_view text) {
  return Private::StoreWide(Allocate(Private::WideSize(text)), text);
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
  // Sharing names saves memory only: names are compared by their characters, never by where
  // they are stored. So a document made of names that collide on purpose gets a copy of each
  // beyond a few steps, rather than a search that grows with every name.
  std::size_t slot = Hash(name) & (m_names.size() - 1);
  for (int step = 0; step < kMaxProbes; ++step, slot = (slot + 1) & (m_names.size() - 1)) {
    if (m_names[slot] == nullptr) {
      const StoredText& stored = CopyWide(name);
      m_names[slot] = &stored;
      ++m_nNames;
      return stored;
    }
    if (m_names[slot]->View() == name) return *m_names[slot];
  }
  return CopyWide(name);
}

}  // namespace Xml
