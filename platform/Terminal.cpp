// Terminal.cpp: which characters are shown as escapes, and how.
#include "platform/Terminal.h"

#include <cstring>

#include "platform/TextDecoding.h"

namespace {

struct Range {
  UInt32 m_nFirst;
  UInt32 m_nLast;
};

// The characters of IsShownAsEscape, in order. Each is a control, or acts on the text around it
// rather than standing for itself: it can break that text, hide part of it or reorder it.
const Range kShownAsEscape[] = {
    {0x0000, 0x001F},    // C0 controls
    {0x007F, 0x009F},    // DEL and the C1 controls
    {0x00AD, 0x00AD},    // soft hyphen
    {0x0600, 0x0605},    // Arabic number signs
    {0x061C, 0x061C},    // Arabic letter mark
    {0x06DD, 0x06DD},    // Arabic end of ayah
    {0x070F, 0x070F},    // Syriac abbreviation mark
    {0x0890, 0x0891},    // Arabic pound and piastre marks above
    {0x08E2, 0x08E2},    // Arabic disputed end of ayah
    {0x180E, 0x180E},    // Mongolian vowel separator
    {0x200B, 0x200F},    // zero-width space, non-joiner, joiner; left-to-right, right-to-left marks
    {0x2028, 0x2029},    // line and paragraph separators
    {0x202A, 0x202E},    // bidirectional embeddings, pop and overrides
    {0x2060, 0x2064},    // word joiner, invisible operators
    {0x2066, 0x206F},    // bidirectional isolates, deprecated format characters
    {0xFEFF, 0xFEFF},    // byte-order mark (zero-width no-break space)
    {0xFFF9, 0xFFFB},    // interlinear annotation
    {0x110BD, 0x110BD},  // Kaithi number sign
    {0x110CD, 0x110CD},  // Kaithi number sign above
    {0x13430, 0x1343F},  // Egyptian hieroglyph format controls
    {0x1BCA0, 0x1BCA3},  // shorthand format controls
    {0x1D173, 0x1D17A},  // musical symbol beams, ties, slurs, phrases
    {0xE0001, 0xE0001},  // language tag
    {0xE0020, 0xE007F},  // tags
};

// `form` and then the `count` last hexadecimal digits of `value`.
std::string Escape(const char* form, UInt32 value, int count) {
  static const char digits[] = "0123456789abcdef";
  std::string escape = form;
  for (int shift = 4 * (count - 1); shift >= 0; shift -= 4) escape += digits[(value >> shift) & 15];
  return escape;
}

}  // namespace

bool IsShownAsEscape(UInt32 character) {
  for (const Range& range : kShownAsEscape) {
    if (character < range.m_nFirst) return false;
    if (character <= range.m_nLast) return true;
  }
  return false;
}

std::string CharacterEscape(UInt32 character) {
  if (character < 0x80) return Escape("\\x", character, 2);
  return character <= 0xFFFF ? Escape("\\u", character, 4) : Escape("\\U", character, 8);
}

std::string TerminalText(const std::string& text) {
  std::string shown;
  const UInt8* p = reinterpret_cast<const UInt8*>(text.data());
  const UInt8* const end = p + text.size();
  while (p < end) {
    const std::size_t length = *p < 0x80 ? 1 : Utf8SequenceLength(p, end);
    if (length == 0) {
      shown += Escape("\\x", *p++, 2);  // not UTF-8: a terminal may take a lone byte as a control
      continue;
    }
    UInt32 character = length == 1 ? *p : *p & (0xFF >> (length + 1));
    for (std::size_t i = 1; i < length; ++i) character = (character << 6) | (p[i] & 0x3F);
    if (IsShownAsEscape(character))
      shown += CharacterEscape(character);
    else
      shown.append(reinterpret_cast<const char*>(p), length);
    p += length;
  }
  return shown;
}

std::string TerminalMessage(const std::string& text) {
  std::string plain = text;
  for (const char* mark : {"\u2068", "\u2069"}) {
    for (std::size_t at = plain.find(mark); at != std::string::npos; at = plain.find(mark, at))
      plain.erase(at, std::strlen(mark));
  }
  return TerminalText(plain);
}
