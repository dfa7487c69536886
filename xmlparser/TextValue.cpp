// The text value of containers, and the white space rules it applies.
#include "xmlparser/Private.h"

#include <optional>
#include <utility>
#include <vector>

#include "xmlparser/Attribute.h"
#include "xmlparser/Document.h"
#include "xmlparser/Element.h"

namespace Xml {
namespace Private {
namespace {

// The white space rule of a container whose value is the standard one, so that it can be
// computed from the work list; none for other nodes, which are asked for their value.
std::optional<ValueSpaces> StandardValueSpaces(const Node& node) {
  if (IsExactly<Element>(node)) {
    return ElementValueSpaces(static_cast<const Element&>(node).PreservesSpaces());
  }
  if (IsExactly<Attribute>(node)) return ValueSpaces::kTrim;
  if (IsExactly<Document>(node)) return ValueSpaces::kNormalize;
  return std::nullopt;
}

// Appends `more` to `value`; a value still empty takes `more` over, so that the value of a
// container with one large child is held once, not twice.
void Append(TString& value, TString&& more) {
  if (value.empty()) {
    value = std::move(more);
  } else {
    value += more;
  }
}

void Finish(ValueSpaces spaces, TString& value) {
  if (spaces == ValueSpaces::kNormalize) Normalize(value);
  if (spaces == ValueSpaces::kTrim) TrimSpaces(value);
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

TString ContainerValue(const NodeContainer& container, ValueSpaces spaces) {
  struct Frame {
    const NodeContainer* container;
    ValueSpaces spaces;
    NodeContainer::const_iterator next;
    TString value;
  };
  std::vector<Frame> frames;
  frames.push_back({&container, spaces, container.begin(), TString()});
  for (;;) {
    Frame& top = frames.back();
    if (top.next != top.container->end()) {
      const Node* child = *top.next++;
      if (std::optional<ValueSpaces> nestedSpaces = StandardValueSpaces(*child)) {
        auto* nested = static_cast<const NodeContainer*>(child);
        frames.push_back({nested, *nestedSpaces, nested->begin(), TString()});
      } else {
        Append(top.value, child->GetValue());
      }
      continue;
    }
    Finish(top.spaces, top.value);
    if (frames.size() == 1) return std::move(top.value);
    TString value = std::move(top.value);
    frames.pop_back();
    Append(frames.back().value, std::move(value));
  }
}

}  // namespace Private
}  // namespace Xml
