// Attribute.h: an attribute of an element. Its value is held as children (text and references),
// so that the parser keeps references as written; GetValue() gives the text they stand for.
#pragma once

#include "xmlparser/Node.h"

namespace Xml {

class Attribute : public NodeContainer {
 public:
  // The failed attribute lookup: no children, so its value is empty.
  static Attribute null;

  Attribute(NodeContainer& parent, const TString& name);

  TString GetData() const override;  // the same as GetValue()
  // The children's values concatenated, leading and trailing white space trimmed; inner runs
  // of white space stay as they are.
  TString GetValue() const override;
  bool IsKindOf(int kind) const override;
  Node& CloneNode(NodeContainer& parent) const override;
  void GenerateXML(GenerateContext& context) const override;

  Attribute& Clone(NodeContainer& parent) const;
};

}  // namespace Xml
