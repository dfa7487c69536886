// Attribute.h: an attribute of an element. Its value is held as children (text and references),
// so that the parser keeps references as written; GetValue() gives the text they stand for.
#pragma once

#include <string_view>

#include "xmlparser/Node.h"

namespace Xml {

class Element;
class Parser;

class Attribute : public NodeContainer {
 public:
  // The failed attribute lookup: no children, so its value is empty.
  static Attribute null;

  Attribute(NodeContainer& parent, std::wstring_view name);
  // An attribute of a parsed document, in its arena.
  Attribute(NodeContainer& parent, const StoredText& name, ArenaKey);

  TString GetData() const override;  // the same as GetValue()
  // The children's values concatenated, leading and trailing white space trimmed; inner runs
  // of white space stay as they are.
  TString GetValue() const override;
  bool IsKindOf(int kind) const override;
  Node& CloneNode(NodeContainer& parent) const override;
  void GenerateXML(GenerateContext& context) const override;

  Attribute& Clone(NodeContainer& parent) const;

  // name "=" quoted value (PARSE_NO_EQUAL_SIGN, PARSE_INVALID_ATTRIBUTE_VALUE); null when no name
  // stands here.
  static Attribute* Parse(Parser& parser, Element& element);
  // A quoted value into this attribute's children: text runs and references. False when no
  // quote stands here.
  bool ParseAttValue(Parser& parser);
  // The same value as one Text child that holds the characters it stands for, references
  // replaced; the same GetValue() in a fraction of the memory.
  bool ParseAttValueJoined(Parser& parser);
};

}  // namespace Xml
