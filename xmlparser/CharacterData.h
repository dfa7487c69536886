// CharacterData.h: the leaf nodes that hold text: character data, CDATA sections, comments and
// processing instructions. Each holds its content exactly as written, without delimiters.
#pragma once

#include <string_view>

#include "xmlparser/Node.h"

namespace Xml {

class Parser;

// Text, CDATA sections and comments differ only in their kind, their name and how they are read
// and written, so they are one class template; each kind is still a class of its own, made
// directly from Node.
template <NODE_KIND Kind>
class CharacterData : public Node {
 public:
  // The failed lookup of a CDATA section (a comment). Text has no null object.
  static CharacterData null;

  CharacterData(NodeContainer& parent, std::wstring_view text);
  explicit CharacterData(std::wstring_view text);
  CharacterData(NodeContainer& parent, const StoredText& text, ArenaKey);
  ~CharacterData() override;

  // "<![CDATA[" text "]]>", or "<!--" text "-->"; null when none starts here. Text is read by
  // the element that holds it: only these two kinds define Parse (below). Not a requires-clause:
  // clang 14, which builds the fuzz targets, matches no explicit specialization to a constrained
  // member.
  static CharacterData* Parse(Parser& parser, NodeContainer& parent);

  TString GetData() const override { return m_pText->ToString(); }
  TString GetValue() const override { return m_pText->ToString(); }
  bool IsKindOf(int kind) const override { return kind == Kind; }
  Node& CloneNode(NodeContainer& parent) const override { return Clone(parent); }
  void GenerateXML(GenerateContext& context) const override;

  CharacterData& Clone(NodeContainer& parent) const {
    return *new CharacterData(parent, GetData());
  }

 private:
  const StoredText* m_pText;
};

using Text = CharacterData<NODE_TEXT>;
using CData = CharacterData<NODE_CDATA>;
using Comment = CharacterData<NODE_COMMENT>;

// What differs between the kinds, defined with the rest of their kind's reading and writing.
template <>
CData CData::null;
template <>
Comment Comment::null;
template <>
CData* CData::Parse(Parser& parser, NodeContainer& parent);
template <>
Comment* Comment::Parse(Parser& parser, NodeContainer& parent);
template <>
void Text::GenerateXML(GenerateContext& context) const;
template <>
void CData::GenerateXML(GenerateContext& context) const;
template <>
void Comment::GenerateXML(GenerateContext& context) const;

// Built once, in the library.
extern template class CharacterData<NODE_TEXT>;
extern template class CharacterData<NODE_CDATA>;
extern template class CharacterData<NODE_COMMENT>;

// A processing instruction: its name is the target, its data everything after the target and
// the white space that follows it.
class Pi : public Node {
 public:
  static Pi null;

  Pi(NodeContainer& parent, std::wstring_view target, std::wstring_view data);
  Pi(std::wstring_view target, std::wstring_view data);
  Pi(NodeContainer& parent, const StoredText& target, const StoredText& data, ArenaKey);
  ~Pi() override;

  // "<?" target, data "?>"; null when no processing instruction starts here.
  static Pi* Parse(Parser& parser, NodeContainer& parent);
  // A name that is not "xml" in any mix of cases (else PARSE_PI_TARGET_XML), as a view into the
  // parser's text.
  static bool ParsePITarget(Parser& parser, std::wstring_view& target);

  TString GetData() const override { return m_pData->ToString(); }
  TString GetValue() const override { return m_pData->ToString(); }
  bool IsKindOf(int kind) const override;
  Node& CloneNode(NodeContainer& parent) const override;
  void GenerateXML(GenerateContext& context) const override;

  Pi& Clone(NodeContainer& parent) const;
  std::wstring_view GetTarget() const { return GetName(); }

 private:
  const StoredText* m_pData;
};

}  // namespace Xml
