#include "xmlparser/CharacterData.h"

#include <utility>

namespace Xml {

Text::Text(NodeContainer& parent, TString text)
    : Node(parent, L"#text"), m_strText(std::move(text)) {}
Text::Text(TString text) : Text(Node::null, std::move(text)) {}
bool Text::IsKindOf(int kind) const { return kind == NODE_TEXT; }
Node& Text::CloneNode(NodeContainer& parent) const { return Clone(parent); }
Text& Text::Clone(NodeContainer& parent) const { return *new Text(parent, m_strText); }

CData::CData(NodeContainer& parent, TString text)
    : Node(parent, L"#cdata-section"), m_strText(std::move(text)) {}
CData::CData(TString text) : CData(Node::null, std::move(text)) {}
bool CData::IsKindOf(int kind) const { return kind == NODE_CDATA; }
Node& CData::CloneNode(NodeContainer& parent) const { return Clone(parent); }
CData& CData::Clone(NodeContainer& parent) const { return *new CData(parent, GetData()); }

Comment::Comment(NodeContainer& parent, TString text)
    : Node(parent, L"#comment"), m_strText(std::move(text)) {}
Comment::Comment(TString text) : Comment(Node::null, std::move(text)) {}
bool Comment::IsKindOf(int kind) const { return kind == NODE_COMMENT; }
Node& Comment::CloneNode(NodeContainer& parent) const { return Clone(parent); }
Comment& Comment::Clone(NodeContainer& parent) const { return *new Comment(parent, GetData()); }

Pi::Pi(NodeContainer& parent, TString target, TString data)
    : Node(parent, std::move(target)), m_strData(std::move(data)) {}
Pi::Pi(TString target, TString data) : Pi(Node::null, std::move(target), std::move(data)) {}
bool Pi::IsKindOf(int kind) const { return kind == NODE_PI; }
Node& Pi::CloneNode(NodeContainer& parent) const { return Clone(parent); }
Pi& Pi::Clone(NodeContainer& parent) const { return *new Pi(parent, GetName(), GetData()); }

}  // namespace Xml
