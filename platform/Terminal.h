// Terminal.h: text for a terminal. Whatever a settings file or a file name brings, what the
// programs write to a terminal cannot move its cursor, clear its screen or retitle its window.
#pragma once

#include <string>

// `text` (UTF-8) with every control character shown as an escape: "\x1b" for ESC and the other
// C0 controls and DEL, "\u009b" for the C1 controls, and "\xff" for a byte that is not part of
// well-formed UTF-8. Everything else, other languages' letters included, stays as it is.
std::string TerminalText(const std::string& text);
