#include "xmlparser/Attribute.h"

#include <memory>

#include "xmlparser/Private.h"

namespace Xml {

Attribute::Attribute(NodeContainer& parent, std::wstring_view name) : NodeContainer(parent, name) {}

Attribute::Attribute(NodeContainer& parent, const StoredText& name, ArenaKey)
    : NodeContainer(parent, name, kInArena) {}

TString Attribute::GetData() const { return GetValue(); }

TString Attribute::GetValue() const {
  return Private::ContainerValue(*this, Private::ValueSpaces::kTrim);
}

bool Attribute::IsKindOf(int kind) const { return kind == NODE_ATTRIBUTE; }

Node& Attribute::CloneNode(NodeContainer& parent) const { return Clone(parent); }

Attribute& Attribute::Clone(NodeContainer& parent) const {
  std::unique_ptr<Attribute> copy(new Attribute(parent, GetName()));
  CloneChildren(*copy);
  return *copy.release();
}

}  // namespace Xml
