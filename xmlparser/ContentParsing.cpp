// The grammar inside elements: tags, attributes, character data, references, comments, CDATA
// sections and processing instructions, and which node each becomes. Each construct is read by
// one routine that builds nothing; the building grammar makes its node from what was read, and a
// parse that keeps only a selection of the document reads the rest with the same routines, so
// that both accept the same texts and report the same errors at the same places.
#include "xmlparser/Element.h"

#include <cstdint>
#include <deque>
#include <string_view>
#include <vector>

#include "xmlparser/Attribute.h"
#include "xmlparser/CharacterData.h"
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

// Checks a character of an element's content that is neither markup nor a reference: the end of
// the text (or a NUL character), "]]>" and illegal characters stop the parse.
void CheckContentCharacter(Parser& parser, wchar_t c) {
  if (c == 0) parser.SyntaxError(PARSE_UNEXPECTED_END);
  if (c == L']') {
    if (parser.ParseString(L"]>")) parser.SyntaxError(PARSE_CDATA_END_IN_CONTENT);
  } else if (!Private::IsLegal(c)) {
    parser.SyntaxError(PARSE_ILLEGAL_CHARACTER);
  }
}

// Reads up to and including `terminator` (whose first character is `first`), as comments,
// CDATA sections and processing instructions end: the end of the text or an illegal character
// on the way raises PARSE_ILLEGAL_CHARACTER.
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

// The readers of the constructs. Each returns false, with nothing read, when its construct does
// not start here; otherwise it reads it whole, raising the construct's errors, and hands back
// views into the parser's text.

bool ReadComment(Parser& parser, std::wstring_view& text) {
  if (!parser.ParseString(L"<!--")) return false;
  Bookmark start(parser);
  ReadUpTo<L'-'>(parser, L"--");
  if (!parser.ParseChar(L'>')) parser.SyntaxError(PARSE_DOUBLE_HYPHEN_IN_COMMENT);
  text = start.GetSpan(3);
  return true;
}

bool ReadCData(Parser& parser, std::wstring_view& text) {
  if (!parser.ParseString(L"<![CDATA[")) return false;
  Bookmark start(parser);
  ReadUpTo<L']'>(parser, L"]]>");
  text = start.GetSpan(3);
  return true;
}

bool ReadPi(Parser& parser, std::wstring_view& target, std::wstring_view& data) {
  if (!parser.ParseString(L"<?")) return false;
  if (!Pi::ParsePITarget(parser, target)) parser.SyntaxError(PARSE_PI_TARGET);
  parser.ParseSpaces();
  Bookmark start(parser);
  ReadUpTo<L'?'>(parser, L"?>");
  data = start.GetSpan(2);
  return true;
}

// "&#" decimal ";" or "&#x" hexadecimal ";": the number, wrapped to 32 bits.
bool ReadCharRef(Parser& parser, int& number) {
  if (!parser.ParseString(L"&#")) return false;
  number = 0;
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
  return true;
}

// "&" name ";": the name and the character of the predefined entity it names.
bool ReadEntityRef(Parser& parser, std::wstring_view& name, wchar_t& character) {
  if (!parser.ParseChar(L'&')) return false;
  if (!Private::ScanName(parser, name) || !parser.ParseChar(L';')) {
    parser.SyntaxError(PARSE_INVALID_REFERENCE);
  }
  character = EntityRef::CharacterOf(name);
  if (character == 0) parser.SyntaxError(PARSE_UNKNOWN_ENTITY);
  return true;
}

// "</" name, optional white space, ">", where the name must be `name`.
bool ReadETag(Parser& parser, std::wstring_view name) {
  if (!parser.ParseString(L"</")) return false;
  std::wstring_view read;
  if (!Private::ScanName(parser, read)) parser.SyntaxError(PARSE_INVALID_TAG_NAME);
  if (read != name) parser.SyntaxError(PARSE_END_TAG_MISMATCH);
  parser.ParseSpaces();
  if (!parser.ParseChar(L'>')) parser.SyntaxError(PARSE_INVALID_END_TAG);
  return true;
}

// A quoted value, as attributes have: each run of text between the quotes goes to
// `text(bookmark, trim)`, the run being from the bookmark to the parser's position less its last
// `trim` characters, and each reference to `reference()`, called at its "&" to read it.
template <class OnText, class OnReference>
bool ReadAttValue(Parser& parser, OnText text, OnReference reference) {
  const wchar_t quote = Private::ParseOpeningQuote(parser);
  if (quote == 0) return false;
  Bookmark run(parser);
  for (;;) {
    SkipPlainCharacters<L'"', L'\'', L'&', L'<'>(parser);
    const wchar_t c = parser.NextChar();
    if (c == quote) {
      text(run, 1);
      return true;
    }
    switch (c) {
      case L'&':
        parser.PreviousChar();
        text(run, 0);
        reference();
        run.Reset();
        break;
      case L'<':
        parser.SyntaxError(PARSE_UNEXPECTED_TAG);
      case 0:
        parser.SyntaxError(PARSE_UNEXPECTED_END);
      default:
        if (!Private::IsLegal(c)) parser.SyntaxError(PARSE_ILLEGAL_CHARACTER);
    }
  }
}

// The character that the reference at the parser's "&" stands for, read;
// PARSE_INVALID_REFERENCE when none stands there.
wchar_t ReadReferenceCharacter(Parser& parser) {
  wchar_t character;
  if (!Private::ReadReference(parser, character)) parser.SyntaxError(PARSE_INVALID_REFERENCE);
  return character;
}

// name "=" value, where `readValue(name)` reads the value and returns false when no quote
// stands there (PARSE_INVALID_ATTRIBUTE_VALUE).
template <class ReadValue>
bool ReadAttribute(Parser& parser, ReadValue readValue) {
  std::wstring_view name;
  if (!Private::ScanName(parser, name)) return false;
  if (!parser.ParseEq()) parser.SyntaxError(PARSE_NO_EQUAL_SIGN);
  if (!readValue(name)) parser.SyntaxError(PARSE_INVALID_ATTRIBUTE_VALUE);
  return true;
}

// "<", the name, then attributes up to ">" (`isEmpty` false) or "/>" (true). The name goes to
// `onName` as soon as it is read; `readAttribute()` reads each attribute after white space and
// returns false when none stands there.
template <class OnName, class ReadOneAttribute>
bool ReadTagBegining(Parser& parser, bool& isEmpty, OnName onName, ReadOneAttribute readAttribute) {
  isEmpty = false;
  if (!parser.ParseChar(L'<')) return false;
  std::wstring_view name;
  if (!Private::ScanName(parser, name)) parser.SyntaxError(PARSE_INVALID_TAG_NAME);
  onName(name);
  while (parser.ParseSpaces() && readAttribute()) {
  }
  switch (parser.NextChar()) {
    case L'>':
      return true;
    case L'/':
      if (parser.NextChar() != L'>') parser.SyntaxError(PARSE_INVALID_EMPTY_TAG);
      isEmpty = true;
      return true;
    default:
      parser.SyntaxError(PARSE_INVALID_END_TAG);
  }
}

bool SkipAttribute(Parser& parser) {
  return ReadAttribute(parser,
                       [&parser](std::wstring_view) { return Private::SkipAttValue(parser); });
}

// The name of the element whose name starts `at` characters into the text: the name characters
// from there, as ScanName read them.
std::wstring_view NameAt(const Parser& parser, std::uint32_t at) {
  const wchar_t* const start = parser.m_pBegin + at;
  const wchar_t* end = start;
  while (end < parser.m_pEnd && IsNameChar(*end)) ++end;
  return {start, static_cast<std::size_t>(end - start)};
}

// Where `name` stands among `names`; names.size() when it is not there.
std::size_t IndexOf(const std::vector<std::wstring_view>& names, std::wstring_view name) {
  std::size_t index = 0;
  while (index < names.size() && names[index] != name) ++index;
  return index;
}

}  // namespace

namespace Private {

bool ReadCommentOrPi(Parser& parser) {
  std::wstring_view target, text;
  return ReadComment(parser, text) || ReadPi(parser, target, text);
}

bool ReadReference(Parser& parser, wchar_t& character) {
  if (!parser.ParseChar(L'&')) return false;
  parser.PreviousChar();
  int number;
  if (ReadCharRef(parser, number)) {
    character = static_cast<wchar_t>(number);
    return true;
  }
  std::wstring_view name;
  return ReadEntityRef(parser, name, character);
}

bool SkipAttValue(Parser& parser) {
  return ReadAttValue(
      parser, [](Bookmark&, int) {}, [&parser] { ReadReferenceCharacter(parser); });
}

}  // namespace Private

// Parsed nodes live in the document's arena, which the document releases whether or not the
// parse completes: nothing here owns what it makes.
Element* Element::Parse(Parser& parser, NodeContainer& parent) {
  bool isEmpty;
  Element* element = ParseTagBegining(parser, isEmpty, parent);
  if (element != nullptr && !isEmpty) element->ParseContentETag(parser);
  return element;
}

Element* Element::ParseTagBegining(Parser& parser, bool& isEmpty, NodeContainer& parent) {
  Element* element = nullptr;
  const bool read = ReadTagBegining(
      parser, isEmpty,
      [&](std::wstring_view name) { element = parser.Make<Element>(parent, parser.Intern(name)); },
      [&] {
        Attribute* attribute = Attribute::Parse(parser, *element);
        if (attribute == nullptr) return false;
        element->HandleSpecialAttributes(attribute);
        element->AppendAttribute(attribute);
        return true;
      });
  return read ? element : nullptr;
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
      default:
        CheckContentCharacter(parser, c);
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

bool Element::ParseETag(Parser& parser) { return ReadETag(parser, GetName()); }

void Element::ParseReference(Parser& parser) {
  Reference* reference = Reference::Parse(parser, *this);
  if (reference == nullptr) parser.SyntaxError(PARSE_INVALID_REFERENCE);
  Append(reference);
}

void Element::HandleSpecialAttributes(const Attribute* attribute) {
  if (attribute->GetName() == L"xml:space") SetPreserveSpaces(attribute->GetValue() == L"preserve");
}

bool Element::ParseSelected(Parser& parser, NodeContainer& parent, const RootSelection& selection,
                            Element*& root) {
  root = nullptr;
  std::wstring_view name;
  // Only the first attribute of each name is kept, the one GetAttribute finds.
  std::vector<bool> kept(selection.attributes.size());
  bool isEmpty;
  const bool read = ReadTagBegining(
      parser, isEmpty,
      [&](std::wstring_view tagName) {
        name = tagName;
        if (IndexOf(selection.names, name) < selection.names.size())
          root = parser.Make<Element>(parent, parser.Intern(name));
      },
      [&] {
        return ReadAttribute(parser, [&](std::wstring_view attributeName) {
          const std::size_t index = IndexOf(selection.attributes, attributeName);
          if (root == nullptr || index == kept.size() || kept[index]) {
            return Private::SkipAttValue(parser);
          }
          kept[index] = true;
          Attribute* attribute = parser.Make<Attribute>(*root, parser.Intern(attributeName));
          if (!attribute->ParseAttValueJoined(parser)) return false;
          root->HandleSpecialAttributes(attribute);
          root->AppendAttribute(attribute);
          return true;
        });
      });
  if (!read) return false;
  if (!isEmpty) CheckContentETag(parser, name, selection.firstCData ? root : nullptr);
  return true;
}

void Element::CheckContentETag(Parser& parser, std::wstring_view name, Element* cdataHolder) {
  // The elements nested in this one whose end tag is still to come, innermost last, each as
  // where its name starts in the text: four bytes each, so that however deep a document nests,
  // this costs less than its text. A deque grows without copying what it holds.
  std::deque<std::uint32_t> open;
  bool keepCData = cdataHolder != nullptr;
  for (;;) {
    SkipPlainCharacters<L'<', L'&', L']'>(parser);
    const wchar_t c = parser.NextChar();
    switch (c) {
      case L'<': {
        parser.PreviousChar();
        // The same choice of markup as ParseMarkup makes.
        const wchar_t* next = parser.m_pCurrent + 1;
        const wchar_t after = next < parser.m_pEnd ? *next : 0;
        if (after == L'/') {
          ReadETag(parser, open.empty() ? name : NameAt(parser, open.back()));
          if (open.empty()) return;
          open.pop_back();
          break;
        }
        std::wstring_view text;
        if ((after == L'!' || after == L'?') && Private::ReadCommentOrPi(parser)) break;
        if (after == L'!' && ReadCData(parser, text)) {
          if (keepCData && open.empty()) {
            cdataHolder->Append(parser.Make<CData>(*cdataHolder, parser.Copy(text)));
            keepCData = false;
          }
          break;
        }
        bool isEmpty;
        std::uint32_t at = 0;
        const bool read = ReadTagBegining(
            parser, isEmpty,
            [&](std::wstring_view tagName) {
              at = static_cast<std::uint32_t>(tagName.data() - parser.m_pBegin);
            },
            [&parser] { return SkipAttribute(parser); });
        if (!read) parser.SyntaxError(PARSE_UNKNOWN_MARKUP);
        if (!isEmpty) open.push_back(at);
        break;
      }
      case L'&':
        parser.PreviousChar();
        ReadReferenceCharacter(parser);
        break;
      default:
        CheckContentCharacter(parser, c);
    }
  }
}

Attribute* Attribute::Parse(Parser& parser, Element& element) {
  Attribute* attribute = nullptr;
  ReadAttribute(parser, [&](std::wstring_view name) {
    attribute = parser.Make<Attribute>(element, parser.Intern(name));
    return attribute->ParseAttValue(parser);
  });
  return attribute;
}

bool Attribute::ParseAttValue(Parser& parser) {
  return ReadAttValue(
      parser, [this](Bookmark& run, int trim) { AddText(run, trim); },
      [this, &parser] {
        Reference* reference = Reference::Parse(parser, *this);
        if (reference == nullptr) parser.SyntaxError(PARSE_INVALID_REFERENCE);
        Append(reference);
      });
}

bool Attribute::ParseAttValueJoined(Parser& parser) {
  // Read twice: once to learn the value's length and whether it fits one byte per character,
  // then into the text made for it. The value is never held twice.
  Bookmark start(parser);
  std::size_t length = 0;
  bool narrow = true;
  auto measure = [&](std::wstring_view piece) {
    length += piece.size();
    for (wchar_t c : piece) narrow = narrow && static_cast<std::uint32_t>(c) <= 0xFF;
  };
  if (!ReadAttValue(
          parser, [&](Bookmark& run, int trim) { measure(run.GetSpan(trim)); },
          [&] {
            const wchar_t character = ReadReferenceCharacter(parser);
            measure({&character, 1});
          })) {
    return false;
  }
  start.Restore();
  StoredText& value = parser.MakeText(length, narrow);
  std::size_t at = 0;
  auto store = [&](std::wstring_view piece) {
    for (wchar_t c : piece) value.Set(at++, c);
  };
  ReadAttValue(
      parser, [&](Bookmark& run, int trim) { store(run.GetSpan(trim)); },
      [&] {
        const wchar_t character = ReadReferenceCharacter(parser);
        store({&character, 1});
      });
  Append(parser.Make<Text>(*this, value));
  return true;
}

template <>
Comment* Comment::Parse(Parser& parser, NodeContainer& parent) {
  std::wstring_view text;
  if (!ReadComment(parser, text)) return nullptr;
  return parser.Make<Comment>(parent, parser.Copy(text));
}

template <>
CData* CData::Parse(Parser& parser, NodeContainer& parent) {
  std::wstring_view text;
  if (!ReadCData(parser, text)) return nullptr;
  return parser.Make<CData>(parent, parser.Copy(text));
}

Pi* Pi::Parse(Parser& parser, NodeContainer& parent) {
  std::wstring_view target, data;
  if (!ReadPi(parser, target, data)) return nullptr;
  return parser.Make<Pi>(parent, parser.Intern(target), parser.Copy(data));
}

bool Pi::ParsePITarget(Parser& parser, std::wstring_view& target) {
  if (!Private::ScanName(parser, target)) return false;
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
  int number;
  if (!ReadCharRef(parser, number)) return nullptr;
  return parser.Make<CharRef>(parent, number);
}

EntityRef* EntityRef::Parse(Parser& parser, NodeContainer& parent) {
  std::wstring_view name;
  wchar_t character;
  if (!ReadEntityRef(parser, name, character)) return nullptr;
  return parser.Make<EntityRef>(parent, parser.Intern(name), character);
}

}  // namespace Xml
