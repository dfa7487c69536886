// OVUtil.h: whole files to text and back, message templates (their numbered markers and the
// names filled into them), and conversions between the string flavours of the library. Platform
// string types stay in MacUtil.h.
#pragma once

#include <cstddef>
#include <cstdio>
#include <string>
#include <type_traits>
#include <vector>

#include "platform/MacTypes.h"
#include "xmlparser/TString.h"

// Decodes a whole file: UTF-16 after a byte-order mark (FE FF big-endian, FF FE little-endian,
// one character per unit, an odd last byte ignored), anything else as UTF-8. -1 for a buffer of
// fewer than 4 bytes; bytes that are not UTF-8 give 0 and an empty `text`.
int ConvertFileBufferToWString(const std::vector<unsigned char>& buffer, TString& text);

// Encodes `text` as UTF-16 in host byte order after a byte-order mark, one unit per character
// (its low 16 bits). Always 0; an empty `text` is reported through OV_AssertFailed.
int ConvertWStringToFileBuffer(const TString& text, std::vector<unsigned char>& buffer);

// Copies `templateText` and fills its markers "%0", "%1", ... in turn, each marker's first
// occurrence with the next of the `count` `texts`, stopping at the first marker missing, after
// "%9", or when the texts run out: a marker with no text left stays as it is, also one that came
// in with a text filled in before it.
TString TStringParamReplaceCounted(const TString* templateText, const wchar_t* const* texts,
                                   std::size_t count);

// The same for the texts given, however many: TStringParamReplace(&question, fileName.c_str()).
template <typename... Texts>
TString TStringParamReplace(const TString* templateText, Texts... texts) {
  static_assert((std::is_convertible_v<Texts, const wchar_t*> && ...), "texts are wide strings");
  const wchar_t* const all[] = {texts..., nullptr};
  return TStringParamReplaceCounted(templateText, all, sizeof...(texts));
}

// A name that comes from a file (a setting's name, a file's name or path) as a message shows it,
// so that it cannot pass for other text there: each control and format character
// (IsShownAsEscape of platform/Terminal.h) as its escape ("\x0a", "\u202e", "\U000e0001"), and
// the whole wrapped in U+2068 FIRST STRONG ISOLATE and U+2069 POP DIRECTIONAL ISOLATE, so that in
// a window a name of right-to-left letters cannot reorder the message around it. The terminal's
// dialogs leave the two marks out.
TString ShownName(const TString& name);

// Takes a temporary over rather than copying it: a setting's name may be large.
TString ConvertToTString(std::wstring text);
// Reads `text` as ASCII; text that is not ASCII gives an empty TString.
TString ConvertToTString(const std::string& text);
// In the application's text encoding; empty when `text` has no form there.
std::string ConvertToCharString(const TString& text);

// Routines that neither kestrail nor kestrail-pack calls. They belong to the library and stay, but
// nothing in the applications rests on them, and no test proves them: whoever first calls one
// gives it a test.

// The UTF-16 units of UTF-8 bytes, a leading byte-order mark dropped; empty when any part of the
// bytes is not well-formed UTF-8.
std::vector<UniChar> Utf8toUtf16(const std::vector<unsigned char>& buffer);

// Whether the text after the last full stop of `fileName` is `extension`, case-sensitively.
bool FilenameHasExtension(const TString& fileName, const TString& extension);

bool Little_Endian();
short ByteSwap(short value);

// 0 for a null stream, else what closing it returns.
int checked_fclose(FILE* stream);

std::wstring ConvertToWideCharString(const TString& text);
