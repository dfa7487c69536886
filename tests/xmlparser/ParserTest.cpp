// The reader and its recognisers, run directly over short texts.
#include <gtest/gtest.h>

#include "xmlparser/Xml.h"

namespace {

using namespace Xml;

// A parser reading `text` from its start, as Parse() sets it up, without running the grammar.
class Reader {
 public:
  explicit Reader(const TString& text) : m_text(text) {
    m_parser.m_pBegin = m_parser.m_pCurrent = m_text.data();
    m_parser.m_pEnd = m_text.data() + m_text.size();
    m_parser.m_nLine = 1;
    m_parser.m_nColumn = 1;
  }
  Parser* operator->() { return &m_parser; }
  // What is left to read.
  TString Rest() const {
    const wchar_t* end = m_parser.m_pEnd;
    return m_parser.m_pCurrent < end ? TString(m_parser.m_pCurrent, end) : TString();
  }
  std::pair<int, int> Position() const { return {m_parser.m_nLine, m_parser.m_nColumn}; }

 private:
  TString m_text;
  Parser m_parser;
};

TEST(ParserTest, LineEndsAndColumns) {
  Reader reader(L"a\r\nb\rc");
  EXPECT_EQ(L'a', reader->NextChar());
  EXPECT_EQ(std::make_pair(1, 2), reader.Position());
  EXPECT_EQ(L'\n', reader->NextChar());
  EXPECT_EQ(std::make_pair(2, 0), reader.Position());
  reader->PreviousChar();  // back over both characters of CR LF
  EXPECT_EQ(std::make_pair(1, 2), reader.Position());
  EXPECT_EQ(L"\r\nb\rc", reader.Rest());
  EXPECT_EQ(L'\n', reader->NextChar());
  EXPECT_EQ(L'b', reader->NextChar());
  EXPECT_EQ(std::make_pair(2, 1), reader.Position());
  EXPECT_EQ(L'\n', reader->NextChar());  // a lone CR is a line end too
  EXPECT_EQ(std::make_pair(3, 0), reader.Position());
  reader->PreviousChar();
  EXPECT_EQ(std::make_pair(2, 1), reader.Position());
  EXPECT_EQ(L'\n', reader->NextChar());
  EXPECT_EQ(L'c', reader->NextChar());
  for (int i = 0; i < 3; ++i) EXPECT_EQ(0, reader->NextChar());
  reader->PreviousChar();  // after the end, stepping back changes nothing
  EXPECT_EQ(0, reader->NextChar());
  EXPECT_EQ(std::make_pair(3, 1), reader.Position());
}

TEST(ParserTest, SteppingBackAtTheStart) {
  Reader reader(L"xy");
  reader->PreviousChar();
  EXPECT_EQ(std::make_pair(1, 1), reader.Position());
  EXPECT_EQ(1, reader->m_nPrevColumn);
  EXPECT_EQ(L"xy", reader.Rest());
}

TEST(ParserTest, RecognisersAndWhatTheyLeave) {
  struct Case {
    const char* label;
    const wchar_t* text;
    bool (*recognise)(Parser&);
    bool result;
    const wchar_t* rest;
  };
  const Case cases[] = {
      {"spaces", L" \t\r\n x", [](Parser& p) { return p.ParseSpaces(); }, true, L"x"},
      {"no spaces", L"x ", [](Parser& p) { return p.ParseSpaces(); }, false, L"x "},
      {"spaces to the end", L"  ", [](Parser& p) { return p.ParseSpaces(); }, true, L""},
      {"eq", L" = x", [](Parser& p) { return p.ParseEq(); }, true, L"x"},
      {"no eq", L" x", [](Parser& p) { return p.ParseEq(); }, false, L" x"},
      {"string", L"<!--x", [](Parser& p) { return p.ParseString(L"<!--"); }, true, L"x"},
      {"string differs late", L"<!-x", [](Parser& p) { return p.ParseString(L"<!--"); }, false,
       L"<!-x"},
      {"empty string", L"x", [](Parser& p) { return p.ParseString(L""); }, true, L"x"},
      {"char matches any line end", L"\r\nx", [](Parser& p) { return p.ParseChar(L'\n'); }, true,
       L"x"},
      {"no case", L"DocType!", [](Parser& p) { return p.ParseStringNoCase(L"doctype"); }, true,
       L"!"},
      {"no case folds letters only", L"[", [](Parser& p) { return p.ParseStringNoCase(L"{"); },
       false, L"["},
      {"decl keyword absent", L" encoding=",
       [](Parser& p) { return p.ParseDeclBegining(L"version"); }, false, L" encoding="},
      {"decl needs leading space", L"version=",
       [](Parser& p) { return p.ParseDeclBegining(L"version"); }, false, L"version="},
      {"decl", L" version = '", [](Parser& p) { return p.ParseDeclBegining(L"version"); }, true,
       L"'"},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.label);
    Reader reader(c.text);
    const std::pair<int, int> before = reader.Position();
    EXPECT_EQ(c.result, c.recognise(*reader.operator->()));
    EXPECT_EQ(c.rest, reader.Rest());
    if (!c.result) {
      EXPECT_EQ(before, reader.Position());
    }
  }
}

TEST(ParserTest, DeclKeywordWithoutEqualSign) {
  Reader reader(L" version x");
  try {
    reader->ParseDeclBegining(L"version");
    FAIL();
  } catch (const ParsingException& e) {
    EXPECT_EQ(PARSE_NO_EQUAL_SIGN, e.GetError());
  }
}

TEST(ParserTest, Numbers) {
  struct Case {
    const wchar_t* text;
    bool hex;
    bool result;
    int value;
    const wchar_t* rest;
  };
  const Case cases[] = {
      {L"065x", false, true, 65, L"x"},
      {L"x1", false, false, 0, L"1"},  // the non-digit stays consumed
      {L"4294967361;", false, true, 65, L";"},
      {L"1aF;", true, true, 431, L";"},
      {L"100000041;", true, true, 65, L";"},  // wraps beyond 32 bits
      {L"FFFFFFFF", true, true, -1, L""},
      {L"g", true, false, 0, L""},
      {L"", false, false, 0, L""},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(testing::Message() << (c.hex ? "hex " : "decimal ") << c.text);
    Reader reader(c.text);
    int value = 0;
    EXPECT_EQ(c.result, c.hex ? reader->ParseHexNumber(value) : reader->ParseNumber(value));
    EXPECT_EQ(c.value, value);
    EXPECT_EQ(c.rest, reader.Rest());
  }
}

TEST(ParserTest, NamesAndTokens) {
  struct Case {
    const wchar_t* text;
    const wchar_t* name;   // nullptr: not a name
    const wchar_t* token;  // nullptr: not a name token
  };
  const Case cases[] = {
      {L"_a.b-c:d e", L"_a.b-c:d", L"_a.b-c:d"},
      {L"1ab", nullptr, L"1ab"},
      {L"-ab>", nullptr, L"-ab"},
      {L"\u00B7x", nullptr, L"\u00B7x"},
      {L"caf\u00E9\u00D7", L"caf\u00E9", L"caf\u00E9"},
      {L"a\u00F7", L"a", L"a"},
      {L"a\u00FF", L"a", L"a"},
      {L"a\u0141\u4E2D", L"a\u0141", L"a\u0141"},
      {L"atEnd", L"atEnd", L"atEnd"},
      {L"", nullptr, nullptr},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(testing::Message() << "text #" << (&c - cases));
    Reader nameReader(c.text), tokenReader(c.text);
    TString name, token;
    EXPECT_EQ(c.name != nullptr, nameReader->ParseName(name));
    EXPECT_EQ(c.name != nullptr ? c.name : L"", name);
    if (c.name == nullptr) {
      EXPECT_EQ(c.text, nameReader.Rest());
    }
    EXPECT_EQ(c.token != nullptr, tokenReader->ParseNmtoken(token));
    EXPECT_EQ(c.token != nullptr ? c.token : L"", token);
  }
}

TEST(ParserTest, BookmarksCutWithinTheText) {
  Reader reader(L"ab\r\ncd");
  Bookmark mark(*reader.operator->());
  while (reader->NextChar() != 0) {
  }
  TString cut;
  mark.GetSubString(cut, 0);
  EXPECT_EQ(L"ab\r\ncd", cut);  // line ends keep their form; nothing past the end
  mark.GetSubString(cut, 2);
  EXPECT_EQ(L"ab\r\n", cut);
  mark.Restore();
  EXPECT_EQ(L"ab\r\ncd", reader.Rest());
  EXPECT_EQ(std::make_pair(1, 1), reader.Position());
}

TEST(ParserTest, Messages) {
  EXPECT_STREQ(L"No error", ParsingException(PARSE_NO_ERROR, 1, 1).GetErrorMessage());
  EXPECT_STREQ(L"Unlegal character",
               ParsingException(PARSE_ILLEGAL_CHARACTER, 1, 1).GetErrorMessage());
  EXPECT_STREQ(L"'|' is expected here",
               ParsingException(PARSE_BAR_EXPECTED, 1, 1).GetErrorMessage());
  EXPECT_STREQ(L"Invalid ENTITY declatation",
               ParsingException(PARSE_ENTITY_DECL, 1, 1).GetErrorMessage());
  EXPECT_STREQ(L"Unexpected data after the root element",
               ParsingException(PARSE_DATA_AFTER_ROOT, 1, 1).GetErrorMessage());
}

}  // namespace
