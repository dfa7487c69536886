// Unicode.h: conversions between UTF-16 units and the byte encodings the stand-in reads and
// writes: UTF-8 (file contents and names on disk), ASCII and Mac Roman. Only platform/ includes
// this header; above it, text goes through CoreFoundation.h.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "platform/MacTypes.h"

// Replaces `units` with the UTF-16 form of `count` bytes of well-formed UTF-8 and returns true.
// Ill-formed input anywhere (a stray continuation byte, an overlong form, an encoded surrogate,
// a value above U+10FFFF, a sequence cut short) returns false, leaving nothing useful in `units`.
bool DecodeUtf8(const UInt8* bytes, std::size_t count, std::vector<UniChar>& units);

// Appends the UTF-8 form of `count` units to `bytes`; false for an unpaired surrogate.
bool EncodeUtf8(const UniChar* units, std::size_t count, std::string& bytes);

// The same pair for the single-byte encodings: ASCII refuses bytes and units above 0x7F, Mac Roman
// refuses units that are not among its 256 characters.
bool DecodeSingleByte(const UInt8* bytes, std::size_t count, bool macRoman,
                      std::vector<UniChar>& units);
bool EncodeSingleByte(const UniChar* units, std::size_t count, bool macRoman, std::string& bytes);

// `bytes` with every byte but letters, digits and "-._~" (and "/" with `keepSlashes`) written as
// "%XX": a URL's path, and the Trash's records of where their objects came from.
std::string PercentEscaped(const std::string& bytes, bool keepSlashes);
