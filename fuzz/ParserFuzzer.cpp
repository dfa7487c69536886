// Feeds arbitrary text to the parser. Every input must end in a document or a
// ParsingException; a document is then also valued and written back, the two other walks over
// the whole tree, and what it writes must parse again into a document that writes the same.
// ParseRoot, reading with the same grammar and keeping less, must end every input as Parse does,
// with the same error at the same place, and keep of a document what Parse's holds. The first
// byte chooses how the rest becomes wide characters: one byte each (where the grammar's ASCII
// markup is dense) or four bytes each (any 32-bit value at all).
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <memory>

#include "xmlparser/Xml.h"

namespace {

TString Compact(const Xml::Document& document) {
  TString out;
  Xml::GenerateContext context(out, nullptr, Xml::GenerateContext::COMPACT);
  document.GenerateXML(context);
  return out;
}

// How a parse ended: its error and where, all zero for a document.
struct Ending {
  int error = 0, line = 0, column = 0;
  bool operator==(const Ending&) const = default;
};

template <class Parse>
Ending EndingOf(std::unique_ptr<Xml::Document>& document, Parse parse) {
  try {
    document.reset(parse());
    return {};
  } catch (const Xml::ParsingException& e) {
    return {e.GetError(), e.GetLine(), e.GetColumn()};
  }
}

// Whether `kept`, which ParseRoot made selecting the whole root of `whole`, holds exactly the
// root, the first attribute of each name with its value, and the first CDATA section among the
// root's children.
bool KeepsWhatParseHolds(const Xml::Document& whole, const Xml::Document& kept) {
  const Xml::Element &root = whole.GetRoot(), &keptRoot = kept.GetRoot();
  if (root.GetName() != keptRoot.GetName() || kept.GetChildCount() != 1) return false;
  unsigned long firsts = 0;
  for (unsigned long i = 0; i < root.GetAttributeCount(); ++i) {
    const Xml::Attribute& attribute = root.GetAttribute(i);
    const TString name(attribute.GetName());
    if (&root.GetAttribute(name.c_str()) != &attribute) continue;
    ++firsts;
    if (keptRoot.GetAttribute(name.c_str()).GetValue() != attribute.GetValue()) return false;
  }
  if (keptRoot.GetAttributeCount() != firsts) return false;
  const Xml::CData& cdata = root.GetCData(0);
  if (Xml::IsNullObject(cdata)) return keptRoot.IsEmpty();
  return keptRoot.GetChildCount() == 1 && keptRoot.GetCData(0).GetData() == cdata.GetData();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  TString text;
  if (size > 0 && data[0] == 0xFF) {
    for (size_t i = 1; i + 4 <= size; i += 4) {
      uint32_t unit;
      std::memcpy(&unit, data + i, sizeof unit);
      text += static_cast<wchar_t>(unit);
    }
  } else {
    text.assign(data, data + size);
  }
  Xml::Parser parser;
  const int length = static_cast<int>(text.size());
  std::unique_ptr<Xml::Document> document, kept;
  const Ending ending = EndingOf(document, [&] { return parser.Parse(text.data(), length); });
  // All of a document's root; for a text that is no document, a few short names.
  Xml::RootSelection selection{{L"a", L"setting"}, {L"a", L"x", L"xml:space"}, true};
  if (document) {
    const Xml::Element& root = document->GetRoot();
    selection.names = {root.GetName()};
    selection.attributes.clear();
    for (unsigned long i = 0; i < root.GetAttributeCount(); ++i)
      selection.attributes.push_back(root.GetAttribute(i).GetName());
  }
  if (!(EndingOf(kept, [&] { return parser.ParseRoot(text.data(), length, selection); }) == ending))
    __builtin_trap();
  if (!document) return 0;
  if (!KeepsWhatParseHolds(*document, *kept)) __builtin_trap();
  document->GetValue();
  const TString out = Compact(*document);
  std::unique_ptr<Xml::Document> again(parser.Parse(out.data(), static_cast<int>(out.size())));
  if (Compact(*again) != out) __builtin_trap();
  return 0;
}
