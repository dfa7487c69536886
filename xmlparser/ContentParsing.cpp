// The grammar inside elements: tags, attributes, character data, references, comments, CDATA
// sections and processing instructions, and which node each becomes.
#include <string_view>

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
  parser.Advance(p);
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
bool ParseNameEqualTo(Parser& parser, std::wstring_view expected, bool& equal) {
  std::wstring_view name;
  if (!Private::ScanName(parser, name)) return false;
  equal = name == expected;
  return true;
}

}  // namespace

// Parsed nodes live in the document's arena, which the document releases whether or not the
// parse completes: nothing here owns what it makes.
Element* Element::Parse(Parser& parser, NodeContainer& parent) {
  bool isEmpty;
  Element* element = ParseTagBegining(parser, isEmpty, parent);
  if (element != nullptr && !isEmpty) element->ParseContentETag(parser);
  return element;
}

Element* Element::ParseTagBegining(Parser& parser, bool& isEmpty, NodeContainer& parent) {
  isEmpty = false;
  if (!parser.ParseChar(L'<')) return nullptr;
  std::wstring_view name;
  if (!Private::ScanName(parser, name)) parser.SyntaxError(PARSE_INVALID_TAG_NAME);
  Element* element = parser.Make<Element>(parent, parser.Intern(name));
  while (parser.ParseSpaces()) {
    Attribute* attribute = Attribute::Parse(parser, *element);
    if (attribute == nullptr) break;
    element->HandleSpecialAttributes(attribute);
    element->AppendAttribute(attribute);
  }
  switch (parser.NextChar()) {
    case L'>':
      return element;
    case L'/':
      if (parser.NextChar() != L'>') parser.SyntaxError(PARSE_INVALID_EMPTY_TAG);
      isEmpty = true;
      return element;
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
          Element* closed = open.back();
          open.pop_back();
          (open.empty() ? *this : *open.back()).Append(closed);
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
  // The character after "<" tells which markup can stand here; where none of the others
  // starts, it is a start tag (or an error there).
  const wchar_t* next = parser.m_pCurrent + 1;
  const wchar_t after = next < parser.m_pEnd ? *next : 0;
  if (after == L'/') return ParseETag(parser);
  Node* markup = nullptr;
  if (after == L'!' || after == L'?') {
    markup = Private::ParseCommentOrPi(parser, *this);
    if (markup == nullptr && after == L'!') markup = CData::Parse(parser, *this);
  }
  if (markup != nullptr) {
    Append(markup);
    return false;
  }
  bool isEmpty;
  Element* child = ParseTagBegining(parser, isEmpty, *this);
  if (child == nullptr) parser.SyntaxError(PARSE_UNKNOWN_MARKUP);
  if (isEmpty) {
    Append(child);
  } else {
    open.push_back(child);
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
  Append(reference);
}

void Element::HandleSpecialAttributes(const Attribute* attribute) {
  if (attribute->GetName() == L"xml:space") SetPreserveSpaces(attribute->GetValue() == L"preserve");
}

Attribute* Attribute::Parse(Parser& parser, Element& element) {
  std::wstring_view name;
  if (!Private::ScanName(parser, name)) return nullptr;
  if (!parser.ParseEq()) parser.SyntaxError(PARSE_NO_EQUAL_SIGN);
  Attribute* attribute = parser.Make<Attribute>(element, parser.Intern(name));
  if (!attribute->ParseAttValue(parser)) parser.SyntaxError(PARSE_INVALID_ATTRIBUTE_VALUE);
  return attribute;
}

bool Attribute::ParseAttValue(Parser& parser) {
  const wchar_t quote = Private::ParseOpeningQuote(parser);
  if (quote == 0) return false;
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
        Append(reference);
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

template <>
Comment* Comment::Parse(Parser& parser, NodeContainer& parent) {
  if (!parser.ParseString(L"<!--")) return nullptr;
  Bookmark start(parser);
  ReadUpTo<L'-'>(parser, L"--");
  if (!parser.ParseChar(L'>')) parser.SyntaxError(PARSE_DOUBLE_HYPHEN_IN_COMMENT);
  return parser.Make<Comment>(parent, parser.Copy(start.GetSpan(3)));
}

template <>
CData* CData::Parse(Parser& parser, NodeContainer& parent) {
  if (!parser.ParseString(L"<![CDATA[")) return nullptr;
  Bookmark start(parser);
  ReadUpTo<L']'>(parser, L"]]>");
  return parser.Make<CData>(parent, parser.Copy(start.GetSpan(3)));
}

Pi* Pi::Parse(Parser& parser, NodeContainer& parent) {
  if (!parser.ParseString(L"<?")) return nullptr;
  TString target;
  if (!ParsePITarget(parser, target)) parser.SyntaxError(PARSE_PI_TARGET);
  parser.ParseSpaces();
  Bookmark start(parser);
  ReadUpTo<L'?'>(parser, L"?>");
  return parser.Make<Pi>(parent, parser.Intern(target), parser.Copy(start.GetSpan(2)));
}

bool Pi::ParsePITarget(Parser& parser, TString& target) {
  if (!parser.ParseName(target)) return false;
  if (target.size() == 3 && (target[0] | 0x20) == L'x' && (target[1] | 0x20) == L'm' &&
      (target[2] | 0x20) == L'l') {
    parser.SyntaxError(PARSE_PI_TARGET_XML);
  }
  return true;
}

Node* Private::ParseCommentOrPi(Parser& parser, NodeContainer& parent) {
  if (Comment* comment = Comment::Parse(parser, parent)) return comment;
  return Pi::Parse(parser, parent);
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
  return parser.Make<CharRef>(parent, number);
}

EntityRef* EntityRef::Parse(Parser& parser, NodeContainer& parent) {
  if (!parser.ParseChar(L'&')) return nullptr;
  std::wstring_view name;
  if (!Private::ScanName(parser, name) || !parser.ParseChar(L';')) {
    parser.SyntaxError(PARSE_INVALID_REFERENCE);
  }
  const wchar_t character = CharacterOf(name);
  if (character == 0) parser.SyntaxError(PARSE_UNKNOWN_ENTITY);
  return parser.Make<EntityRef>(parent, parser.Intern(name), character);
}

}  // namespace Xml
