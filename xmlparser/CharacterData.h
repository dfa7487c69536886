// CharacterData.h: the leaf nodes that hold text: character data, CDATA sections, comments and
// processing instructions. Each holds its content exactly as written, without delimiters.
#pragma once

#include <string_view>

#include "xmlparser/Node.h"

namespace Xml {

class Parser;

class Text : public Node {
 public:
  Text(NodeContainer& parent, std::wstring_view text);
  explicit Text(std::wstring_view text);
  Text(NodeContainer& parent, const StoredText& text, ArenaKey);
  ~Text() override;

  TString GetData() const override { return m_pText->ToString(); }
  TString GetValue() const override { return m_pText->ToString(); }
  bool IsKindOf(int kind) const override;
  Node& CloneNode(NodeContainer& parent) const override;
  void GenerateXML(GenerateContext& context) const override;

  Text& Clone(NodeContainer& parent) const;

 private:
  const StoredText* m_pText;
};

class CData : public Node {
 public:
  static CData null;

  CData(NodeContainer& parent, std::wstring_view text);
  explicit CData(std::wstring_view text);
  CData(NodeContainer& parent, const StoredText& text, ArenaKey);
  ~CData() override;

  // "<![CDATA[" text "]]>"; null when no section starts here.
  static CData* Parse(Parser& parser, NodeContainer& parent);

  TString GetData() const override { return m_pText->ToString(); }
  TString GetValue() const override { return m_pText->ToString(); }
  bool IsKindOf(int kind) const override;
  Node& CloneNode(NodeContainer& parent) const override;
  void GenerateXML(GenerateContext& context) const override;

  CData& Clone(NodeContainer& parent) const;

 private:
  const StoredText* m_pText;
};

class Comment : public Node {
 public:
  static Comment null;

  Comment(NodeContainer& parent, std::wstring_view text);
  explicit Comment(std::wstring_view text);
  Comment(NodeContainer& parent, const StoredText& text, ArenaKey);
  ~Comment() override;

  // "<!--" text "-->"; null when no comment starts here.
  static Comment* Parse(Parser& parser, NodeContainer& parent);

  TString GetData() const override { return m_pText->ToString(); }
  TString GetValue() const override { return m_pText->ToString(); }
  bool IsKindOf(int kind) const override;
  Node& CloneNode(NodeContainer& parent) const override;
  void GenerateXML(GenerateContext& context) const override;

  Comment& Clone(NodeContainer& parent) const;

 private:
  const StoredText* m_pText;
};

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
  // A name that is not "xml" in any mix of cases (error 25).
  static bool ParsePITarget(Parser& parser, TString& target);

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
