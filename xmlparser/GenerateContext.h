// GenerateContext.h: the state of one XML generation: where the text goes, how it is indented,
// and the little layout state that decides where line feeds and indentation go.
#pragma once

#include <string_view>

#include "xmlparser/TString.h"

namespace Xml {

class GenerateContext {
 public:
  // Option bit: no line feeds and no indentation anywhere.
  static const unsigned long COMPACT = 1;

  // Writes into `out` (appending; nothing clears it). A null `indentation` means two spaces;
  // otherwise the string is kept by pointer and must outlive the context.
  GenerateContext(TString& out, const wchar_t* indentation, unsigned long flags);
  // The copy writes into the same string.
  GenerateContext(const GenerateContext& other) = default;
  // Copies the options and layout state and replaces the text of this context's string with
  // the other's text; this context stays bound to its own string.
  GenerateContext& operator=(const GenerateContext& other);

  bool IsCompact() const { return (m_nFlags & COMPACT) != 0; }
  int GetLevel() const { return m_nLevel; }

  void Write(const TString& text);
  void Write(std::wstring_view text);
  void Write(const wchar_t* text);
  void Write(const wchar_t* text, size_t length);

  // A line feed when formatting, unless one was just written.
  void GenerateNewLine();
  // One indentation unit fewer than the level (none at level 1 or below).
  void GenerateIndentation();
  // Before an element, CDATA section, comment or processing instruction: one level deeper, and
  // when formatting a new line indented for it.
  void GenerateStartTagIndentation();
  // Before an end tag, when formatting: a new line indented like the start tag if markup was
  // written inside the element, then one level up. In compact mode it does nothing at all.
  void GenerateEndTagIndentation();
  // One level up, after markup that closes itself.
  void EndTag();

 private:
  void WriteIndentation();

  unsigned long m_nFlags;
  const wchar_t* m_szIndentation;
  TString& m_strOut;
  int m_nLevel;
  bool m_bEndTag;
  bool m_bNewLine;
};

// Writes `value` in upper-case hexadecimal into the end of `buffer` (`size` bytes, four per
// character) and returns its first digit; 0 and negative values give the empty string.
wchar_t* Int2Chars(int value, wchar_t* buffer, int size);

}  // namespace Xml
