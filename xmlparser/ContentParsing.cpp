// The grammar inside elements: tags, attributes, character data, references, comments, CDATA
// sections and processing instructions, and which node each becomes.
#include <memory>

#include "xmlparser/Attribute.h"
#include "xmlparser/CharacterData.h"
#include "xmlparser/Element.h"
#include "xmlparser/Parser.h"
#include "xmlparser/Private.h"
#include "xmlparser/Reference.h"

namespace Xml {
namespace {

// Moves the parser over the characters that need no decision (legal, not a line end, none of
// `Stops`) with the same effect on position, line and column as reading them one by one; the
// loops that follow then only read the characters that matter. Runs of text dominate documents.
template <wchar_t... Stops>
void SkipPlainCharacters(Parser& parser) {
  const wchar_t* p = parser.m_pCurrent;
  const wchar_t* const end = parser.m_pEnd;
  while (p < end) {
    const wchar_t c = *p;
    if ((static_cast<int>(c) < 32 && c != L'\t') || ((c == Stops) || ...)) break;
    ++p;
  }
  if (p == parser.m_pCurrent) return;
  parser.m_nColumn += static_cast<int>(p - parser.m_pCurrent);
  parser.m_nPrevColumn = parser.m_nColumn - 1;
  parser.m_pCurrent = p;
}

// Reads up to and including `terminator` (whose first character is `first`), as comments,
// CDATA sections and processing instructions end: the end of the text or an illegal character
// on the way raises error 2.
template <wchar_t First>
void ReadUpTo(Parser& parser, const wchar_t* terminator) {
  for (;;) {
    SkipPlainCharacters<First>(parser);
    const wchar_t c = parser.NextChar();
    if (c == First) {
      if (parser.ParseString(terminator + 1)) return;
    } else if (!Private::IsLegal(c)) {  // the end of the text reads as 0, which is not legal
      parser.SyntaxError(PARSE_ILLEGAL_CHARACTER);
    }
  }
}

// Reads a name and tells whether it equals `expected`, without cutting it out of the text.
bool ParseNameEqualTo(Parser& parser, const TString& expected, bool& equal) {
  const wchar_t* start = parser.m_pCurrent;
  if (!Private::SkipName(parser)) return false;
  const wchar_t* end = parser.m_pCurrent < parser.m_pEnd ? parser.m_pCurrent : parser.m_pEnd;
  equal = expected.compare(0, TString::npos, start, end - start) == 0;
  return true;
}

}  // namespace

Element* Element::Parse(Parser& parser, NodeContainer& parent) {
  bool isEmpty;
  std::unique_ptr<Element> element(ParseTagBegining(parser, isEmpty, parent));
  if (element && !isEmpty) element->ParseContentETag(parser);
  return element.release();
}

Element* Element::ParseTagBegining(Parser& parser, bool& isEmpty, NodeContainer& parent) {
  isEmpty = false;
  if (!parser.ParseChar(L'<')) return nullptr;
  TString name;
  if (!parser.ParseName(name)) parser.SyntaxError(PARSE_INVALID_TAG_NAME);
  std::unique_ptr<Element> element(new Element(parent, std::move(name)));
  while (parser.ParseSpaces()) {
    std::unique_ptr<Attribute> attribute(Attribute::Parse(parser, *element));
    if (!attribute) break;
    element->HandleSpecialAttributes(attribute.get());
    element->m_attributes.push_back(attribute.get());
    attribute.release();
  }
  switch (parser.NextChar()) {
    case L'>':
      return element.release();
    case L'/':
      if (parser.NextChar() != L'>') parser.SyntaxError(PARSE_INVALID_EMPTY_TAG);
      isEmpty = true;
      return element.release();
    default:
      parser.SyntaxError(PARSE_INVALID_END_TAG);
  }
}

bool Element::ParseContentETag(Parser& parser) {
  OpenElements open;  // elements nested in this one whose end tag is still to come
  Bookmark text(parser);
  for (;;) {
    Element& current = open.empty() ? *this : *open.back();
    SkipPlainCharacters<L'<', L'&', L']'>(parser);
    const wchar_t c = parser.NextChar();
    switch (c) {
      case L'<':
        parser.PreviousChar();
        current.AddText(text, 0);
        if (current.ParseMarkup(parser, open)) {
          if (open.empty()) return true;
          Element* closed = open.back().release();
          open.pop_back();
          (open.empty() ? *this : *open.back()).Add(closed);
        }
        text.Reset();
        break;
      case L'&':
        parser.PreviousChar();
        current.AddText(text, 0);
        current.ParseReference(parser);
        text.Reset();
        break;
      case 0:  // the end of the text, or a NUL character
        parser.SyntaxError(PARSE_UNEXPECTED_END);
      case L']':
        if (parser.ParseString(L"]>")) parser.SyntaxError(PARSE_CDATA_END_IN_CONTENT);
        break;
      default:
        if (!Private::IsLegal(c)) parser.SyntaxError(PARSE_ILLEGAL_CHARACTER);
    }
  }
}

bool Element::ParseMarkup(Parser& parser, OpenElements& open) {
  if (ParseETag(parser)) return true;
  if (Comment* comment = Comment::Parse(parser, *this)) {
    Add(comment);
    return false;
  }
  if (CData* cdata = CData::Parse(parser, *this)) {
    Add(cdata);
    return false;
  }
  if (Pi* pi = Pi::Parse(parser, *this)) {
    Add(pi);
    return false;
  }
  bool isEmpty;
  std::unique_ptr<Element> child(ParseTagBegining(parser, isEmpty, *this));
  if (!child) parser.SyntaxError(PARSE_UNKNOWN_MARKUP);
  if (isEmpty) {
    Add(child.release());
  } else {
    open.push_back(std::move(child));
  }
  return false;
}

bool Element::ParseETag(Parser& parser) {
  if (!parser.ParseString(L"</")) return false;
  bool sameName = false;
  if (!ParseNameEqualTo(parser, GetName(), sameName)) parser.SyntaxError(PARSE_INVALID_TAG_NAME);
  if (!sameName) parser.SyntaxError(PARSE_END_TAG_MISMATCH);
  parser.ParseSpaces();
  if (!parser.ParseChar(L'>')) parser.SyntaxError(PARSE_INVALID_END_TAG);
  return true;
}

void Element::ParseReference(Parser& parser) {
  Reference* reference = Reference::Parse(parser, *this);
  if (reference == nullptr) parser.SyntaxError(PARSE_INVALID_REFERENCE);
  Add(reference);
}

void Element::HandleSpecialAttributes(const Attribute* attribute) {
  if (attribute->GetName() == L"xml:space")
    m_bPreserveSpaces = attribute->GetValue() == L"preserve";
}

Attribute* Attribute::Parse(Parser& parser, Element& element) {
  TString name;
  if (!parser.ParseName(name)) return nullptr;
  if (!parser.ParseEq()) parser.SyntaxError(PARSE_NO_EQUAL_SIGN);
  std::unique_ptr<Attribute> attribute(new Attribute(element, std::move(name)));
  if (!attribute->ParseAttValue(parser)) parser.SyntaxError(PARSE_INVALID_ATTRIBUTE_VALUE);
  return attribute.release();
}

bool Attribute::ParseAttValue(Parser& parser) {
  const wchar_t quote = parser.NextChar();
  if (!Private::IsQuote(quote)) {
    parser.PreviousChar();
    return false;
  }
  Bookmark text(parser);
  for (;;) {
    SkipPlainCharacters<L'"', L'\'', L'&', L'<'>(parser);
    const wchar_t c = parser.NextChar();
    if (c == quote) {
      AddText(text, 1);
      return true;
    }
    switch (c) {
      case L'&': {
        parser.PreviousChar();
        AddText(text, 0);
        Reference* reference = Reference::Parse(parser, *this);
        if (reference == nullptr) parser.SyntaxError(PARSE_INVALID_REFERENCE);
        Add(reference);
        text.Reset();
        break;
      }
      case L'<':
        parser.SyntaxError(PARSE_UNEXPECTED_TAG);
      case 0:
        parser.SyntaxError(PARSE_UNEXPECTED_END);
      default:
        if (!Private::IsLegal(c)) parser.SyntaxError(PARSE_ILLEGAL_CHARACTER);
    }
  }
}

Comment* Comment::Parse(Parser& parser, NodeContainer& parent) {
  if (!parser.ParseString(L"<!--")) return nullptr;
  Bookmark start(parser);
  ReadUpTo<L'-'>(parser, L"--");
  if (!parser.ParseChar(L'>')) parser.SyntaxError(PARSE_DOUBLE_HYPHEN_IN_COMMENT);
  TString text;
  start.GetSubString(text, 3);
  return new Comment(parent, std::move(text));
}

CData* CData::Parse(Parser& parser, NodeContainer& parent) {
  if (!parser.ParseString(L"<![CDATA[")) return nullptr;
  Bookmark start(parser);
  ReadUpTo<L']'>(parser, L"]]>");
  TString text;
  start.GetSubString(text, 3);
  return new CData(parent, std::move(text));
}

Pi* Pi::Parse(Parser& parser, NodeContainer& parent) {
  if (!parser.ParseString(L"<?")) return nullptr;
  TString target;
  if (!ParsePITarget(parser, target)) parser.SyntaxError(PARSE_PI_TARGET);
  parser.ParseSpaces();
  Bookmark start(parser);
  ReadUpTo<L'?'>(parser, L"?>");
  TString data;
  start.GetSubString(data, 2);
  return new Pi(parent, std::move(target), std::move(data));
}

bool Pi::ParsePITarget(Parser& parser, TString& target) {
  if (!parser.ParseName(target)) return false;
  if (target.size() == 3 && (target[0] | 0x20) == L'x' && (target[1] | 0x20) == L'm' &&
      (target[2] | 0x20) == L'l') {
    parser.SyntaxError(PARSE_PI_TARGET_XML);
  }
  return true;
}

Reference* Reference::Parse(Parser& parser, NodeContainer& parent) {
  if (!parser.ParseChar(L'&')) return nullptr;
  parser.PreviousChar();
  if (CharRef* reference = CharRef::Parse(parser, parent)) return reference;
  return EntityRef::Parse(parser, parent);
}

CharRef* CharRef::Parse(Parser& parser, NodeContainer& parent) {
  if (!parser.ParseString(L"&#")) return nullptr;
  int number = 0;
  if (parser.NextChar() == L'x') {
    if (!parser.ParseHexNumber(number)) parser.SyntaxError(PARSE_INVALID_HEX_NUMBER);
  } else {
    parser.PreviousChar();
    if (!parser.ParseNumber(number)) parser.SyntaxError(PARSE_INVALID_DECIMAL_NUMBER);
  }
  if (!parser.ParseChar(L';')) parser.SyntaxError(PARSE_INVALID_REFERENCE);
  if (number != 9 && number != 10 && number != 13 && number < 32) {
    parser.SyntaxError(PARSE_ILLEGAL_CHARACTER);
  }
  return new CharRef(parent, number);
}

EntityRef* EntityRef::Parse(Parser& parser, NodeContainer& parent) {
  if (!parser.ParseChar(L'&')) return nullptr;
  TString name;
  if (!parser.ParseName(name) || !parser.ParseChar(L';')) {
    parser.SyntaxError(PARSE_INVALID_REFERENCE);
  }
  std::unique_ptr<EntityRef> reference(new EntityRef(parent, std::move(name)));
  if (!reference->MapReferenceName()) parser.SyntaxError(PARSE_UNKNOWN_ENTITY);
  return reference.release();
}

}  // namespace Xml
