// Terminal.h: text from outside shown so that it cannot pass for something else. Whatever a
// settings file or a file name brings, what the programs write to a terminal cannot move its
// cursor, clear its screen or retitle its window, and no text, in a window or on a terminal,
// can hide or reorder the characters around it. The escaping of one character serves the
// windows' texts above platform/.
#pragma once

#include <string>

#include "platform/MacTypes.h"

// Whether `character` (a code point) is shown as an escape: the control and format characters
// (Unicode 15.0's general categories Cc and Cf: C0 and C1 controls, DEL, bidirectional marks,
// embeddings, overrides and isolates, zero-width marks, the soft hyphen, the byte-order mark,
// tags, ...) and the line and paragraph separators U+2028 and U+2029, which break a line in a
// window as a line feed does.
bool IsShownAsEscape(UInt32 character);

// The escape that shows `character`, in ASCII: "\x1b" below U+0080, "\u202e" up to U+FFFF,
// "\U000e0001" beyond, lower-case hexadecimal digits.
std::string CharacterEscape(UInt32 character);

// `text` (UTF-8) with every character of IsShownAsEscape shown as its CharacterEscape, and "\xff"
// for a byte that is not part of well-formed UTF-8. Everything else, other languages' letters,
// combining marks and emoji included, stays as it is.
std::string TerminalText(const std::string& text);

// A message of the application's for a terminal: the TerminalText of `text` without the marks that
// isolate a name in a window (U+2068, U+2069). A terminal does not reorder text and would show
// them as escapes; a name never carries one of its own, as ShownName shows those as escapes.
std::string TerminalMessage(const std::string& text);
