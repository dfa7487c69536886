#include "xmlparser/CharacterData.h"

#include "xmlparser/Private.h"

namespace Xml {

namespace {

template <NODE_KIND Kind>
const StoredText& NameOf() {
  if constexpr (Kind == NODE_TEXT) return Private::s_textName.text;
  if constexpr (Kind == NODE_CDATA) return Private::s_cdataName.text;
  if constexpr (Kind == NODE_COMMENT) return Private::s_commentName.text;
}

}  // namespace

// Nodes off the arena own a copy of their text; parsed ones share the arena's.
template <NODE_KIND Kind>
CharacterData<Kind>::CharacterData(NodeContainer& parent, std::wstring_view text)
    : Node(parent, NameOf<Kind>(), 0), m_pText(&Private::OwnedCopy(text)) {}
template <NODE_KIND Kind>
CharacterData<Kind>::CharacterData(std::wstring_view text) : CharacterData(Node::null, text) {}
template <NODE_KIND Kind>
CharacterData<Kind>::CharacterData(NodeContainer& parent, const StoredText& text, ArenaKey)
    : Node(parent, NameOf<Kind>(), kInArena), m_pText(&text) {}
template <NODE_KIND Kind>
CharacterData<Kind>::~CharacterData() {
  if (!InArena()) Private::ReleaseOwnedCopy(*m_pText);
}

template class CharacterData<NODE_TEXT>;
template class CharacterData<NODE_CDATA>;
template class CharacterData<NODE_COMMENT>;

Pi::Pi(NodeContainer& parent, std::wstring_view target, std::wstring_view data)
    : Node(parent, target), m_pData(&Private::OwnedCopy(data)) {}
Pi::Pi(std::wstring_view target, std::wstring_view data) : Pi(Node::null, target, data) {}
Pi::Pi(NodeContainer& parent, const StoredText& target, const StoredText& data, ArenaKey)
    : Node(parent, target, kInArena), m_pData(&data) {}
Pi::~Pi() {
  if (!InArena()) Private::ReleaseOwnedCopy(*m_pData);
}
bool Pi::IsKindOf(int kind) const { return kind == NODE_PI; }
Node& Pi::CloneNode(NodeContainer& parent) const { return Clone(parent); }
Pi& Pi::Clone(NodeContainer& parent) const { return *new Pi(parent, GetName(), GetData()); }

}  // namespace Xml
