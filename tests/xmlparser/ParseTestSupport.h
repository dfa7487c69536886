// Helpers shared by the parser's tests.
#pragma once

#include <gtest/gtest.h>

#include <memory>
#include <string>

#include "xmlparser/Xml.h"

namespace Xml::Testing {

// A compact picture of a container's children: T"text", &name, #65, E<name>, C"text",
// D"cdata", P<target>"data".
inline TString Picture(const NodeContainer& container) {
  TString out;
  for (const Node* child : container) {
    if (!out.empty()) out += L' ';
    if (child->IsKindOf(NODE_TEXT)) {
      out += L"T\"" + child->GetData() + L"\"";
    } else if (auto* reference = dynamic_cast<const CharRef*>(child)) {
      out += L"#" + std::to_wstring(reference->GetCode());
    } else if (child->IsKindOf(NODE_REFERENCE)) {
      out += L"&" + TString(child->GetName());
    } else if (child->IsKindOf(NODE_ELEMENT)) {
      out += L"E<" + TString(child->GetName()) + L">";
    } else if (child->IsKindOf(NODE_COMMENT)) {
      out += L"C\"" + child->GetData() + L"\"";
    } else if (child->IsKindOf(NODE_CDATA)) {
      out += L"D\"" + child->GetData() + L"\"";
    } else if (child->IsKindOf(NODE_PI)) {
      out += L"P<" + TString(child->GetName()) + L">\"" + child->GetData() + L"\"";
    }
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

// The error of parsing `text`, or PARSE_NO_ERROR at 0:0 when it parses.
struct Outcome {
  int error, line, column;
  bool operator==(const Outcome&) const = default;
};

inline std::ostream& operator<<(std::ostream& out, const Outcome& outcome) {
  return out << "error " << outcome.error << " at " << outcome.line << ":" << outcome.column;
}

inline Outcome ParseOutcome(const TString& text) {
  try {
    ParseText(text);
    return {PARSE_NO_ERROR, 0, 0};
  } catch (const ParsingException& e) {
    return {e.GetError(), e.GetLine(), e.GetColumn()};
  }
}

}  // namespace Xml::Testing
