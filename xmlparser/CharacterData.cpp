#include "xmlparser/CharacterData.h"

namespace Xml {

Text::Text(NodeContainer& parent, const TString& text) : Node(parent, L"#text"), m_strText(text) {}
Text::Text(const TString& text) : Text(Node::null, text) {}
bool Text::IsKindOf(int kind) const { return kind == NODE_TEXT; }
Node& Text::CloneNode(NodeContainer& parent) const { return Clone(parent); }
Text& Text::Clone(NodeContainer& parent) const { return *new Text(parent, m_strText); }

CData::CData(NodeContainer& parent, const TString& text)
    : Node(parent, L"#cdata-section"), m_strText(text) {}
CData::CData(const TString& text) : CData(Node::null, text) {}
bool CData::IsKindOf(int kind) const { return kind == NODE_CDATA; }
Node& CData::CloneNode(NodeContainer& parent) const { return Clone(parent); }
CData& CData::Clone(NodeContainer& parent) const { return *new CData(parent, GetData()); }

Comment::Comment(NodeContainer& parent, const TString& text)
    : Node(parent, L"#comment"), m_strText(text) {}
Comment::Comment(const TString& text) : Comment(Node::null, text) {}
bool Comment::IsKindOf(int kind) const { return kind == NODE_COMMENT; }
Node& Comment::CloneNode(NodeContainer& parent) const { return Clone(parent); }
Comment& Comment::Clone(NodeContainer& parent) const { return *new Comment(parent, GetData()); }

Pi::Pi(NodeContainer& parent, const TString& target, const TString& data)
    : Node(parent, target), m_strData(data) {}
Pi::Pi(const TString& target, const TString& data) : Pi(Node::null, target, data) {}
bool Pi::IsKindOf(int kind) const { return kind == NODE_PI; }
Node& Pi::CloneNode(NodeContainer& parent) const { return Clone(parent); }
Pi& Pi::Clone(NodeContainer& parent) const { return *new Pi(parent, GetName(), GetData()); }

}  // namespace Xml
