// Node allocation. A parsed document holds millions of nodes of a handful of sizes; taking them
// from per-size pools (free lists over large blocks, kept for the next tree) instead of the
// general heap makes building and destroying a tree cheaper and spares the heap from sorting
// millions of small pieces. Sanitizer builds use the general heap, so that they still see every
// node's lifetime.
#include <new>

#include "xmlparser/Node.h"

#if defined(__SANITIZE_ADDRESS__)
#define KESTRAIL_NODE_POOLS 0
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
#define KESTRAIL_NODE_POOLS 0
#endif
#endif
#ifndef KESTRAIL_NODE_POOLS
#define KESTRAIL_NODE_POOLS 1
#endif

namespace Xml {
namespace {

const std::size_t kGrain = 8;
const std::size_t kLargest = 256;  // larger nodes come from the general heap
const std::size_t kBlock = 64 * 1024;

struct FreeNode {
  FreeNode* next;
};

struct Pool {
  FreeNode* free = nullptr;
  char* fresh = nullptr;  // the unused end of the newest block
  char* end = nullptr;
};

thread_local Pool t_pools[kLargest / kGrain + 1];

}  // namespace

void* Node::operator new(std::size_t size) {
  const std::size_t rounded = (size + kGrain - 1) / kGrain * kGrain;
  if (!KESTRAIL_NODE_POOLS || rounded > kLargest) return ::operator new(size);
  Pool& pool = t_pools[rounded / kGrain];
  if (FreeNode* node = pool.free) {
    pool.free = node->next;
    return node;
  }
  if (pool.fresh == pool.end) {
    pool.fresh = static_cast<char*>(::operator new(kBlock));
    pool.end = pool.fresh + kBlock / rounded * rounded;
  }
  void* node = pool.fresh;
  pool.fresh += rounded;
  return node;
}

void Node::operator delete(void* node, std::size_t size) {
  if (node == nullptr) return;
  const std::size_t rounded = (size + kGrain - 1) / kGrain * kGrain;
  if (!KESTRAIL_NODE_POOLS || rounded > kLargest) return ::operator delete(node);
  Pool& pool = t_pools[rounded / kGrain];
  pool.free = new (node) FreeNode{pool.free};
}

}  // namespace Xml
