// Node.h: the base classes of the XML tree. A container owns its children (and an element its
// attributes); lookups never return null pointers but one of the library's static null objects.
#pragma once

#include <cstddef>
#include <cstdint>
#include <iterator>
#include <new>
#include <string_view>

#include "xmlparser/TString.h"

namespace Xml {

class Bookmark;
class GenerateContext;
class NodeContainer;
class Parser;

// The kind codes that IsKindOf answers to. No class answers 6.
enum NODE_KIND {
  NODE_ELEMENT = 1,
  NODE_ATTRIBUTE = 2,
  NODE_TEXT = 3,
  NODE_CDATA = 4,
  NODE_REFERENCE = 5,  // both entity and character references
  NODE_PI = 7,
  NODE_COMMENT = 8,
  NODE_DOCUMENT = 9,
};

// Characters stored with their count in one block: the names and texts of nodes. A parsed
// document keeps them in its arena, each distinct name once; other nodes own theirs, except
// the fixed names ("#text" and the like), which are static. Names are stored four bytes per
// character; a parsed text whose characters all lie below U+0100 one byte per character, as
// most of a settings file's text does.
struct StoredText {
  std::uint32_t length : 31;
  std::uint32_t narrow : 1;

  const wchar_t* Data() const { return reinterpret_cast<const wchar_t*>(this + 1); }
  const unsigned char* Bytes() const { return reinterpret_cast<const unsigned char*>(this + 1); }
  std::wstring_view View() const { return {Data(), length}; }  // of a wide text only
  TString ToString() const {
    return narrow ? TString(Bytes(), Bytes() + length) : TString(Data(), length);
  }
  // Sets the character at `index` of a text being filled; a narrow one keeps its low byte.
  void Set(std::size_t index, wchar_t c) {
    if (narrow) {
      reinterpret_cast<unsigned char*>(this + 1)[index] = static_cast<unsigned char>(c);
    } else {
      reinterpret_cast<wchar_t*>(this + 1)[index] = c;
    }
  }
};

// Only the parser may build a node in a document's arena.
class ArenaKey {
  friend class Parser;
  ArenaKey() = default;
};

// Where a node's memory comes from. The parser builds every node of a parsed document in that
// document's arena (InArena() is true): such a node owns nothing, its destructor has nothing to
// do, and its memory goes back only when the document releases the whole arena. Every other
// node (made with new, or on the stack) owns its name and text, and `delete` frees it. `delete`
// works on both: it runs the destructor and frees only what is not in an arena, so a parsed
// subtree deleted from its document leaves its memory to the arena.
class Node {
 public:
  // The parent of every parentless node and the result of a failed general child lookup;
  // it is Element::null.
  static NodeContainer& null;

  Node(const Node&) = delete;
  Node& operator=(const Node&) = delete;
  // Destroying a node does not unlink it from its parent; Delete() does both.
  virtual ~Node();

  virtual TString GetData() const = 0;
  virtual TString GetValue() const = 0;
  // True exactly for the class's own kind code; Node itself answers false for every kind.
  virtual bool IsKindOf(int kind) const = 0;
  // A new copy whose parent is `parent`; the caller adds it to `parent` (or deletes it).
  virtual Node& CloneNode(NodeContainer& parent) const = 0;
  virtual void GenerateXML(GenerateContext& context) const = 0;

  static void operator delete(Node* node, std::destroying_delete_t);
  // The pairs of the allocation functions, for a constructor that throws: from the heap, or
  // placed in an arena (by the parser only), where the memory stays.
  static void* operator new(std::size_t size);
  static void operator delete(void* memory);
  static void* operator new(std::size_t, void* memory) { return memory; }
  static void operator delete(void*, void*) {}

  std::wstring_view GetName() const { return m_pName->View(); }
  NodeContainer& GetParent() const { return m_parent; }
  bool InArena() const { return (m_nFlags & kInArena) != 0; }

  // Asks the parent to unlink and destroy this node; `this` is gone afterwards. A node that is
  // not among its parent's children (a parentless one, say) is left untouched.
  void Delete();

 protected:
  enum Flags : std::uint8_t {
    kInArena = 1,
    kOwnsName = 2,
    kContainer = 4,
    kElement = 8,
    kPreservesSpaces = 16,
    // An arena container below which a node from the heap was linked: destroying it must look
    // for that node. Other arena subtrees are let go without being walked.
    kHoldsHeapNodes = 32,
  };

  // A node that owns a copy of `name`.
  Node(NodeContainer& parent, std::wstring_view name);
  // A node that shares `name`, which outlives it: a static name, or one in the node's arena.
  Node(NodeContainer& parent, const StoredText& name, std::uint8_t flags);

 private:
  friend class NodeContainer;
  friend class Element;
  template <class T>
  friend class ChildIterator;

  const StoredText* m_pName;
  NodeContainer& m_parent;
  Node* m_pNext;  // the next child (or attribute) of the container that holds this node

 protected:
  // Last, so that a derived class's first small field fills the padding after it.
  std::uint8_t m_nFlags;
};

// True when `node` is one of the five static null objects (Attribute::null, Element::null,
// Comment::null, Pi::null, CData::null). A failed lookup is recognised this way, not by kind:
// Element::null answers true to IsKindOf(NODE_ELEMENT).
bool IsNullObject(const Node& node);

// A position in a container's children. It remembers the child before it as well, so that a
// child can be unlinked at its position without walking the list again.
template <class T>
class ChildIterator {
 public:
  using iterator_category = std::forward_iterator_tag;
  using value_type = T*;
  using difference_type = std::ptrdiff_t;
  using pointer = T* const*;
  using reference = T*;

  ChildIterator() = default;
  // A position among non-const children is also one among const children.
  template <class U>
  ChildIterator(const ChildIterator<U>& other)
      : m_pPrevious(other.m_pPrevious), m_pNode(other.m_pNode) {}

  T* operator*() const { return m_pNode; }
  ChildIterator& operator++() {
    m_pPrevious = m_pNode;
    m_pNode = m_pNode->m_pNext;
    return *this;
  }
  ChildIterator operator++(int) {
    ChildIterator before = *this;
    ++*this;
    return before;
  }
  template <class U>
  bool operator==(const ChildIterator<U>& other) const {
    return m_pNode == other.m_pNode;
  }

 private:
  friend class NodeContainer;
  template <class U>
  friend class ChildIterator;

  ChildIterator(T* previous, T* node) : m_pPrevious(previous), m_pNode(node) {}

  T* m_pPrevious = nullptr;
  T* m_pNode = nullptr;
};

class NodeContainer : public Node {
 public:
  typedef ChildIterator<Node> iterator;
  typedef ChildIterator<const Node> const_iterator;

  ~NodeContainer() override;
  void GenerateXML(GenerateContext& context) const override;

  iterator begin() { return {nullptr, m_pFirst}; }
  iterator end() { return {m_pLast, nullptr}; }
  const_iterator begin() const { return {nullptr, m_pFirst}; }
  const_iterator end() const { return {m_pLast, nullptr}; }
  unsigned long GetChildCount() const { return m_nChildren; }
  // True when there are no children; attributes do not count.
  bool IsEmpty() const { return m_pFirst == nullptr; }

  // From `pos` onwards, the first matching child: true with `pos` on it, or false with `pos` at
  // end(). A match does not move `pos` past itself: advance it before searching again.
  bool FindChild(int kind, iterator& pos);
  bool FindChild(int kind, const_iterator& pos) const;
  bool FindChild(const wchar_t* name, iterator& pos);
  bool FindChild(const wchar_t* name, const_iterator& pos) const;
  bool FindChild(const wchar_t* name, int kind, iterator& pos);
  bool FindChild(const wchar_t* name, int kind, const_iterator& pos) const;
  bool FindChild(const Node& node, iterator& pos);  // by identity
  bool FindChild(const Node& node, const_iterator& pos) const;

  // The child at `index` among all children, or among those that match; counts from 0.
  // Node::null when there are not that many. The children are a list: this walks it.
  Node& GetChild(unsigned long index);
  const Node& GetChild(unsigned long index) const;
  Node& GetChild(unsigned long index, int kind);
  const Node& GetChild(unsigned long index, int kind) const;
  Node& GetChild(const wchar_t* name, unsigned long index, int kind);
  const Node& GetChild(const wchar_t* name, unsigned long index, int kind) const;

  // Appends `node` and takes ownership of it. The node should name this container as its
  // parent and belong to no container yet; neither is checked. A null object never changes:
  // given one, Add destroys `node`. A null `node` adds nothing.
  void Add(Node* node);
  // Appends a new Text child, also when `text` is empty or the last child is text already.
  void AddText(const TString& text);
  // The parser's way of adding text: the run from `bookmark` to the parser's position, less
  // its last `trim` characters, as a new Text child (also when empty); the bookmark then moves
  // to the parser's position.
  void AddText(Bookmark& bookmark, int trim);
  // Inserts `node` just before (after) `reference` and takes ownership, returning true. When
  // `reference` is not a child nothing happens, false is returned and the caller keeps `node`.
  bool InsertBefore(const Node& reference, Node* node);
  bool InsertAfter(const Node& reference, Node* node);

  // Destroys every child, in order; attributes stay.
  void DeleteChildren();
  // Destroys the child at `pos` and unlinks it.
  void DeleteChild(iterator pos);
  // Destroys `node` if it is one of the children (by identity); otherwise does nothing.
  void DeleteChild(const Node& node);

  // Adds a copy of every child, in order, to `target`.
  void CloneChildren(NodeContainer& target) const;

 protected:
  NodeContainer(NodeContainer& parent, std::wstring_view name);
  NodeContainer(NodeContainer& parent, const StoredText& name, std::uint8_t flags);

  // Links `node` after `previous` (first when null) into the list that starts at `first` and
  // ends at `last`. The parser links its own nodes with it, without Add's checks.
  static void Link(Node*& first, Node*& last, Node* previous, Node* node);
  void Append(Node* node) {
    Link(m_pFirst, m_pLast, m_pLast, node);
    ++m_nChildren;
  }
  // Called when `node` has been linked under this container: a node from the heap under an
  // arena node marks the way up, so that destroying the arena subtree finds it.
  void NoteLinked(const Node& node);

  // Destroys the list of nodes from `first` on and everything they hold, from a work list, so
  // that the depth of a tree never reaches the machine stack. Nodes in an arena are only
  // walked where they hold nodes from the heap.
  static void DestroyNodes(Node* first);

 private:
  bool Insert(const Node& reference, Node* node, bool after);

  std::uint32_t m_nChildren = 0;
  Node* m_pFirst = nullptr;
  Node* m_pLast = nullptr;
};

}  // namespace Xml
