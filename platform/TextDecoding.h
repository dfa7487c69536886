// TextDecoding.h: how a file's bytes hold its text, and the one strict UTF-8 decoder, for the
// stand-in's strings and for whole files' text above it. Each caller gives the decoders the
// place their units go.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>

#include "platform/MacTypes.h"

// The length of the well-formed multi-byte sequence at `p`, or 0. These are the sequences of
// the Unicode standard: the second byte's range depends on the lead byte, which is how overlong
// forms, encoded surrogates and values above U+10FFFF are refused without decoding them first.
inline std::size_t Utf8SequenceLength(const UInt8* p, const UInt8* end) {
  const UInt8 lead = *p;
  std::size_t length;
  UInt8 secondLow = 0x80, secondHigh = 0xBF;
  if (lead >= 0xC2 && lead <= 0xDF) {
    length = 2;
  } else if (lead >= 0xE0 && lead <= 0xEF) {
    length = 3;
    if (lead == 0xE0) secondLow = 0xA0;
    if (lead == 0xED) secondHigh = 0x9F;
  } else if (lead >= 0xF0 && lead <= 0xF4) {
    length = 4;
    if (lead == 0xF0) secondLow = 0x90;
    if (lead == 0xF4) secondHigh = 0x8F;
  } else {
    return 0;
  }
  if (static_cast<std::size_t>(end - p) < length) return 0;
  if (p[1] < secondLow || p[1] > secondHigh) return 0;
  for (std::size_t i = 2; i < length; ++i) {
    if ((p[i] & 0xC0) != 0x80) return 0;
  }
  return length;
}

// Writes the UTF-16 units of the well-formed UTF-8 from `p` to `end` at `out` (characters beyond
// U+FFFF as surrogate pairs), moving `out` past them; false, at once, for ill-formed input
// anywhere. The room needed is at most one unit per byte, and exactly one per byte that is not a
// continuation byte plus one per four-byte sequence.
template <class Unit>
bool DecodeUtf8Units(const UInt8* p, const UInt8* end, Unit*& out) {
  while (p < end) {
    // Settings files are mostly ASCII: take eight such bytes at a time while they last.
    while (end - p >= 8) {
      std::uint64_t word;
      std::memcpy(&word, p, sizeof word);
      if ((word & 0x8080808080808080ULL) != 0) break;
      for (int i = 0; i < 8; ++i) out[i] = p[i];
      p += 8;
      out += 8;
    }
    if (p == end) break;
    const UInt8 lead = *p;
    if (lead < 0x80) {
      *out++ = lead;
      ++p;
      continue;
    }
    const std::size_t length = Utf8SequenceLength(p, end);
    if (length == 0) return false;
    UInt32 value = lead & (0xFF >> (length + 1));
    for (std::size_t i = 1; i < length; ++i) value = (value << 6) | (p[i] & 0x3F);
    p += length;
    if (value < 0x10000) {
      *out++ = static_cast<Unit>(value);
    } else {
      value -= 0x10000;
      *out++ = static_cast<Unit>(0xD800 + (value >> 10));
      *out++ = static_cast<Unit>(0xDC00 + (value & 0x3FF));
    }
  }
  return true;
}

// How a file's bytes hold its text: UTF-16 in the order its byte-order mark says, else UTF-8,
// after its own mark when it has one (the mark is not part of the text: a file saved with one
// means the same as one without).
enum class TextEncodingForm { kUtf8, kUtf16BigEndian, kUtf16LittleEndian };
struct TextForm {
  TextEncodingForm encoding;
  std::size_t start;  // the first byte of the text, past the mark
};

// The form of the text in the `count` bytes at `bytes`, judged by the first three at most.
inline TextForm DetectTextForm(const UInt8* bytes, std::size_t count) {
  if (count >= 2 && bytes[0] == 0xFE && bytes[1] == 0xFF) {
    return {TextEncodingForm::kUtf16BigEndian, 2};
  }
  if (count >= 2 && bytes[0] == 0xFF && bytes[1] == 0xFE) {
    return {TextEncodingForm::kUtf16LittleEndian, 2};
  }
  if (count >= 3 && bytes[0] == 0xEF && bytes[1] == 0xBB && bytes[2] == 0xBF) {
    return {TextEncodingForm::kUtf8, 3};
  }
  return {TextEncodingForm::kUtf8, 0};
}

// The UTF-16 unit of the two bytes at `p`, in the byte order of `encoding`.
inline UInt16 Utf16UnitAt(const UInt8* p, TextEncodingForm encoding) {
  return static_cast<UInt16>(encoding == TextEncodingForm::kUtf16BigEndian ? p[0] << 8 | p[1]
                                                                           : p[1] << 8 | p[0]);
}

// The units DecodeText writes for the `count` bytes at `bytes` of `form`, when they are well
// formed; never fewer, whatever they hold. A UTF-16 text's odd last byte is no unit.
inline std::size_t DecodedTextLength(const UInt8* bytes, std::size_t count, TextForm form) {
  if (form.encoding != TextEncodingForm::kUtf8) return (count - form.start) / 2;
  std::size_t length = 0;  // one per lead byte, and one more per surrogate pair
  for (const UInt8* p = bytes + form.start; p < bytes + count; ++p) {
    length += ((*p & 0xC0) != 0x80) + (*p >= 0xF0);
  }
  return length;
}

// Writes the UTF-16 units of the text in the `count` bytes at `bytes` of `form` at `out`, moving
// `out` past them: DecodedTextLength units at most. False for ill-formed UTF-8, as
// DecodeUtf8Units; UTF-16 units are taken as they are.
template <class Unit>
bool DecodeText(const UInt8* bytes, std::size_t count, TextForm form, Unit*& out) {
  if (form.encoding == TextEncodingForm::kUtf8) {
    return DecodeUtf8Units(bytes + form.start, bytes + count, out);
  }
  // Through a local pointer, one loop per byte order: a whole file's text decodes at the speed
  // of copying it.
  Unit* to = out;
  const UInt8* const end = bytes + count - (count - form.start) % 2;
  if (form.encoding == TextEncodingForm::kUtf16BigEndian) {
    for (const UInt8* p = bytes + form.start; p < end; p += 2)
      *to++ = static_cast<Unit>(p[0] << 8 | p[1]);
  } else {
    for (const UInt8* p = bytes + form.start; p < end; p += 2)
      *to++ = static_cast<Unit>(p[1] << 8 | p[0]);
  }
  out = to;
  return true;
}
