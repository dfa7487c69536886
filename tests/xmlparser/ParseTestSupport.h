// Helpers shared by the parser's tests.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
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

// What ParseRoot keeps in these tests, unless a test says otherwise: the roots and attributes
// that the tests' documents name, and the first CDATA section.
inline const RootSelection kSelection{{L"a", L"setting"}, {L"x", L"y", L"set", L"name"}, true};

inline std::unique_ptr<Document> ParseRootText(const TString& text,
                                               const RootSelection& selection = kSelection) {
  Parser parser;
  return std::unique_ptr<Document>(
      parser.ParseRoot(text.data(), static_cast<int>(text.size()), selection));
}

// The error of parsing `text` with its line and column, or PARSE_NO_ERROR at 0:0 when it parses;
// RootOutcome is ParseRoot's.
using Outcome = std::tuple<int, int, int>;

template <class Parse>
Outcome OutcomeOf(Parse parse) {
  try {
    parse();
    return {PARSE_NO_ERROR, 0, 0};
  } catch (const ParsingException& e) {
    return {e.GetError(), e.GetLine(), e.GetColumn()};
  }
}

inline Outcome ParseOutcome(const TString& text) {
  return OutcomeOf([&] { ParseText(text); });
}

inline Outcome RootOutcome(const TString& text) {
  return OutcomeOf([&] { ParseRootText(text); });
}

// What `selection` keeps of a whole document, as KeptPicture shows it: the root and the first
// attribute of each selected name, its value as the characters its children stand for, and the
// first CDATA section among the root's children; empty when the root is not selected.
inline TString SelectedPicture(const Document& document, const RootSelection& selection) {
  const Element& root = document.GetRoot();
  auto selected = [](const std::vector<std::wstring_view>& names, std::wstring_view name) {
    return std::find(names.begin(), names.end(), name) != names.end();
  };
  if (!selected(selection.names, root.GetName())) return L"";
  TString out = L"E<" + TString(root.GetName()) + L">";
  for (unsigned long i = 0; i < root.GetAttributeCount(); ++i) {
    const Attribute& attribute = root.GetAttribute(i);
    const TString name(attribute.GetName());
    if (!selected(selection.attributes, name) || &root.GetAttribute(name.c_str()) != &attribute)
      continue;
    TString value;
    for (const Node* child : attribute) value += child->GetValue();
    out += L" " + name + L"=T\"" + value + L"\"";
  }
  const CData& cdata = root.GetCData(0);
  if (selection.firstCData && !IsNullObject(cdata)) out += L" D\"" + cdata.GetData() + L"\"";
  return out;
}

// All that a document holds, for one that ParseRoot made: the document's children, the root's
// attributes with theirs, then the root's children.
inline TString KeptPicture(const Document& document) {
  TString out = Picture(document);
  const Element& root = document.GetRoot();
  for (unsigned long i = 0; i < root.GetAttributeCount(); ++i) {
    const Attribute& attribute = root.GetAttribute(i);
    out += L" " + TString(attribute.GetName()) + L"=" + Picture(attribute);
  }
  if (!root.IsEmpty()) out += L" " + Picture(root);
  return out;
}

}  // namespace Xml::Testing
