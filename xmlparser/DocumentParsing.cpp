// The grammar of the document level: the XML declaration, the prolog, the root element and what
// may follow it.
#include "xmlparser/Document.h"

#include <memory>

#include "xmlparser/CharacterData.h"
#include "xmlparser/Element.h"
#include "xmlparser/Parser.h"
#include "xmlparser/Private.h"

namespace Xml {
namespace {

bool IsAsciiLetter(wchar_t c) { return (c >= L'a' && c <= L'z') || (c >= L'A' && c <= L'Z'); }

bool IsAsciiAlphanumeric(wchar_t c) { return IsAsciiLetter(c) || (c >= L'0' && c <= L'9'); }

bool IsVersionChar(wchar_t c) {
  return IsAsciiAlphanumeric(c) || c == L'_' || c == L'.' || c == L':' || c == L'-';
}

bool IsEncodingChar(wchar_t c) {
  return IsAsciiAlphanumeric(c) || c == L'.' || c == L'_' || c == L'-';
}

// A pseudo-attribute of the XML declaration: white space, `keyword`, "=", and a value between
// matching quotes that `parseValue` reads. False when the keyword is absent; a missing opening
// quote raises `quoteError`, a value that does not parse or is not closed `valueError`.
template <class ParseValue>
bool ParsePseudoAttribute(Parser& parser, const wchar_t* keyword, PARSER_ERROR quoteError,
                          PARSER_ERROR valueError, ParseValue parseValue) {
  if (!parser.ParseDeclBegining(keyword)) return false;
  const wchar_t quote = parser.NextChar();
  if (!Private::IsQuote(quote)) parser.SyntaxError(quoteError);
  if (!parseValue()) parser.SyntaxError(valueError);
  if (parser.NextChar() != quote) parser.SyntaxError(valueError);
  return true;
}

// A value of the XML declaration, kept in `value` unless the parse keeps only a selection of the
// document: a long one would cost four times its length in the text and as much again here.
bool ParseDeclValue(Parser& parser, bool (*isFirst)(wchar_t), bool (*isRest)(wchar_t),
                    TString& value) {
  if (parser.m_pSelection != nullptr) return Private::SkipRun(parser, isFirst, isRest);
  return Private::ParseRun(parser, isFirst, isRest, value);
}

}  // namespace

Document* Document::Parse(Parser& parser) {
  std::unique_ptr<Document> document(new Document());
  // The parser builds into the document's arena for as long as the parse lasts, and no longer,
  // whether the parse ends in a document or an error.
  struct ArenaInUse {
    Parser& parser;
    ~ArenaInUse() { parser.m_pArena = nullptr; }
  } inUse{parser};
  parser.m_pArena = &document->m_arena;
  document->ParseProlog(parser);
  document->ParseRootElement(parser);
  document->ParseMiscs(parser);
  // A NUL character ends the text as its end does.
  if (parser.NextChar() != 0) parser.SyntaxError(PARSE_DATA_AFTER_ROOT);
  return document.release();
}

bool Document::ParseProlog(Parser& parser) {
  ParseXMLDecl(parser);
  ParseMiscs(parser);
  // A document type declaration is recognised once, after the declaration and what follows it.
  if (m_dtd.ParseDoctypedecl(parser)) ParseMiscs(parser);
  return true;
}

bool Document::ParseXMLDecl(Parser& parser) {
  if (!parser.ParseString(L"<?xml")) return false;
  if (!ParseVersionInfo(parser, m_strVersion)) parser.SyntaxError(PARSE_XML_DECL_VERSION);
  ParseEncodingDecl(parser, m_strEncoding);
  ParseSDDecl(parser, m_bStandalone);
  parser.ParseSpaces();
  if (!parser.ParseString(L"?>")) parser.SyntaxError(PARSE_XML_DECL_END);
  return true;
}

bool Document::ParseVersionInfo(Parser& parser, TString& version) {
  return ParsePseudoAttribute(parser, L"version", PARSE_XML_DECL_VERSION, PARSE_XML_DECL_VERSION,
                              [&] { return ParseVersionNum(parser, version); });
}

bool Document::ParseVersionNum(Parser& parser, TString& version) {
  return ParseDeclValue(parser, IsVersionChar, IsVersionChar, version);
}

bool Document::ParseEncodingDecl(Parser& parser, TString& encoding) {
  return ParsePseudoAttribute(parser, L"encoding", PARSE_ENCODING_DECL, PARSE_ENCODING_NAME,
                              [&] { return ParseEncName(parser, encoding); });
}

bool Document::ParseEncName(Parser& parser, TString& encoding) {
  return ParseDeclValue(parser, IsAsciiLetter, IsEncodingChar, encoding);
}

bool Document::ParseSDDecl(Parser& parser, bool& standalone) {
  return ParsePseudoAttribute(parser, L"standalone", PARSE_STANDALONE_DECL, PARSE_STANDALONE_VALUE,
                              [&] {
                                if (parser.ParseString(L"yes")) return standalone = true;
                                if (!parser.ParseString(L"no")) return false;
                                standalone = false;
                                return true;
                              });
}

bool Document::ParseMisc(Parser& parser) {
  if (parser.m_pSelection != nullptr) {
    if (Private::ReadCommentOrPi(parser)) return true;
  } else if (Node* markup = Private::ParseCommentOrPi(parser, *this)) {
    Append(markup);
    return true;
  }
  return parser.ParseSpaces();
}

void Document::ParseMiscs(Parser& parser) {
  while (ParseMisc(parser)) {
  }
}

void Document::ParseRootElement(Parser& parser) {
  Element* root = nullptr;
  const bool read = parser.m_pSelection != nullptr
                        ? Element::ParseSelected(parser, *this, *parser.m_pSelection, root)
                        : (root = Element::Parse(parser, *this)) != nullptr;
  if (!read) parser.SyntaxError(PARSE_NO_ROOT);
  if (root == nullptr) return;  // read, but not among the roots selected
  Append(root);
  m_pRoot = root;
}

}  // namespace Xml
