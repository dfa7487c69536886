// The reader and its recognisers, run directly over short texts.
#include <gtest/gtest.h>

#include "xmlparser/Xml.h"

namespace {

using namespace Xml;

// A parser reading `text` from its start, as Parse() sets it up, without running the grammar.
struct Reader : Parser {
  explicit Reader(const TString& text) : m_text(text) {
    m_pBegin = m_pCurrent = m_text.data();
    m_pEnd = m_text.data() + m_text.size();
    m_nLine = m_nColumn = 1;
  }
  // What is left to read.
  TString Rest() const { return m_pCurrent < m_pEnd ? TString(m_pCurrent, m_pEnd) : TString(); }
  std::pair<int, int> Position() const { return {m_nLine, m_nColumn}; }

  const TString m_text;
};

// Reads ('r') or steps back ('b') over `text` as `steps` say, and records each character read
// and where the reader stands after every step, as "char@line:column".
std::string Trace(const TString& text, const char* steps) {
  Reader reader(text);
  std::string trace;
  for (const char* step = steps; *step != 0; ++step) {
    wchar_t c = L'<';
    if (*step == 'r') c = reader.NextChar();
    if (*step == 'b') reader.PreviousChar();
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
    const wchar_t* rest;  // after a success; null for a failure, which leaves the reader as it was
  };
  const Case cases[] = {
      {"spaces", L" \t\r\n x", [](Parser& p) { return p.ParseSpaces(); }, L"x"},
      {"no case", L"DocType!", [](Parser& p) { return p.ParseStringNoCase(L"doctype"); }, L"!"},
      {"folds letters only", L"[", [](Parser& p) { return p.ParseStringNoCase(L"{"); }, nullptr},
      {"decl needs leading space", L"version=",
       [](Parser& p) { return p.ParseDeclBegining(L"version"); }, nullptr},
      {"decl", L" version = '", [](Parser& p) { return p.ParseDeclBegining(L"version"); }, L"'"},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.label);
    Reader reader(c.text);
    const std::pair<int, int> before = reader.Position();
    EXPECT_EQ(c.rest != nullptr, c.recognise(reader));
    EXPECT_EQ(c.rest != nullptr ? c.rest : c.text, reader.Rest());
    if (c.rest == nullptr) {
      EXPECT_EQ(before, reader.Position());
    }
  }
}

TEST(ParserTest, NamesAndTokens) {
  struct Case {
    const wchar_t *text, *name, *token;  // nullptr: not a name, not a name token
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
    SCOPED_TRACE(c.text);
    Reader nameReader(c.text), tokenReader(c.text);
    TString name, token;
    EXPECT_EQ(c.name != nullptr, nameReader.ParseName(name));
    EXPECT_EQ(c.name != nullptr ? c.name : L"", name);
    if (c.name == nullptr) {
      EXPECT_EQ(c.text, nameReader.Rest());
    }
    EXPECT_EQ(c.token != nullptr, tokenReader.ParseNmtoken(token));
    EXPECT_EQ(c.token != nullptr ? c.token : L"", token);
  }
}

TEST(ParserTest, BookmarksCutWithinTheText) {
  Reader reader(L"ab\r\ncd");
  Bookmark mark(reader);
  while (reader.NextChar() != 0) {
  }
  TString cut;
  mark.GetSubString(cut, 2);  // line ends keep their form; nothing past the end
  EXPECT_EQ(L"ab\r\n", cut);
}

}  // namespace
