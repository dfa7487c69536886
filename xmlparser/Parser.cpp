#include "xmlparser/Parser.h"

#include <algorithm>
#include <iterator>
#include <utility>

#include "xmlparser/Arena.h"
#include "xmlparser/CharacterData.h"
#include "xmlparser/Document.h"
#include "xmlparser/Private.h"

namespace Xml {
namespace {

bool IsNameStartChar(wchar_t c) {
  return (c >= L'A' && c <= L'Z') || (c >= L'a' && c <= L'z') || c == L'_' || c == L':';
}

bool IsDecimalDigit(wchar_t c) { return c >= L'0' && c <= L'9'; }

// The value of a hexadecimal digit, or -1.
int HexDigitValue(wchar_t c) {
  if (c >= L'0' && c <= L'9') return c - L'0';
  if (c >= L'a' && c <= L'f') return c - L'a' + 10;
  if (c >= L'A' && c <= L'F') return c - L'A' + 10;
  return -1;
}

wchar_t FoldAsciiCase(wchar_t c) { return c >= L'A' && c <= L'Z' ? c + 32 : c; }

// A number in `base` whose digits `digit` values (-1 for a non-digit). The arithmetic is
// unsigned 32-bit so that long numbers wrap as documented instead of overflowing.
bool ParseDigits(Parser& parser, unsigned int base, int (*digit)(wchar_t), int& value) {
  int first = digit(parser.NextChar());
  if (first < 0) return false;
  unsigned int number = 0;
  for (int next = first; next >= 0; next = digit(parser.NextChar())) {
    number = number * base + static_cast<unsigned int>(next);
  }
  parser.PreviousChar();
  value = static_cast<int>(number);
  return true;
}

int DecimalDigitValue(wchar_t c) { return IsDecimalDigit(c) ? c - L'0' : -1; }

}  // namespace

// One message per code, in code order, each spelled as it has always been, slips included:
// callers may compare the text.
const wchar_t* const ParsingException::s_szMessages[] = {
    L"No error",
    L"Unexpected end of document",
    L"Unlegal character",
    L"There is no equal sign",
    L"Invalid value of the attribute",
    L"Unexpected tag",
    L"Invalid reference",
    L"Invalid hexadecimal number",
    L"Invalid decimal number",
    L"Unknown entity reference",
    L"Invalid name of tag",
    L"Invalid empty tag",
    L"Invalid End tag",
    L"The end tag has not the same name as the start tag",
    L"Invalid or unknown markup",
    L"']]>' is not allowed here",
    L"The document has no root (element)",
    L"Invalid XML declaration (version)",
    L"Invalid end of XML declaration",
    L"Invalid encoding declaration",
    L"Invalid name of encoding",
    L"Invalid standalone declaration",
    L"Invalid standalone value. Must be 'yes' or 'no'",
    L"'--' is not allowed in the content of a comment",
    L"Invalid Processing instruction target name",
    L"Processing instruction target names may not be 'XML' in any combination of cases",
    L"Error in DOCTYPE declaration",
    L"Invalid parameter entity",
    L"Invalid character in PUBLIC literal",
    L"Invalid ELEMENT declaration",
    L"'|' is expected here",
    L"',' is expected here",
    L"Invalid content particle",
    L"Invalid ATTLIST declaration",
    L"Invalid definition of attribute",
    L"Invalid NOTATION type",
    L"Invalid enumeration",
    L"Invalid #FIXED declaration",
    L"Invalid ENTITY declatation",
    L"Invalid NDATA declaration",
    L"Invalid NOTATION declaration",
    L"Invalid SYSTEM literal",
    L"Invalid PUBLIC literal",
    L"Unexpected data after the root element",
};

const wchar_t* ParsingException::GetErrorMessage() const {
  constexpr int count = std::size(s_szMessages);
  static_assert(count == PARSE_DATA_AFTER_ROOT + 1, "one message for every code");
  return m_error >= 0 && m_error < count ? s_szMessages[m_error] : s_szMessages[0];
}

bool IsNameChar(wchar_t c) {
  if (IsDecimalDigit(c) || c == L'.' || c == L'-' || c == L'_' || c == L':') return true;
  const unsigned int low = static_cast<unsigned int>(c) & 0xFF;
  return (low >= 0x41 && low <= 0x5A) || (low >= 0x61 && low <= 0x7A) ||
         (low >= 0xC0 && low <= 0xD6) || (low >= 0xD8 && low <= 0xF6) ||
         (low >= 0xF8 && low <= 0xFE) || low == 0xB7;
}

Parser::Parser()
    : m_pBegin(nullptr),
      m_pCurrent(nullptr),
      m_pEnd(nullptr),
      m_nLine(1),
      m_nColumn(0),
      m_nPrevColumn(0),
      m_pArena(nullptr),
      m_pSelection(nullptr) {}

Parser::~Parser() {}

void Parser::ReleaseSpareMemory() { ReleaseSpareBlocks(); }

Document* Parser::Parse(const wchar_t* text, int length) {
  return ParseKeeping(text, length, nullptr);
}

Document* Parser::ParseRoot(const wchar_t* text, int length, const RootSelection& selection) {
  return ParseKeeping(text, length, &selection);
}

Document* Parser::ParseKeeping(const wchar_t* text, int length, const RootSelection* selection) {
  static const wchar_t empty[1] = {0};
  if (text == nullptr || length < 0) {
    text = empty;
    length = 0;
  }
  m_pBegin = m_pCurrent = text;
  m_pEnd = text + length;
  m_nLine = 1;
  m_nColumn = 1;
  // The selection is the caller's: it is let go when the parse ends, in a document or an error.
  struct SelectionInUse {
    Parser& parser;
    ~SelectionInUse() { parser.m_pSelection = nullptr; }
  } inUse{*this};
  m_pSelection = selection;
  return Document::Parse(*this);
}

void Parser::SyntaxError(PARSER_ERROR error) { throw ParsingException(error, m_nLine, m_nColumn); }

bool Parser::ParseSpaces() {
  if (!Private::IsSpace(NextChar())) {
    PreviousChar();
    return false;
  }
  // Spaces and tabs in bulk; a line end is read as one, by NextChar.
  do {
    const wchar_t* p = m_pCurrent;
    while (p < m_pEnd && (*p == L' ' || *p == L'\t')) ++p;
    Advance(p);
  } while (Private::IsSpace(NextChar()));
  PreviousChar();
  return true;
}

bool Parser::ParseEq() {
  Bookmark start(*this);
  ParseSpaces();
  if (ParseChar(L'=')) {
    ParseSpaces();
    return true;
  }
  start.Restore();
  return false;
}

bool Parser::ParseString(const wchar_t* s) {
  Bookmark start(*this);
  for (; *s != 0; ++s) {
    if (NextChar() != *s) {
      start.Restore();
      return false;
    }
  }
  return true;
}

bool Parser::ParseStringNoCase(const wchar_t* s) {
  Bookmark start(*this);
  for (; *s != 0; ++s) {
    if (FoldAsciiCase(NextChar()) != FoldAsciiCase(*s)) {
      start.Restore();
      return false;
    }
  }
  return true;
}

bool Parser::ParseDeclBegining(const wchar_t* keyword) {
  Bookmark start(*this);
  if (!ParseSpaces()) return false;
  if (!ParseString(keyword)) {
    start.Restore();
    return false;
  }
  if (!ParseEq()) SyntaxError(PARSE_NO_EQUAL_SIGN);
  return true;
}

bool Parser::ParseNumber(int& value) { return ParseDigits(*this, 10, DecimalDigitValue, value); }

bool Parser::ParseHexNumber(int& value) { return ParseDigits(*this, 16, HexDigitValue, value); }

bool Parser::ParseName(TString& name) {
  return Private::ParseRun(*this, IsNameStartChar, IsNameChar, name);
}

bool Parser::ParseNmtoken(TString& token) {
  return Private::ParseRun(*this, IsNameChar, IsNameChar, token);
}

Bookmark::Bookmark(Parser& parser)
    : m_parser(parser),
      m_pPosition(parser.m_pCurrent),
      m_nLine(parser.m_nLine),
      m_nColumn(parser.m_nColumn) {}

void Bookmark::Restore() {
  m_parser.m_pCurrent = m_pPosition;
  m_parser.m_nLine = m_nLine;
  m_parser.m_nColumn = m_nColumn;
}

void Bookmark::Reset() {
  m_pPosition = m_parser.m_pCurrent;
  m_nLine = m_parser.m_nLine;
  m_nColumn = m_parser.m_nColumn;
}

void Bookmark::GetSubString(TString& out, int trim) const { out = GetSpan(trim); }

std::wstring_view Bookmark::GetSpan(int trim) const {
  const wchar_t* end = std::min(m_parser.m_pCurrent, m_parser.m_pEnd) - trim;
  return {m_pPosition, end > m_pPosition ? static_cast<std::size_t>(end - m_pPosition) : 0};
}

void NodeContainer::AddText(Bookmark& bookmark, int trim) {
  Parser& parser = bookmark.GetParser();
  Append(parser.Make<Text>(*this, parser.Copy(bookmark.GetSpan(trim))));
  bookmark.Reset();
}

namespace Private {

bool SkipRun(Parser& parser, bool (*isFirst)(wchar_t), bool (*isRest)(wchar_t)) {
  if (!isFirst(parser.NextChar())) {
    parser.PreviousChar();
    return false;
  }
  const wchar_t* p = parser.m_pCurrent;
  while (p < parser.m_pEnd && *p != L'\r' && *p != L'\n' && isRest(*p)) ++p;
  parser.Advance(p);
  while (isRest(parser.NextChar())) {
  }
  parser.PreviousChar();
  return true;
}

bool ParseRun(Parser& parser, bool (*isFirst)(wchar_t), bool (*isRest)(wchar_t), TString& out) {
  Bookmark start(parser);
  if (!SkipRun(parser, isFirst, isRest)) return false;
  start.GetSubString(out, 0);
  return true;
}

bool SkipName(Parser& parser) { return SkipRun(parser, IsNameStartChar, IsNameChar); }

bool SkipNmtoken(Parser& parser) { return SkipRun(parser, IsNameChar, IsNameChar); }

wchar_t ParseOpeningQuote(Parser& parser) {
  const wchar_t quote = parser.NextChar();
  if (IsQuote(quote)) return quote;
  parser.PreviousChar();
  return 0;
}

bool ScanName(Parser& parser, std::wstring_view& name) {
  const wchar_t* start = parser.m_pCurrent;
  if (!SkipName(parser)) return false;
  const wchar_t* end = std::min(parser.m_pCurrent, parser.m_pEnd);
  name = {start, static_cast<std::size_t>(end - start)};
  return true;
}

}  // namespace Private
}  // namespace Xml
