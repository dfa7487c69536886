#include "xmlparser/Reference.h"

#include "xmlparser/Exception.h"
#include "xmlparser/Private.h"

namespace Xml {
namespace {

// The character of a predefined entity, or 0 for an unknown name.
wchar_t LookUpEntity(std::wstring_view name) {
  if (Private::s_mapReferences.empty()) Private::FillMap(Private::s_mapReferences);
  auto found = Private::s_mapReferences.find(name);
  return found != Private::s_mapReferences.end() ? found->second : 0;
}

}  // namespace

bool EntityRef::MapReferenceName() {
  m_cChar = LookUpEntity(GetName());
  return m_cChar != 0;
}

bool Reference::IsKindOf(int kind) const { return kind == NODE_REFERENCE; }

EntityRef::EntityRef(NodeContainer& parent, std::wstring_view name)
    : Reference(parent, name), m_cChar(LookUpEntity(name)) {}

EntityRef::EntityRef(std::wstring_view name) : EntityRef(Node::null, name) {
  if (m_cChar == 0) throw InvalidRefException(TString(name));
}

EntityRef::EntityRef(NodeContainer& parent, const StoredText& name, wchar_t character, ArenaKey)
    : Reference(parent, name, kInArena), m_cChar(character) {}

wchar_t EntityRef::CharacterOf(std::wstring_view name) { return LookUpEntity(name); }

Node& EntityRef::CloneNode(NodeContainer& parent) const { return Clone(parent); }

EntityRef& EntityRef::Clone(NodeContainer& parent) const {
  EntityRef* copy = new EntityRef(parent, GetName());
  copy->m_cChar = m_cChar;
  return *copy;
}

CharRef::CharRef(NodeContainer& parent, int code)
    : Reference(parent, Private::s_emptyText, 0), m_nCode(code) {}
CharRef::CharRef(NodeContainer& parent, int code, ArenaKey)
    : Reference(parent, Private::s_emptyText, kInArena), m_nCode(code) {}
CharRef::CharRef(int code) : CharRef(Node::null, code) {}
Node& CharRef::CloneNode(NodeContainer& parent) const { return Clone(parent); }
CharRef& CharRef::Clone(NodeContainer& parent) const { return *new CharRef(parent, m_nCode); }

}  // namespace Xml
