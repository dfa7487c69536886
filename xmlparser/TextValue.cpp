// The text value of containers, and the white space rules it applies.
#include <typeinfo>
#include <vector>

#include "xmlparser/Attribute.h"
#include "xmlparser/Document.h"
#include "xmlparser/Element.h"
#include "xmlparser/Private.h"

namespace Xml {
namespace Private {
namespace {

// Containers whose value is the standard one, so that it can be computed from the work list;
// a class derived from them may define its own GetValue and is asked for it.
bool HasStandardValue(const Node& node) {
  const std::type_info& type = typeid(node);
  return type == typeid(Element) || type == typeid(Attribute) || type == typeid(Document);
}

// Applies the container's own rule to the concatenation of its children's values.
void FinishValue(const NodeContainer& container, TString& value) {
  if (container.IsKindOf(NODE_ELEMENT)) {
    if (!static_cast<const Element&>(container).PreservesSpaces()) Normalize(value);
  } else if (container.IsKindOf(NODE_ATTRIBUTE)) {
    TrimSpaces(value);
  } else {
    Normalize(value);
  }
}

}  // namespace

void NormalizeWhiteSpaces(TString& text) {
  size_t out = 0;
  for (size_t in = 0; in < text.size();) {
    if (IsSpace(text[in])) {
      while (in < text.size() && IsSpace(text[in])) ++in;
      text[out++] = L' ';
    } else {
      text[out++] = text[in++];
    }
  }
  text.resize(out);
}

void TrimSpaces(TString& text) {
  size_t last = text.find_last_not_of(s_spaces);
  if (last == TString::npos) {
    text.clear();
    return;
  }
  text.erase(last + 1);
  text.erase(0, text.find_first_not_of(s_spaces));
}

void Normalize(TString& text) {
  NormalizeWhiteSpaces(text);
  TrimSpaces(text);
}

TString ContainerValue(const NodeContainer& container) {
  struct Frame {
    const NodeContainer* container;
    NodeContainer::const_iterator next;
    TString value;
  };
  std::vector<Frame> frames;
  frames.push_back({&container, container.begin(), TString()});
  for (;;) {
    Frame& top = frames.back();
    if (top.next != top.container->end()) {
      const Node* child = *top.next++;
      if (HasStandardValue(*child)) {
        auto* nested = static_cast<const NodeContainer*>(child);
        frames.push_back({nested, nested->begin(), TString()});
      } else {
        top.value += child->GetValue();
      }
      continue;
    }
    FinishValue(*top.container, top.value);
    if (frames.size() == 1) return std::move(top.value);
    TString value = std::move(top.value);
    frames.pop_back();
    frames.back().value += value;
  }
}

}  // namespace Private
}  // namespace Xml
