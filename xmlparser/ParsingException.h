// ParsingException.h: the parser's error codes and the exception that carries the first error
// out of a parse, with the line and column where it was found.
#pragma once

#include "xmlparser/Exception.h"

namespace Xml {

// The codes are fixed; GetErrorMessage() gives each one's message.
enum PARSER_ERROR {
  PARSE_NO_ERROR = 0,
  PARSE_UNEXPECTED_END = 1,
  PARSE_ILLEGAL_CHARACTER = 2,
  PARSE_NO_EQUAL_SIGN = 3,
  PARSE_INVALID_ATTRIBUTE_VALUE = 4,  // not quoted
  PARSE_UNEXPECTED_TAG = 5,           // "<" inside an attribute value
  PARSE_INVALID_REFERENCE = 6,
  PARSE_INVALID_HEX_NUMBER = 7,
  PARSE_INVALID_DECIMAL_NUMBER = 8,
  PARSE_UNKNOWN_ENTITY = 9,
  PARSE_INVALID_TAG_NAME = 10,
  PARSE_INVALID_EMPTY_TAG = 11,
  PARSE_INVALID_END_TAG = 12,  // a start or end tag not closed
  PARSE_END_TAG_MISMATCH = 13,
  PARSE_UNKNOWN_MARKUP = 14,
  PARSE_CDATA_END_IN_CONTENT = 15,  // "]]>" in character data
  PARSE_NO_ROOT = 16,
  PARSE_XML_DECL_VERSION = 17,
  PARSE_XML_DECL_END = 18,
  PARSE_ENCODING_DECL = 19,
  PARSE_ENCODING_NAME = 20,
  PARSE_STANDALONE_DECL = 21,
  PARSE_STANDALONE_VALUE = 22,
  PARSE_DOUBLE_HYPHEN_IN_COMMENT = 23,
  PARSE_PI_TARGET = 24,
  PARSE_PI_TARGET_XML = 25,
  PARSE_DOCTYPE_DECL = 26,
  PARSE_PE_REFERENCE = 27,
  PARSE_PUBID_CHARACTER = 28,
  PARSE_ELEMENT_DECL = 29,
  PARSE_BAR_EXPECTED = 30,
  PARSE_COMMA_EXPECTED = 31,
  PARSE_CONTENT_PARTICLE = 32,
  PARSE_ATTLIST_DECL = 33,
  PARSE_ATTRIBUTE_DEF = 34,
  PARSE_NOTATION_TYPE = 35,
  PARSE_ENUMERATION = 36,
  PARSE_FIXED_DECL = 37,  // "#FIXED" without white space after it
  PARSE_ENTITY_DECL = 38,
  PARSE_NDATA_DECL = 39,
  PARSE_NOTATION_DECL = 40,
  PARSE_SYSTEM_LITERAL = 41,  // a literal of an external identifier
  PARSE_PUBLIC_LITERAL = 42,
  PARSE_DATA_AFTER_ROOT = 43,
};

class ParsingException : public Exception {
 public:
  ParsingException(PARSER_ERROR error, int line, int column)
      : m_error(error), m_nLine(line), m_nColumn(column) {}

  // The code's fixed message; static storage, valid for the whole run of the program.
  const wchar_t* GetErrorMessage() const;
  PARSER_ERROR GetError() const { return m_error; }
  // Where the parser stood when it raised the error.
  int GetLine() const { return m_nLine; }
  int GetColumn() const { return m_nColumn; }

 private:
  static const wchar_t* const s_szMessages[];

  PARSER_ERROR m_error;
  int m_nLine;
  int m_nColumn;
};

}  // namespace Xml
