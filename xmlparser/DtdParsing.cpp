// The grammar of the document type declaration: recognised, checked for form, and dropped.
#include "xmlparser/Dtd.h"

#include <cwchar>
#include <deque>

#include "xmlparser/Parser.h"
#include "xmlparser/Private.h"

namespace Xml {
namespace {

// The characters of a public identifier besides ASCII letters and digits.
const wchar_t s_szChars[] = L" \r\n-'()+,./:=?;!*#@$_%";

bool IsPibidChar(wchar_t c) {
  return (c >= L'a' && c <= L'z') || (c >= L'A' && c <= L'Z') || (c >= L'0' && c <= L'9') ||
         (c != 0 && std::wcschr(s_szChars, c) != nullptr);
}

// Raises `error` unless `found`: the grammar's "step (code)".
void Require(Parser& parser, bool found, PARSER_ERROR error) {
  if (!found) parser.SyntaxError(error);
}

// The optional '?', '*' or '+' after a content particle or list.
void ParseOccurrenceSuffix(Parser& parser) {
  const wchar_t c = parser.NextChar();
  if (c != L'?' && c != L'*' && c != L'+') parser.PreviousChar();
}

// A quoted literal up to its closing quote; `accept` judges every character in between and
// returns the error for a bad one (PARSE_NO_ERROR to accept it).
template <class Accept>
bool ParseQuoted(Parser& parser, Accept accept) {
  const wchar_t quote = parser.NextChar();
  if (!Private::IsQuote(quote)) return false;
  for (wchar_t c = parser.NextChar(); c != quote; c = parser.NextChar()) {
    if (c == 0) parser.SyntaxError(PARSE_UNEXPECTED_END);
    const PARSER_ERROR error = accept(c);
    if (error != PARSE_NO_ERROR) parser.SyntaxError(error);
  }
  return true;
}

// After a "(": names or tokens separated by "|", white space around each, then ")"; any of
// them missing raises `error`.
void ParseAlternatives(Parser& parser, bool (*skipItem)(Parser&), PARSER_ERROR error) {
  do {
    parser.ParseSpaces();
    Require(parser, skipItem(parser), error);
    parser.ParseSpaces();
  } while (parser.ParseChar(L'|'));
  Require(parser, parser.ParseChar(L')'), error);
}

const char kUnknownSeparator = 0;

}  // namespace

bool Dtd::ParseDoctypedecl(Parser& parser) {
  if (!parser.ParseString(L"<!DOCTYPE")) return false;
  Require(parser, parser.ParseSpaces() && Private::SkipName(parser), PARSE_DOCTYPE_DECL);
  parser.ParseSpaces();
  if (ParseExternalID(parser)) parser.ParseSpaces();
  if (parser.ParseChar(L'[')) {
    while (!parser.ParseChar(L']')) {
      Require(parser, parser.ParseSpaces() || ParseMarkupdecl(parser) || ParsePEReference(parser),
              PARSE_DOCTYPE_DECL);
    }
    parser.ParseSpaces();
  }
  Require(parser, parser.ParseChar(L'>'), PARSE_DOCTYPE_DECL);
  return true;
}

bool Dtd::ParseMarkupdecl(Parser& parser) {
  return ParseElementDecl(parser) || ParseAttlistDecl(parser) || ParseEntityDecl(parser) ||
         ParseNotationDecl(parser);
}

bool Dtd::ParseElementDecl(Parser& parser) {
  if (!parser.ParseString(L"<!ELEMENT")) return false;
  Require(parser,
          parser.ParseSpaces() && Private::SkipName(parser) && parser.ParseSpaces() &&
              ParseContentspec(parser),
          PARSE_ELEMENT_DECL);
  parser.ParseSpaces();
  Require(parser, parser.ParseChar(L'>'), PARSE_ELEMENT_DECL);
  return true;
}

bool Dtd::ParseContentspec(Parser& parser) {
  return parser.ParseString(L"EMPTY") || parser.ParseString(L"ANY") || ParseMixed(parser) ||
         ParseChildren(parser);
}

bool Dtd::ParseMixed(Parser& parser) {
  Bookmark start(parser);
  if (!parser.ParseChar(L'(')) return false;
  parser.ParseSpaces();
  if (!parser.ParseString(L"#PCDATA")) {
    start.Restore();
    return false;
  }
  parser.ParseSpaces();
  if (parser.ParseString(L")*") || parser.ParseChar(L')')) return true;
  for (;;) {
    Require(parser, parser.ParseChar(L'|'), PARSE_BAR_EXPECTED);
    parser.ParseSpaces();
    // A "|" must be followed by a name: "(#PCDATA|)*" lists nothing and is refused like any
    // other missing particle.
    Require(parser, Private::SkipName(parser), PARSE_CONTENT_PARTICLE);
    parser.ParseSpaces();
    if (parser.ParseString(L")*")) return true;
  }
}

bool Dtd::ParseChildren(Parser& parser) {
  if (!ParseChoiceSeq(parser)) return false;
  ParseOccurrenceSuffix(parser);
  return true;
}

bool Dtd::ParseChoiceSeq(Parser& parser) {
  if (!parser.ParseChar(L'(')) return false;
  std::deque<char> openLists{kUnknownSeparator};
  parser.ParseSpaces();
  for (;;) {
    const size_t depth = openLists.size();
    Require(parser, ParseCp(parser, openLists), PARSE_CONTENT_PARTICLE);
    if (openLists.size() > depth) continue;  // a nested list opened: its first particle is next
    // After a particle: white space, then a separator or the list's ")".
    for (;;) {
      parser.ParseSpaces();
      const wchar_t c = parser.NextChar();
      char& separator = openLists.back();
      if (separator == kUnknownSeparator && c != L')' && c != 0) {
        // The first separator decides whether the list is a choice or a sequence; anything
        // else there is reported as the plainer case, a sequence missing its comma.
        if (c != L'|' && c != L',') parser.SyntaxError(PARSE_COMMA_EXPECTED);
        separator = static_cast<char>(c);
      }
      if (c == L')') {
        openLists.pop_back();
        if (openLists.empty()) return true;
        ParseOccurrenceSuffix(parser);  // the closed list was a particle of the enclosing one
        continue;
      }
      if (c == 0) parser.SyntaxError(PARSE_UNEXPECTED_END);
      if (c != separator) {
        parser.SyntaxError(separator == L'|' ? PARSE_BAR_EXPECTED : PARSE_COMMA_EXPECTED);
      }
      parser.ParseSpaces();
      break;
    }
  }
}

bool Dtd::ParseCp(Parser& parser, std::deque<char>& openLists) {
  if (Private::SkipName(parser)) {
    ParseOccurrenceSuffix(parser);
    return true;
  }
  if (!parser.ParseChar(L'(')) return false;
  openLists.push_back(kUnknownSeparator);
  parser.ParseSpaces();
  return true;
}

bool Dtd::ParseAttlistDecl(Parser& parser) {
  if (!parser.ParseString(L"<!ATTLIST")) return false;
  Require(parser, parser.ParseSpaces() && Private::SkipName(parser), PARSE_ATTLIST_DECL);
  while (ParseAttDef(parser)) {
  }
  parser.ParseSpaces();
  Require(parser, parser.ParseChar(L'>'), PARSE_ATTLIST_DECL);
  return true;
}

bool Dtd::ParseAttDef(Parser& parser) {
  Bookmark start(parser);
  if (!parser.ParseSpaces()) return false;
  if (!Private::SkipName(parser)) {
    start.Restore();
    return false;
  }
  Require(parser,
          parser.ParseSpaces() && ParseAttType(parser) && parser.ParseSpaces() &&
              ParseDefaultDecl(parser),
          PARSE_ATTRIBUTE_DEF);
  return true;
}

bool Dtd::ParseAttType(Parser& parser) {
  // Keywords match as prefixes, so the longer of two alike come first.
  static const wchar_t* const keywords[] = {L"CDATA",    L"IDREFS", L"IDREF",    L"ID",
                                            L"ENTITIES", L"ENTITY", L"NMTOKENS", L"NMTOKEN"};
  for (const wchar_t* keyword : keywords) {
    if (parser.ParseString(keyword)) return true;
  }
  return ParseNotationType(parser) || ParseEnumeration(parser);
}

bool Dtd::ParseNotationType(Parser& parser) {
  if (!parser.ParseString(L"NOTATION")) return false;
  Require(parser, parser.ParseSpaces() && parser.ParseChar(L'('), PARSE_NOTATION_TYPE);
  ParseAlternatives(parser, Private::SkipName, PARSE_NOTATION_TYPE);
  return true;
}

bool Dtd::ParseEnumeration(Parser& parser) {
  if (!parser.ParseChar(L'(')) return false;
  ParseAlternatives(parser, Private::SkipNmtoken, PARSE_ENUMERATION);
  return true;
}

bool Dtd::ParseDefaultDecl(Parser& parser) {
  if (parser.ParseString(L"#REQUIRED") || parser.ParseString(L"#IMPLIED")) return true;
  if (parser.ParseString(L"#FIXED")) Require(parser, parser.ParseSpaces(), PARSE_FIXED_DECL);
  // The value is read as an attribute's value is, with the same errors, and dropped.
  return Private::SkipAttValue(parser);
}

bool Dtd::ParseEntityDecl(Parser& parser) {
  if (!parser.ParseString(L"<!ENTITY")) return false;
  Require(parser, parser.ParseSpaces(), PARSE_ENTITY_DECL);
  if (parser.ParseChar(L'%')) {
    Require(parser,
            parser.ParseSpaces() && Private::SkipName(parser) && parser.ParseSpaces() &&
                ParsePEDef(parser),
            PARSE_ENTITY_DECL);
  } else {
    Require(parser, Private::SkipName(parser) && parser.ParseSpaces() && ParseEntityDef(parser),
            PARSE_ENTITY_DECL);
  }
  parser.ParseSpaces();
  Require(parser, parser.ParseChar(L'>'), PARSE_ENTITY_DECL);
  return true;
}

bool Dtd::ParseEntityDef(Parser& parser) {
  if (ParseEntityValue(parser)) return true;
  if (!ParseExternalID(parser)) return false;
  ParseNDataDecl(parser);
  return true;
}

bool Dtd::ParsePEDef(Parser& parser) { return ParseEntityValue(parser) || ParseExternalID(parser); }

bool Dtd::ParseNDataDecl(Parser& parser) {
  Bookmark start(parser);
  if (!parser.ParseSpaces()) return false;
  if (!parser.ParseString(L"NDATA")) {
    start.Restore();
    return false;
  }
  Require(parser, parser.ParseSpaces() && Private::SkipName(parser), PARSE_NDATA_DECL);
  return true;
}

bool Dtd::ParseEntityValue(Parser& parser) {
  const wchar_t quote = Private::ParseOpeningQuote(parser);
  if (quote == 0) return false;
  for (wchar_t c = parser.NextChar(); c != quote; c = parser.NextChar()) {
    if (c == L'%') {
      parser.PreviousChar();
      ParsePEReference(parser);
    } else if (c == L'&') {
      // Only the predefined entities may be named, as in content.
      parser.PreviousChar();
      wchar_t character;
      Private::ReadReference(parser, character);
    } else if (c == 0) {
      parser.SyntaxError(PARSE_UNEXPECTED_END);
    } else if (!Private::IsLegal(c)) {
      parser.SyntaxError(PARSE_ILLEGAL_CHARACTER);
    }
  }
  return true;
}

bool Dtd::ParseNotationDecl(Parser& parser) {
  if (!parser.ParseString(L"<!NOTATION")) return false;
  Require(parser, parser.ParseSpaces() && Private::SkipName(parser) && parser.ParseSpaces(),
          PARSE_NOTATION_DECL);
  if (parser.ParseString(L"SYSTEM")) {
    Require(parser, parser.ParseSpaces() && ParseSystemLiteral(parser), PARSE_SYSTEM_LITERAL);
  } else if (parser.ParseString(L"PUBLIC")) {
    Require(parser, parser.ParseSpaces() && ParsePubidLiteral(parser), PARSE_SYSTEM_LITERAL);
    // A notation may name its public identifier alone: the system literal is read only when
    // white space and a quote follow.
    Bookmark afterPublic(parser);
    if (parser.ParseSpaces() && (parser.ParseChar(L'"') || parser.ParseChar(L'\''))) {
      parser.PreviousChar();
      ParseSystemLiteral(parser);
    } else {
      afterPublic.Restore();
    }
  } else {
    parser.SyntaxError(PARSE_NOTATION_DECL);
  }
  parser.ParseSpaces();
  Require(parser, parser.ParseChar(L'>'), PARSE_NOTATION_DECL);
  return true;
}

bool Dtd::ParseExternalID(Parser& parser) {
  if (parser.ParseString(L"SYSTEM")) {
    Require(parser, parser.ParseSpaces() && ParseSystemLiteral(parser), PARSE_SYSTEM_LITERAL);
    return true;
  }
  if (parser.ParseString(L"PUBLIC")) {
    Require(parser, parser.ParseSpaces() && ParsePubidLiteral(parser), PARSE_SYSTEM_LITERAL);
    Require(parser, parser.ParseSpaces() && ParseSystemLiteral(parser), PARSE_SYSTEM_LITERAL);
    return true;
  }
  return false;
}

bool Dtd::ParsePublicID(Parser& parser) {
  if (!parser.ParseString(L"PUBLIC")) return false;
  Require(parser, parser.ParseSpaces() && ParsePubidLiteral(parser), PARSE_PUBLIC_LITERAL);
  return true;
}

bool Dtd::ParsePubidLiteral(Parser& parser) {
  return ParseQuoted(
      parser, [](wchar_t c) { return IsPibidChar(c) ? PARSE_NO_ERROR : PARSE_PUBID_CHARACTER; });
}

bool Dtd::ParseSystemLiteral(Parser& parser) {
  return ParseQuoted(parser, [](wchar_t c) {
    return static_cast<int>(c) < 32 && c != L'\t' && c != L'\n' ? PARSE_ILLEGAL_CHARACTER
                                                                : PARSE_NO_ERROR;
  });
}

bool Dtd::ParsePEReference(Parser& parser) {
  if (!parser.ParseChar(L'%')) return false;
  Require(parser, Private::SkipName(parser) && parser.ParseChar(L';'), PARSE_PE_REFERENCE);
  return true;
}

}  // namespace Xml
