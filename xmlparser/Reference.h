// Reference.h: entity and character references, kept in the tree as written rather than
// replaced by the character they stand for. Both answer to NODE_REFERENCE.
#pragma once

#include <cstdint>
#include <string_view>

#include "xmlparser/Node.h"

namespace Xml {

class Parser;

class Reference : public Node {
 public:
  bool IsKindOf(int kind) const override;

  // A character reference, else an entity reference; null when no "&" stands here.
  static Reference* Parse(Parser& parser, NodeContainer& parent);

 protected:
  Reference(NodeContainer& parent, std::wstring_view name) : Node(parent, name) {}
  Reference(NodeContainer& parent, const StoredText& name, std::uint8_t flags)
      : Node(parent, name, flags) {}
};

// A reference to one of the five predefined entities (lt, gt, amp, apos, quot).
class EntityRef : public Reference {
 public:
  // An unknown name leaves the character 0.
  EntityRef(NodeContainer& parent, std::wstring_view name);
  // Throws InvalidRefException carrying `name` when the name is unknown.
  explicit EntityRef(std::wstring_view name);
  // A parsed reference, in its document's arena, standing for `character`.
  EntityRef(NodeContainer& parent, const StoredText& name, wchar_t character, ArenaKey);

  // "&" name ";" (PARSE_INVALID_REFERENCE when incomplete, PARSE_UNKNOWN_ENTITY when the name is
  // unknown); null when no "&".
  static EntityRef* Parse(Parser& parser, NodeContainer& parent);
  // Looks the name up again and sets the character: false when the name is unknown.
  bool MapReferenceName();
  // The character a predefined entity stands for, or 0 for an unknown name.
  static wchar_t CharacterOf(std::wstring_view name);

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
  CharRef(NodeContainer& parent, int code, ArenaKey);

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
