// Value.h: a handle that gives an element or attribute a new text value.
#pragma once

#include "xmlparser/Node.h"

namespace Xml {

class Value {
 public:
  explicit Value(NodeContainer& container) : m_container(container) {}

  // Replaces all children of the container with one Text child holding `text`.
  void Set(const wchar_t* text);

 private:
  NodeContainer& m_container;
};

}  // namespace Xml
