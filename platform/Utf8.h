// Utf8.h: the one strict UTF-8 decoder, for the stand-in's strings and for whole files' text
// above it. Each caller gives it the place its units go.
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
