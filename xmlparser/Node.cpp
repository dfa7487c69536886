#include "xmlparser/Node.h"

#include <memory>
#include <typeinfo>
#include <utility>

#include "xmlparser/Attribute.h"
#include "xmlparser/CharacterData.h"
#include "xmlparser/Element.h"

namespace Xml {
namespace {

// Moves `pos` to the first non-null child from `pos` onwards that `match` accepts.
template <class Iterator, class Match>
bool FindFrom(Iterator& pos, Iterator end, Match match) {
  for (; pos != end; ++pos) {
    if (*pos != nullptr && match(**pos)) return true;
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
  return FindFrom(pos, end, match) ? *pos : nullptr;
}

auto KindIs(int kind) {
  return [kind](const Node& child) { return child.IsKindOf(kind); };
}
auto NameIs(const wchar_t* name) {
  return [name](const Node& child) { return child.GetName().compare(name) == 0; };
}
auto NameAndKindAre(const wchar_t* name, int kind) {
  return [name, kind](const Node& child) {
    return child.GetName().compare(name) == 0 && child.IsKindOf(kind);
  };
}
auto Is(const Node& node) {
  return [&node](const Node& child) { return &child == &node; };
}

Node& OrNull(Node* found) { return found != nullptr ? *found : Node::null; }

}  // namespace

Node::Node(NodeContainer& parent, TString name) : m_strName(std::move(name)), m_parent(parent) {}

Node::~Node() = default;

bool Node::IsKindOf(int) const { return false; }

void Node::Delete() { m_parent.DeleteChild(*this); }

bool IsNullObject(const Node& node) {
  return &node == &Attribute::null || &node == &Element::null || &node == &Comment::null ||
         &node == &Pi::null || &node == &CData::null;
}

NodeContainer::NodeContainer(NodeContainer& parent, TString name) : Node(parent, std::move(name)) {}

NodeContainer::~NodeContainer() { DestroyNodes(m_children); }

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
  return OrNull(index < m_children.size() ? m_children[index] : nullptr);
}
const Node& NodeContainer::GetChild(unsigned long index) const {
  return OrNull(index < m_children.size() ? m_children[index] : nullptr);
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

void NodeContainer::Add(Node* node) {
  std::unique_ptr<Node> owned(node);
  // The null objects are shared by every failed lookup; a chained call on one must not change
  // what all later lookups see.
  if (IsNullObject(*this)) return;
  m_children.push_back(node);
  owned.release();
}

void NodeContainer::AddText(const TString& text) { Add(new Text(*this, text)); }

bool NodeContainer::Insert(const Node& reference, Node* node, long offset) {
  iterator pos = begin();
  if (!FindChild(reference, pos)) return false;
  std::unique_ptr<Node> owned(node);
  m_children.insert(pos + offset, node);
  owned.release();
  return true;
}

bool NodeContainer::InsertBefore(const Node& reference, Node* node) {
  return Insert(reference, node, 0);
}

bool NodeContainer::InsertAfter(const Node& reference, Node* node) {
  return Insert(reference, node, 1);
}

void NodeContainer::DeleteChildren() { DestroyNodes(m_children); }

void NodeContainer::DeleteChild(iterator pos) {
  Children doomed(1, *pos);
  m_children.erase(pos);
  DestroyNodes(doomed);
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
    for (const Node* child : source->m_children) {
      if (child == nullptr) continue;
      if (typeid(*child) == typeid(Element)) {
        Element* element = new Element(*copy, child->GetName());
        copy->Add(element);
        pending.emplace_back(static_cast<const Element*>(child), element);
      } else {
        copy->Add(&child->CloneNode(*copy));
      }
    }
  }
}

void NodeContainer::DestroyNodes(Children& nodes) {
  struct Pending {
    Children nodes;
    size_t next;
  };
  if (nodes.empty()) return;
  std::vector<Pending> stack;
  stack.push_back({std::move(nodes), 0});
  nodes.clear();
  while (!stack.empty()) {
    Pending& top = stack.back();
    if (top.next == top.nodes.size()) {
      stack.pop_back();
      continue;
    }
    Node* node = top.nodes[top.next++];
    // An element's lists are taken over before it is deleted, so its destructor finds them
    // empty and nothing recurses; its attributes go first, then its children. Only elements
    // nest deeply; other containers (attributes hold text and references) destroy their own.
    Children children, attributes;
    if (node != nullptr && node->IsKindOf(NODE_ELEMENT)) {
      auto* element = static_cast<Element*>(node);
      children = std::move(element->m_children);
      element->m_children.clear();
      attributes.assign(element->m_attributes.begin(), element->m_attributes.end());
      element->m_attributes.clear();
    }
    delete node;
    if (!children.empty()) stack.push_back({std::move(children), 0});
    if (!attributes.empty()) stack.push_back({std::move(attributes), 0});
  }
}

}  // namespace Xml
