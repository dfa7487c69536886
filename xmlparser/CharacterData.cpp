#include "xmlparser/CharacterData.h"

#include "xmlparser/Private.h"

namespace Xml {

// Nodes off the arena own a copy of their text; parsed ones share the arena's.
Text::Text(NodeContainer& parent, std::wstring_view text)
    : Node(parent, Private::s_textName.text, 0), m_pText(&Private::OwnedCopy(text)) {}
Text::Text(std::wstring_view text) : Text(Node::null, text) {}
Text::Text(NodeContainer& parent, const StoredText& text, ArenaKey)
    : Node(parent, Private::s_textName.text, kInArena), m_pText(&text) {}
Text::~Text() {
  if (!InArena()) Private::ReleaseOwnedCopy(*m_pText);
}
bool Text::IsKindOf(int kind) const { return kind == NODE_TEXT; }
Node& Text::CloneNode(NodeContainer& parent) const { return Clone(parent); }
Text& Text::Clone(NodeContainer& parent) const { return *new Text(parent, GetData()); }

CData::CData(NodeContainer& parent, std::wstring_view text)
    : Node(parent, Private::s_cdataName.text, 0), m_pText(&Private::OwnedCopy(text)) {}
CData::CData(std::wstring_view text) : CData(Node::null, text) {}
CData::CData(NodeContainer& parent, const StoredText& text, ArenaKey)
    : Node(parent, Private::s_cdataName.text, kInArena), m_pText(&text) {}
CData::~CData() {
  if (!InArena()) Private::ReleaseOwnedCopy(*m_pText);
}
bool CData::IsKindOf(int kind) const { return kind == NODE_CDATA; }
Node& CData::CloneNode(NodeContainer& parent) const { return Clone(parent); }
CData& CData::Clone(NodeContainer& parent) const { return *new CData(parent, GetData()); }

Comment::Comment(NodeContainer& parent, std::wstring_view text)
    : Node(parent, Private::s_commentName.text, 0), m_pText(&Private::OwnedCopy(text)) {}
Comment::Comment(std::wstring_view text) : Comment(Node::null, text) {}
Comment::Comment(NodeContainer& parent, const StoredText& text, ArenaKey)
    : Node(parent, Private::s_commentName.text, kInArena), m_pText(&text) {}
Comment::~Comment() {
  if (!InArena()) Private::ReleaseOwnedCopy(*m_pText);
}
bool Comment::IsKindOf(int kind) const { return kind == NODE_COMMENT; }
Node& Comment::CloneNode(NodeContainer& parent) const { return Clone(parent); }
Comment& Comment::Clone(NodeContainer& parent) const { return *new Comment(parent, GetData()); }

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
