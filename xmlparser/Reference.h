// Reference.h: entity and character references, kept in the tree as written rather than
// replaced by the character they stand for. Both answer to NODE_REFERENCE.
#pragma once

#include <utility>

#include "xmlparser/Node.h"

namespace Xml {

class Parser;

class Reference : public Node {
 public:
  bool IsKindOf(int kind) const override;

  // A character reference, else an entity reference; null when no "&" stands here.
  static Reference* Parse(Parser& parser, NodeContainer& parent);

 protected:
  Reference(NodeContainer& parent, TString name) : Node(parent, std::move(name)) {}
};

// A reference to one of the five predefined entities (lt, gt, amp, apos, quot).
class EntityRef : public Reference {
 public:
  // An unknown name leaves the character 0.
  EntityRef(NodeContainer& parent, TString name);
  // Throws InvalidRefException carrying `name` when the name is unknown.
  explicit EntityRef(const TString& name);

  // "&" name ";" (error 6 when incomplete, 9 when the name is unknown); null when no "&".
  static EntityRef* Parse(Parser& parser, NodeContainer& parent);
  // Looks the name up again and sets the character: false when the name is unknown.
  bool MapReferenceName();

  TString GetData() const override { return TString(1, m_cChar); }
  TString GetValue() const override { return TString(1, m_cChar); }
  Node& CloneNode(NodeContainer& parent) const override;
  void GenerateXML(GenerateContext& context) const override;

  EntityRef& Clone(NodeContainer& parent) const;
  // The character the entity stands for; 0 while the name is unknown.
  wchar_t GetChar() const { return m_cChar; }

 private:
  wchar_t m_cChar;
};

// A numeric character reference; its name is empty.
class CharRef : public Reference {
 public:
  CharRef(NodeContainer& parent, int code);
  explicit CharRef(int code);

  // "&#" decimal ";" or "&#x" hexadecimal ";"; null when no "&#" stands here.
  static CharRef* Parse(Parser& parser, NodeContainer& parent);

  TString GetData() const override { return TString(1, static_cast<wchar_t>(m_nCode)); }
  TString GetValue() const override { return TString(1, static_cast<wchar_t>(m_nCode)); }
  Node& CloneNode(NodeContainer& parent) const override;
  void GenerateXML(GenerateContext& context) const override;

  CharRef& Clone(NodeContainer& parent) const;
  int GetCode() const { return m_nCode; }

 private:
  int m_nCode;
};

}  // namespace Xml
