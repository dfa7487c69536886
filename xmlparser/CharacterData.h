// CharacterData.h: the leaf nodes that hold text: character data, CDATA sections, comments and
// processing instructions. Each holds its content exactly as written, without delimiters.
#pragma once

#include "xmlparser/Node.h"

namespace Xml {

class Text : public Node {
 public:
  Text(NodeContainer& parent, const TString& text);
  explicit Text(const TString& text);

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

  CData(NodeContainer& parent, const TString& text);
  explicit CData(const TString& text);

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

  Comment(NodeContainer& parent, const TString& text);
  explicit Comment(const TString& text);

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

  Pi(NodeContainer& parent, const TString& target, const TString& data);
  Pi(const TString& target, const TString& data);

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
