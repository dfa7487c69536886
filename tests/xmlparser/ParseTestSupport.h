// Helpers shared by the parser's tests.
#pragma once

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <tuple>

#include "xmlparser/Xml.h"

namespace Xml::Testing {

// A compact picture of a container's children: T"text", &name, #65, E<name>, C"text",
// D"cdata", P<target>"data".
inline TString Picture(const NodeContainer& container) {
  TString out;
  for (const Node* child : container) {
    if (!out.empty()) out += L' ';
    const TString name(child->GetName()), data = L"\"" + child->GetData() + L"\"";
    const auto* reference = dynamic_cast<const CharRef*>(child);
    out += child->IsKindOf(NODE_TEXT)        ? L"T" + data
           : reference != nullptr            ? L"#" + std::to_wstring(reference->GetCode())
           : child->IsKindOf(NODE_REFERENCE) ? L"&" + name
           : child->IsKindOf(NODE_ELEMENT)   ? L"E<" + name + L">"
           : child->IsKindOf(NODE_COMMENT)   ? L"C" + data
           : child->IsKindOf(NODE_CDATA)     ? L"D" + data
           : child->IsKindOf(NODE_PI)        ? L"P<" + name + L">" + data
                                             : L"?";
  }
  return out;
}

// A node's generated text, without line breaks or indentation.
inline TString Compact(const Node& node) {
  TString out;
  GenerateContext context(out, nullptr, GenerateContext::COMPACT);
  node.GenerateXML(context);
  return out;
}

inline std::unique_ptr<Document> ParseText(const TString& text) {
  Parser parser;
  return std::unique_ptr<Document>(parser.Parse(text.data(), static_cast<int>(text.size())));
}

// The error of parsing `text` with its line and column, or PARSE_NO_ERROR at 0:0 when it parses.
using Outcome = std::tuple<int, int, int>;

inline Outcome ParseOutcome(const TString& text) {
  try {
    ParseText(text);
    return {PARSE_NO_ERROR, 0, 0};
  } catch (const ParsingException& e) {
    return {e.GetError(), e.GetLine(), e.GetColumn()};
  }
}

}  // namespace Xml::Testing
