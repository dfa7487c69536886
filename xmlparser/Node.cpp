#include "xmlparser/Node.h"

#include <cstring>
#include <memory>
#include <utility>
#include <vector>

#include "xmlparser/Attribute.h"
#include "xmlparser/CharacterData.h"
#include "xmlparser/Element.h"
#include "xmlparser/Private.h"

namespace Xml {
namespace {

// Moves `pos` to the first child from `pos` onwards that `match` accepts.
template <class Iterator, class Match>
bool FindFrom(Iterator& pos, Iterator end, Match match) {
  for (; pos != end; ++pos) {
    if (match(**pos)) return true;
  }
  return false;
}

// The matching child numbered `index` (from 0), or null.
template <class Iterator, class Match>
Node* FindNumbered(Iterator pos, Iterator end, unsigned long index, Match match) {
  for (unsigned long count = 0; count != index; ++count) {
    if (!FindFrom(pos, end, match)) return nullptr;
    ++pos;
  }
  return FindFrom(pos, end, match) ? const_cast<Node*>(*pos) : nullptr;
}

auto KindIs(int kind) {
  return [kind](const Node& child) { return child.IsKindOf(kind); };
}
auto NameIs(const wchar_t* name) {
  return [name](const Node& child) { return child.GetName() == name; };
}
auto NameAndKindAre(const wchar_t* name, int kind) {
  return
      [name, kind](const Node& child) { return child.GetName() == name && child.IsKindOf(kind); };
}
auto Is(const Node& node) {
  return [&node](const Node& child) { return &child == &node; };
}

Node& OrNull(Node* found) { return found != nullptr ? *found : Node::null; }

}  // namespace

namespace Private {

const StoredText& StoreWide(void* memory, std::wstring_view text) {
  auto* stored = static_cast<StoredText*>(memory);
  stored->length = static_cast<std::uint32_t>(text.size());
  stored->narrow = 0;
  std::memcpy(const_cast<wchar_t*>(stored->Data()), text.data(), text.size() * sizeof(wchar_t));
  return *stored;
}

const StoredText& OwnedCopy(std::wstring_view text) {
  return text.empty() ? s_emptyText : StoreWide(::operator new(WideSize(text)), text);
}

void ReleaseOwnedCopy(const StoredText& text) {
  if (&text != &s_emptyText) ::operator delete(const_cast<StoredText*>(&text));
}

}  // namespace Private

Node::Node(NodeContainer& parent, std::wstring_view name)
    : m_pName(&Private::OwnedCopy(name)), m_parent(parent), m_pNext(nullptr), m_nFlags(kOwnsName) {}

Node::Node(NodeContainer& parent, const StoredText& name, std::uint8_t flags)
    : m_pName(&name), m_parent(parent), m_pNext(nullptr), m_nFlags(flags) {}

Node::~Node() {
  if (m_nFlags & kOwnsName) Private::ReleaseOwnedCopy(*m_pName);
}

void* Node::operator new(std::size_t size) { return ::operator new(size); }

void Node::operator delete(void* memory) { ::operator delete(memory); }

void Node::operator delete(Node* node, std::destroying_delete_t) {
  const bool inArena = node->InArena();  // read while the node is still alive
  node->~Node();
  if (!inArena) ::operator delete(node);
}

bool Node::IsKindOf(int) const { return false; }

void Node::Delete() { m_parent.DeleteChild(*this); }

bool IsNullObject(const Node& node) {
  return &node == &Attribute::null || &node == &Element::null || &node == &Comment::null ||
         &node == &Pi::null || &node == &CData::null;
}

NodeContainer::NodeContainer(NodeContainer& parent, std::wstring_view name) : Node(parent, name) {
  m_nFlags |= kContainer;
}

NodeContainer::NodeContainer(NodeContainer& parent, const StoredText& name, std::uint8_t flags)
    : Node(parent, name, flags | kContainer) {}

NodeContainer::~NodeContainer() { DestroyNodes(m_pFirst); }

bool NodeContainer::FindChild(int kind, iterator& pos) {
  return FindFrom(pos, end(), KindIs(kind));
}
bool NodeContainer::FindChild(int kind, const_iterator& pos) const {
  return FindFrom(pos, end(), KindIs(kind));
}
bool NodeContainer::FindChild(const wchar_t* name, iterator& pos) {
  return FindFrom(pos, end(), NameIs(name));
}
bool NodeContainer::FindChild(const wchar_t* name, const_iterator& pos) const {
  return FindFrom(pos, end(), NameIs(name));
}
bool NodeContainer::FindChild(const wchar_t* name, int kind, iterator& pos) {
  return FindFrom(pos, end(), NameAndKindAre(name, kind));
}
bool NodeContainer::FindChild(const wchar_t* name, int kind, const_iterator& pos) const {
  return FindFrom(pos, end(), NameAndKindAre(name, kind));
}
bool NodeContainer::FindChild(const Node& node, iterator& pos) {
  return FindFrom(pos, end(), Is(node));
}
bool NodeContainer::FindChild(const Node& node, const_iterator& pos) const {
  return FindFrom(pos, end(), Is(node));
}

Node& NodeContainer::GetChild(unsigned long index) {
  return OrNull(FindNumbered(begin(), end(), index, [](const Node&) { return true; }));
}
const Node& NodeContainer::GetChild(unsigned long index) const {
  return OrNull(FindNumbered(begin(), end(), index, [](const Node&) { return true; }));
}
Node& NodeContainer::GetChild(unsigned long index, int kind) {
  return OrNull(FindNumbered(begin(), end(), index, KindIs(kind)));
}
const Node& NodeContainer::GetChild(unsigned long index, int kind) const {
  return OrNull(FindNumbered(begin(), end(), index, KindIs(kind)));
}
Node& NodeContainer::GetChild(const wchar_t* name, unsigned long index, int kind) {
  return OrNull(FindNumbered(begin(), end(), index, NameAndKindAre(name, kind)));
}
const Node& NodeContainer::GetChild(const wchar_t* name, unsigned long index, int kind) const {
  return OrNull(FindNumbered(begin(), end(), index, NameAndKindAre(name, kind)));
}

void NodeContainer::Link(Node*& first, Node*& last, Node* previous, Node* node) {
  Node*& link = previous != nullptr ? previous->m_pNext : first;
  node->m_pNext = link;
  link = node;
  if (previous == last) last = node;
}

void NodeContainer::NoteLinked(const Node& node) {
  if (node.InArena()) return;
  for (Node* holder = this; holder->InArena() && !(holder->m_nFlags & kHoldsHeapNodes);
       holder = &holder->GetParent()) {
    holder->m_nFlags |= kHoldsHeapNodes;
  }
}

void NodeContainer::Add(Node* node) {
  if (node == nullptr) return;
  std::unique_ptr<Node> owned(node);
  // The null objects are shared by every failed lookup; a chained call on one must not change
  // what all later lookups see.
  if (IsNullObject(*this)) return;
  Append(owned.release());
  NoteLinked(*node);
}

void NodeContainer::AddText(const TString& text) { Add(new Text(*this, text)); }

bool NodeContainer::Insert(const Node& reference, Node* node, bool after) {
  iterator pos = begin();
  if (!FindChild(reference, pos)) return false;
  Link(m_pFirst, m_pLast, after ? pos.m_pNode : pos.m_pPrevious, node);
  ++m_nChildren;
  NoteLinked(*node);
  return true;
}

bool NodeContainer::InsertBefore(const Node& reference, Node* node) {
  return Insert(reference, node, false);
}

bool NodeContainer::InsertAfter(const Node& reference, Node* node) {
  return Insert(reference, node, true);
}

void NodeContainer::DeleteChildren() {
  Node* first = m_pFirst;
  m_pFirst = m_pLast = nullptr;
  m_nChildren = 0;
  DestroyNodes(first);
}

void NodeContainer::DeleteChild(iterator pos) {
  Node* node = pos.m_pNode;
  Node*& link = pos.m_pPrevious != nullptr ? pos.m_pPrevious->m_pNext : m_pFirst;
  link = node->m_pNext;
  if (m_pLast == node) m_pLast = pos.m_pPrevious;
  --m_nChildren;
  node->m_pNext = nullptr;
  DestroyNodes(node);
}

void NodeContainer::DeleteChild(const Node& node) {
  iterator pos = begin();
  if (FindChild(node, pos)) DeleteChild(pos);
}

void NodeContainer::CloneChildren(NodeContainer& target) const {
  // Elements are copied shallow here and their children later from the work list, so a deep
  // tree costs heap, not stack. Other nodes copy themselves.
  std::vector<std::pair<const NodeContainer*, NodeContainer*>> pending{{this, &target}};
  while (!pending.empty()) {
    auto [source, copy] = pending.back();
    pending.pop_back();
    for (const Node* child : *source) {
      if (Private::IsExactly<Element>(*child)) {
        Element* element = new Element(*copy, child->GetName());
        copy->Add(element);
        pending.emplace_back(static_cast<const Element*>(child), element);
      } else {
        copy->Add(&child->CloneNode(*copy));
      }
    }
  }
}

void NodeContainer::DestroyNodes(Node* first) {
  if (first == nullptr) return;
  std::vector<Node*> lists{first};  // the rest of each list still to destroy
  while (!lists.empty()) {
    Node* node = lists.back();
    if (node == nullptr) {
      lists.pop_back();
      continue;
    }
    lists.back() = node->m_pNext;
    const bool inArena = node->InArena();
    // A container's lists are taken over before it is destroyed, so that its destructor finds
    // them empty and nothing recurses; its attributes go first, then its children. In an arena
    // only the containers that hold nodes from the heap are walked, to find those.
    if ((node->m_nFlags & kContainer) && (!inArena || (node->m_nFlags & kHoldsHeapNodes))) {
      auto* container = static_cast<NodeContainer*>(node);
      Node* children = std::exchange(container->m_pFirst, nullptr);
      container->m_pLast = nullptr;
      container->m_nChildren = 0;
      if (children != nullptr) lists.push_back(children);
      if (node->m_nFlags & kElement) {
        auto* element = static_cast<Element*>(node);
        Node* attributes = std::exchange(element->m_pFirstAttribute, nullptr);
        element->m_pLastAttribute = nullptr;
        if (attributes != nullptr) lists.push_back(attributes);
      }
    }
    if (!inArena) delete node;
  }
}

}  // namespace Xml
