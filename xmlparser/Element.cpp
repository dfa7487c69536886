#include "xmlparser/Element.h"

#include <memory>
#include <utility>

#include "xmlparser/Attribute.h"
#include "xmlparser/CharacterData.h"
#include "xmlparser/Private.h"

namespace Xml {
namespace {

// The typed result of a lookup: the node when it has the type, else the type's null object.
template <class T, class N>
T& As(N& node) {
  T* typed = dynamic_cast<T*>(&node);
  return typed != nullptr && !IsNullObject(node) ? *typed : T::null;
}

template <class T, class N>
const T& As(const N& node) {
  const T* typed = dynamic_cast<const T*>(&node);
  return typed != nullptr && !IsNullObject(node) ? *typed : T::null;
}

}  // namespace

Element::Element(NodeContainer& parent, std::wstring_view name) : NodeContainer(parent, name) {
  m_nFlags |= kElement;
}

Element::Element(std::wstring_view name) : Element(Node::null, name) {}

Element::Element(NodeContainer& parent, const StoredText& name, ArenaKey)
    : NodeContainer(parent, name, kInArena | kElement) {}

Element::~Element() {
  Node* attributes = m_pFirstAttribute;
  m_pFirstAttribute = m_pLastAttribute = nullptr;
  DestroyNodes(attributes);
}

TString Element::GetData() const { return TString(); }

TString Element::GetValue() const {
  return Private::ContainerValue(*this, Private::ElementValueSpaces(PreservesSpaces()));
}

bool Element::IsKindOf(int kind) const { return kind == NODE_ELEMENT; }

Node& Element::CloneNode(NodeContainer& parent) const { return Clone(parent); }

Element& Element::Clone(NodeContainer& parent) const {
  std::unique_ptr<Element> copy(new Element(parent, GetName()));
  CloneChildren(*copy);
  return *copy.release();
}

Element& Element::GetElement(const wchar_t* name, unsigned long index) {
  return As<Element>(GetChild(name, index, NODE_ELEMENT));
}

CData& Element::GetCData(unsigned long index) { return As<CData>(GetChild(index, NODE_CDATA)); }
const CData& Element::GetCData(unsigned long index) const {
  return As<CData>(GetChild(index, NODE_CDATA));
}
Pi& Element::GetPi(unsigned long index) { return As<Pi>(GetChild(index, NODE_PI)); }
const Pi& Element::GetPi(unsigned long index) const { return As<Pi>(GetChild(index, NODE_PI)); }
Pi& Element::GetPi(const wchar_t* target, unsigned long index) {
  return As<Pi>(GetChild(target, index, NODE_PI));
}
const Pi& Element::GetPi(const wchar_t* target, unsigned long index) const {
  return As<Pi>(GetChild(target, index, NODE_PI));
}
Comment& Element::GetComment(unsigned long index) {
  return As<Comment>(GetChild(index, NODE_COMMENT));
}
const Comment& Element::GetComment(unsigned long index) const {
  return As<Comment>(GetChild(index, NODE_COMMENT));
}

unsigned long Element::GetAttributeCount() const {
  unsigned long count = 0;
  for (const Node* attribute = m_pFirstAttribute; attribute != nullptr;
       attribute = attribute->m_pNext) {
    ++count;
  }
  return count;
}

Attribute& Element::GetAttribute(unsigned long index) {
  return const_cast<Attribute&>(std::as_const(*this).GetAttribute(index));
}
const Attribute& Element::GetAttribute(unsigned long index) const {
  const Node* attribute = m_pFirstAttribute;
  for (; attribute != nullptr && index > 0; --index) attribute = attribute->m_pNext;
  return attribute != nullptr ? static_cast<const Attribute&>(*attribute) : Attribute::null;
}
Attribute& Element::GetAttribute(const wchar_t* name) {
  return const_cast<Attribute&>(std::as_const(*this).GetAttribute(name));
}
const Attribute& Element::GetAttribute(const wchar_t* name) const {
  for (const Node* attribute = m_pFirstAttribute; attribute != nullptr;
       attribute = attribute->m_pNext) {
    if (attribute->GetName() == name) return static_cast<const Attribute&>(*attribute);
  }
  return Attribute::null;
}

bool Element::DeleteChildElement(const wchar_t* name, unsigned long index) {
  Node& child = GetChild(name, index, NODE_ELEMENT);
  if (IsNullObject(child)) return false;
  DeleteChild(child);
  return true;
}

Attribute& Element::CreateAttribute(const wchar_t* name) {
  if (IsNullObject(*this)) return Attribute::null;
  Attribute& existing = GetAttribute(name);
  if (!IsNullObject(existing)) return existing;
  Attribute* attribute = new Attribute(*this, name);
  AppendAttribute(attribute);
  NoteLinked(*attribute);
  return *attribute;
}

void Element::AppendAttribute(Attribute* attribute) {
  Link(m_pFirstAttribute, m_pLastAttribute, m_pLastAttribute, attribute);
}

Element& Element::AddElementInto(const wchar_t* name) {
  if (IsNullObject(*this)) return Element::null;
  Element* element = new Element(*this, name);
  Add(element);
  return *element;
}

Element& Element::CreateElement(const wchar_t* name, unsigned long index) {
  if (IsNullObject(*this)) return Element::null;
  Element& existing = GetElement(name, index);
  return IsNullObject(existing) ? AddElementInto(name) : existing;
}

Element& Element::AppendElement(const wchar_t* name) {
  NodeContainer& parent = GetParent();
  if (IsNullObject(*this) || IsNullObject(parent)) return Element::null;
  Element* element = new Element(parent, name);
  parent.Add(element);
  return *element;
}

Element& Element::InsertElementBefore(const wchar_t* name) { return InsertSibling(name, true); }

Element& Element::InsertElementAfter(const wchar_t* name) { return InsertSibling(name, false); }

Element& Element::InsertSibling(const wchar_t* name, bool before) {
  NodeContainer& parent = GetParent();
  if (IsNullObject(*this) || IsNullObject(parent)) return Element::null;
  Element* element = new Element(parent, name);
  bool inserted = before ? parent.InsertBefore(*this, element) : parent.InsertAfter(*this, element);
  if (inserted) return *element;
  delete element;
  return Element::null;
}

}  // namespace Xml
