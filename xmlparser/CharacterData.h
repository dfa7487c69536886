// CharacterData.h: the leaf nodes that hold text: character data, CDATA sections, comments and
// processing instructions. Each holds its content exactly as written, without delimiters.
#pragma once

#include "xmlparser/Node.h"

namespace Xml {

class Parser;

class Text : public Node {
 public:
  Text(NodeContainer& parent, TString text);
  explicit Text(TString text);

  TString GetData() const override { return m_strText; }
  TString GetValue() const override { return m_strText; }
  bool IsKindOf(int kind) const override;
  Node& CloneNode(NodeContainer& parent) const override;
  void GenerateXML(GenerateContext& context) const override;

  Text& Clone(NodeContainer& parent) const;
  const TString& GetText() const { return m_strText; }

 private:
  TString m_strText;
};

class CData : public Node {
 public:
  static CData null;

  CData(NodeContainer& parent, TString text);
  explicit CData(TString text);

  // "<![CDATA[" text "]]>"; null when no section starts here.
  static CData* Parse(Parser& parser, NodeContainer& parent);

  TString GetData() const override { return m_strText; }
  TString GetValue() const override { return m_strText; }
  bool IsKindOf(int kind) const override;
  Node& CloneNode(NodeContainer& parent) const override;
  void GenerateXML(GenerateContext& context) const override;

  CData& Clone(NodeContainer& parent) const;
  const TString& GetText() const { return m_strText; }

 private:
  TString m_strText;
};

class Comment : public Node {
 public:
  static Comment null;

  Comment(NodeContainer& parent, TString text);
  explicit Comment(TString text);

  // "<!--" text "-->"; null when no comment starts here.
  static Comment* Parse(Parser& parser, NodeContainer& parent);

  TString GetData() const override { return m_strText; }
  TString GetValue() const override { return m_strText; }
  bool IsKindOf(int kind) const override;
  Node& CloneNode(NodeContainer& parent) const override;
  void GenerateXML(GenerateContext& context) const override;

  Comment& Clone(NodeContainer& parent) const;
  const TString& GetText() const { return m_strText; }

 private:
  TString m_strText;
};

// A processing instruction: its name is the target, its data everything after the target and
// the white space that follows it.
class Pi : public Node {
 public:
  static Pi null;

  Pi(NodeContainer& parent, TString target, TString data);
  Pi(TString target, TString data);

  // "<?" target, data "?>"; null when no processing instruction starts here.
  static Pi* Parse(Parser& parser, NodeContainer& parent);
  // A name that is not "xml" in any mix of cases (error 25).
  static bool ParsePITarget(Parser& parser, TString& target);

  TString GetData() const override { return m_strData; }
  TString GetValue() const override { return m_strData; }
  bool IsKindOf(int kind) const override;
  Node& CloneNode(NodeContainer& parent) const override;
  void GenerateXML(GenerateContext& context) const override;

  Pi& Clone(NodeContainer& parent) const;
  const TString& GetTarget() const { return GetName(); }

 private:
  TString m_strData;
};

}  // namespace Xml
