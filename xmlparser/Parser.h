// Parser.h: the XML parser's reader and its primitives. The parser reads a caller's buffer of
// wide characters in place, one character at a time, counting lines and columns; the grammar
// routines that build the tree are members of the node classes and move only through these.
#pragma once

#include <string_view>
#include <utility>
#include <vector>

#include "xmlparser/Arena.h"
#include "xmlparser/ParsingException.h"
#include "xmlparser/TString.h"

namespace Xml {

class Document;

// What Parser::ParseRoot keeps of a document: the root element, only when it has one of `names`;
// of a kept root's attributes, the first of each name in `attributes`; and, with `firstCData`, a
// kept root's first CDATA section among its children. Names are compared character for
// character, and the views must stay valid while a parse uses the selection.
struct RootSelection {
  std::vector<std::wstring_view> names;
  std::vector<std::wstring_view> attributes;
  bool firstCData = false;
};

// Name characters: ASCII letters and digits, '.', '-', '_', ':', the middle dot and the
// Latin-1 letters. Above U+00FF only the low 8 bits are looked at, so a character is a name
// character exactly when its low byte is one of those letters or the middle dot (U+0141 is,
// U+4E2D is not); the names this system looks for are all ASCII.
bool IsNameChar(wchar_t c);

class Parser {
 public:
  Parser();
  virtual ~Parser();

  // Parses `length` characters of `text` into a new document that the caller owns, or throws
  // ParsingException with the first error. The text must stay alive during the call only. A
  // negative length counts as an empty text.
  Document* Parse(const wchar_t* text, int length);
  // Reads and checks the whole text as Parse does, accepting the same texts and throwing the same
  // errors at the same places, but keeps of the document only what `selection` names: nothing
  // else of the root's content, of the prolog or of what follows the root, and neither the
  // declared version nor the encoding (the document gives the defaults). A root whose name is
  // not selected is left out: the document then has no root. A kept attribute's value is one
  // Text child holding the characters it stands for (references replaced, not trimmed), so
  // GetValue() gives what Parse's document gives. Beyond the text, memory then grows with what
  // is kept (and four bytes for each element open at a time), however much markup the text
  // holds.
  Document* ParseRoot(const wchar_t* text, int length, const RootSelection& selection);

  // Gives back the memory that this thread keeps from deleted documents for its next parse: for
  // a program that has parsed something large and goes on with other work that needs the room.
  static void ReleaseSpareMemory();

  // The next character, with any line end (CR LF, LF or a lone CR) read as one line feed; 0
  // at the end of the text, every time, and for a NUL character in it.
  wchar_t NextChar();
  // Steps back over the character last read. Exact for one step only; after the end has been
  // read it changes nothing.
  void PreviousChar();
  // Moves forward to `to` over characters that are not line ends, with the same effect on
  // position, line and column as reading them one by one: the way runs are read in bulk.
  void Advance(const wchar_t* to) {
    if (to == m_pCurrent) return;
    m_nColumn += static_cast<int>(to - m_pCurrent);
    m_nPrevColumn = m_nColumn - 1;
    m_pCurrent = to;
  }
  // Throws ParsingException with `error` at the current line and column.
  [[noreturn]] void SyntaxError(PARSER_ERROR error);

  // The recognisers: true when the construct was read. On false the position, line and
  // column are as before the call, except where noted.
  bool ParseSpaces();  // one or more of space, tab, line end
  bool ParseChar(wchar_t c);
  bool ParseEq();  // optional white space, "=", optional white space
  bool ParseString(const wchar_t* s);
  bool ParseStringNoCase(const wchar_t* s);  // ASCII letters compared without case
  // White space, `keyword` and "=", as in a pseudo-attribute of the XML declaration; raises
  // PARSE_NO_EQUAL_SIGN when the keyword is not followed by "=".
  bool ParseDeclBegining(const wchar_t* keyword);
  // A decimal (hexadecimal) number, wrapping silently beyond 32 bits. On false the character
  // that is not a digit stays consumed.
  bool ParseNumber(int& value);
  bool ParseHexNumber(int& value);
  bool ParseName(TString& name);      // a name starts with a letter, '_' or ':'
  bool ParseNmtoken(TString& token);  // name characters only

  // A new node of the document being parsed, in the document's arena, and the arena's copy of
  // a text or of a name.
  template <class T, class... Arguments>
  T* Make(Arguments&&... arguments) {
    return new (m_pArena->Allocate(sizeof(T))) T(std::forward<Arguments>(arguments)..., ArenaKey());
  }
  const StoredText& Copy(std::wstring_view text) { return m_pArena->Copy(text); }
  const StoredText& Intern(std::wstring_view name) { return m_pArena->Intern(name); }
  StoredText& MakeText(std::size_t length, bool narrow) {
    return m_pArena->MakeText(length, narrow);
  }

  const wchar_t* m_pBegin;
  // The next character to read; one past m_pEnd once the end has been read.
  const wchar_t* m_pCurrent;
  const wchar_t* m_pEnd;
  int m_nLine;
  // On the first line one more than the characters read on it; on later lines equal to them.
  int m_nColumn;
  int m_nPrevColumn;  // the column before the last character read, for stepping back
  Arena* m_pArena;    // the memory of the document being parsed; null between parses
  // What ParseRoot keeps, while it parses; null while Parse keeps everything, and between parses.
  const RootSelection* m_pSelection;

 private:
  // Parse with a null `selection`, ParseRoot with its own.
  Document* ParseKeeping(const wchar_t* text, int length, const RootSelection* selection);
};

// A saved reading position of one parser: a plain value on the stack of the routine using it.
class Bookmark {
 public:
  explicit Bookmark(Parser& parser);

  // Sets the parser's position, line and column back to the saved ones.
  void Restore();
  // Moves the bookmark to the parser's current position.
  void Reset();
  // The text from the bookmark to the parser's position, without its last `trim` characters
  // and never beyond the end of the text.
  void GetSubString(TString& out, int trim) const;
  std::wstring_view GetSpan(int trim) const;
  Parser& GetParser() const { return m_parser; }

 private:
  Parser& m_parser;
  const wchar_t* m_pPosition;
  int m_nLine;
  int m_nColumn;
};

// Reading a character sits on the path of every character of every document.
inline wchar_t Parser::NextChar() {
  if (m_pCurrent >= m_pEnd) {
    m_pCurrent = m_pEnd + 1;
    return 0;
  }
  wchar_t c = *m_pCurrent++;
  if (c == L'\r') {
    if (m_pCurrent < m_pEnd && *m_pCurrent == L'\n') ++m_pCurrent;
    c = L'\n';
  }
  m_nPrevColumn = m_nColumn;
  if (c == L'\n') {
    ++m_nLine;
    m_nColumn = 0;
  } else {
    ++m_nColumn;
  }
  return c;
}

inline void Parser::PreviousChar() {
  if (m_pCurrent > m_pEnd) return;
  if (m_pCurrent == m_pBegin) {
    m_nLine = m_nColumn = m_nPrevColumn = 1;
    return;
  }
  --m_pCurrent;
  if (*m_pCurrent == L'\n') {
    if (m_pCurrent > m_pBegin && m_pCurrent[-1] == L'\r') --m_pCurrent;
    --m_nLine;
  } else if (*m_pCurrent == L'\r') {
    --m_nLine;
  }
  m_nColumn = m_nPrevColumn;
}

inline bool Parser::ParseChar(wchar_t c) {
  if (NextChar() == c) return true;
  PreviousChar();
  return false;
}

}  // namespace Xml
