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

// Reads ('r') or steps back ('b') over `text` as `steps` say, and records each character read
// and where the reader stands after every step, as "char@line:column".
std::string Trace(const TString& text, const char* steps) {
  Reader reader(text);
  std::string trace;
  for (const char* step = steps; *step != 0; ++step) {
    wchar_t c = L'<';
    if (*step == 'r') c = reader->NextChar();
    if (*step == 'b') reader->PreviousChar();
    const auto [line, column] = reader.Position();
    trace += c == L'\n' ? "LF" : c == 0 ? "0" : std::string(1, char(c));
    trace += "@" + std::to_string(line) + ":" + std::to_string(column) + " ";
  }
  return trace;
}

TEST(ParserTest, LineEndsColumnsAndSteppingBack) {
  // CR LF and a lone CR are one line end each; stepping back restores line and column; after
  // the end every read is 0 and stepping back changes nothing; at the start it gives 1:1.
  EXPECT_EQ("a@1:2 LF@2:0 <@1:2 LF@2:0 b@2:1 LF@3:0 <@2:1 LF@3:0 c@3:1 0@3:1 <@3:1 0@3:1 ",
            Trace(L"a\r\nb\rc", "rrbrrrbrrrbr"));
  EXPECT_EQ("<@1:1 x@1:2 ", Trace(L"xy", "br"));
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
      {"no eq", L" x", [](Parser& p) { return p.ParseEq(); }, false, L" x"},
      {"string differs late", L"<!-x", [](Parser& p) { return p.ParseString(L"<!--"); }, false,
       L"<!-x"},
      {"no case", L"DocType!", [](Parser& p) { return p.ParseStringNoCase(L"doctype"); }, true,
       L"!"},
      {"no case folds letters only", L"[", [](Parser& p) { return p.ParseStringNoCase(L"{"); },
       false, L"["},
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

TEST(ParserTest, NamesAndTokens) {
  struct Case {
    const wchar_t* text;
    const wchar_t* name;   // nullptr: not a name
    const wchar_t* token;  // nullptr: not a name token
  };
  const Case cases[] = {
      {L"_a.b-c:d e", L"_a.b-c:d", L"_a.b-c:d"},
      {L"1ab", nullptr, L"1ab"},
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
  mark.GetSubString(cut, 2);  // line ends keep their form; nothing past the end
  EXPECT_EQ(L"ab\r\n", cut);
  mark.Restore();
  EXPECT_EQ(L"ab\r\ncd", reader.Rest());
}

TEST(ParserTest, MessagesKeepTheirSpelling) {
  EXPECT_STREQ(L"Unlegal character",
               ParsingException(PARSE_ILLEGAL_CHARACTER, 1, 1).GetErrorMessage());
  EXPECT_STREQ(L"Invalid ENTITY declatation",
               ParsingException(PARSE_ENTITY_DECL, 1, 1).GetErrorMessage());
}

}  // namespace
