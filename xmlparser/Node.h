// Node.h: the base classes of the XML tree. A container owns its children (and an element its
// attributes); lookups never return null pointers but one of the library's static null objects.
#pragma once

#include <cstddef>
#include <vector>

#include "xmlparser/TString.h"

namespace Xml {

class Bookmark;
class GenerateContext;
class NodeContainer;

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

  // Nodes come from pools of their own size (see NodePool.cpp).
  static void* operator new(std::size_t size);
  static void operator delete(void* node, std::size_t size);

  const TString& GetName() const { return m_strName; }
  NodeContainer& GetParent() const { return m_parent; }

  // Asks the parent to unlink and destroy this node; `this` is gone afterwards. A node that is
  // not among its parent's children (a parentless one, say) is left untouched.
  void Delete();

 protected:
  Node(NodeContainer& parent, TString name);

 private:
  TString m_strName;
  NodeContainer& m_parent;
};

// True when `node` is one of the five static null objects (Attribute::null, Element::null,
// Comment::null, Pi::null, CData::null). A failed lookup is recognised this way, not by kind:
// Element::null answers true to IsKindOf(NODE_ELEMENT).
bool IsNullObject(const Node& node);

class NodeContainer : public Node {
 public:
  typedef std::vector<Node*> Children;
  typedef Children::iterator iterator;
  typedef Children::const_iterator const_iterator;

  ~NodeContainer() override;
  void GenerateXML(GenerateContext& context) const override;

  iterator begin() { return m_children.begin(); }
  iterator end() { return m_children.end(); }
  const_iterator begin() const { return m_children.begin(); }
  const_iterator end() const { return m_children.end(); }
  unsigned long GetChildCount() const { return m_children.size(); }
  // True when there are no children; attributes do not count.
  bool IsEmpty() const { return m_children.empty(); }

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
  // Node::null when there are not that many.
  Node& GetChild(unsigned long index);
  const Node& GetChild(unsigned long index) const;
  Node& GetChild(unsigned long index, int kind);
  const Node& GetChild(unsigned long index, int kind) const;
  Node& GetChild(const wchar_t* name, unsigned long index, int kind);
  const Node& GetChild(const wchar_t* name, unsigned long index, int kind) const;

  // Appends `node` and takes ownership of it. The node should name this container as its
  // parent; that is not checked. A null object never changes: given one, Add destroys `node`.
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
  // Destroys the child at `pos` and removes its slot.
  void DeleteChild(iterator pos);
  // Destroys `node` if it is one of the children (by identity); otherwise does nothing.
  void DeleteChild(const Node& node);

  // Adds a copy of every child, in order, to `target`.
  void CloneChildren(NodeContainer& target) const;

 protected:
  NodeContainer(NodeContainer& parent, TString name);

  // Destroys `nodes` and everything they hold, one node at a time from a work list, so that
  // the depth of a tree never reaches the machine stack. Leaves `nodes` empty.
  static void DestroyNodes(Children& nodes);

 private:
  bool Insert(const Node& reference, Node* node, long offset);

  Children m_children;
};

}  // namespace Xml
