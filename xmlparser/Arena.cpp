#include "xmlparser/Arena.h"

#include <cstdint>
#include <new>

#include "xmlparser/Memory.h"
#include "xmlparser/Private.h"

// Builds with the sanitizers define this as 0, so that a node used after its document is gone
// is reported rather than read from a spare block.
#ifndef XML_KEEP_SPARE_BLOCKS
#define XML_KEEP_SPARE_BLOCKS 1
#endif

namespace Xml {

struct ArenaBlock {
  ArenaBlock* next;
  std::size_t size;   // with this header
  std::size_t ready;  // the bytes from the block's start that were prepared for writing
  void (*deallocate)(void* block, std::size_t bytes);  // the routine of the one that gave it
};

namespace {

const std::size_t kFirstBlock = 16 * 1024;
const std::size_t kLargestBlock = 64 * 1024 * 1024;
// Blocks are prepared this much at a time, rather than whole: a block's unused end is never
// touched, and the preparation of a part is still one call for many pages.
const std::size_t kReadyStep = 2 * 1024 * 1024;

void* AllocateWithNew(std::size_t bytes) { return ::operator new(bytes, std::nothrow); }
void DeleteWithDelete(void* block, std::size_t) { ::operator delete(block); }

// Constant-initialized, so that it holds before any other object is made.
MemoryFunctions s_functions = {AllocateWithNew, DeleteWithDelete, nullptr};

// Blocks of released arenas, kept for the next document on this thread, as a program that
// parses once is likely to parse again something of the same size.
struct Spares {
  ArenaBlock* blocks = nullptr;
  bool gone = false;  // after this thread's exit: blocks are freed at once
  ~Spares();
};

thread_local Spares t_spares;

ArenaBlock* AllocateBlock(std::size_t size) {
  auto* block = static_cast<ArenaBlock*>(s_functions.allocate(size));
  if (block == nullptr) throw std::bad_alloc();
  block->size = size;
  block->ready = sizeof(ArenaBlock);
  block->deallocate = s_functions.deallocate;
  return block;
}

void FreeBlocks(ArenaBlock* block) {
  while (block != nullptr) {
    ArenaBlock* next = block->next;
    block->deallocate(block, block->size);
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

const int kMaxProbes = 16;

std::size_t Hash(std::wstring_view name) {
  std::size_t hash = 2166136261u;
  for (wchar_t c : name) hash = (hash ^ static_cast<std::uint32_t>(c)) * 16777619u;
  return hash;
}

}  // namespace

MemoryFunctions DefaultMemoryFunctions() { return {AllocateWithNew, DeleteWithDelete, nullptr}; }

void SetMemoryFunctions(const MemoryFunctions& functions) { s_functions = functions; }

void ReleaseSpareBlocks() {
  FreeBlocks(t_spares.blocks);
  t_spares.blocks = nullptr;
}

Arena::~Arena() {
  ArenaBlock* blocks = m_pBlocks;
  if (!XML_KEEP_SPARE_BLOCKS || t_spares.gone) {
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
    block = XML_KEEP_SPARE_BLOCKS ? TakeSpare(sizeof(ArenaBlock) + bytes) : nullptr;
    if (block == nullptr) {
      std::size_t size = m_nBlockBytes < kFirstBlock     ? kFirstBlock
                         : m_nBlockBytes > kLargestBlock ? kLargestBlock
                                                         : m_nBlockBytes;
      if (size < sizeof(ArenaBlock) + bytes) size = sizeof(ArenaBlock) + bytes;
      // A block made for one large text is a whole number of steps, so that the nodes after
      // the text fill the rest of its last step rather than a step of another block.
      if (size > kReadyStep) size = (size + kReadyStep - 1) / kReadyStep * kReadyStep;
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
    if (s_functions.prepare != nullptr)
      s_functions.prepare(start + block->ready, ready - block->ready);
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
