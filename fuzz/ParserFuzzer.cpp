// Feeds arbitrary text to the parser. Every input must end in a document or a
// ParsingException; a document is then also valued and written back, the two other walks over
// the whole tree, and what it writes must parse again into a document that writes the same. The
// first byte chooses how the rest becomes wide characters: one byte each (where the grammar's ASCII
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
  try {
    std::unique_ptr<Xml::Document> document(
        parser.Parse(text.data(), static_cast<int>(text.size())));
    document->GetValue();
    const TString out = Compact(*document);
    std::unique_ptr<Xml::Document> again(parser.Parse(out.data(), static_cast<int>(out.size())));
    if (Compact(*again) != out) __builtin_trap();
  } catch (const Xml::ParsingException&) {
  }
  return 0;
}
