// Inputs.h: the generated documents the benchmarks parse, as the bytes of a file. Each generator
// is deterministic, so every run and every parser sees the same input.
#pragma once

#include <cstddef>
#include <string>

namespace Bench {

// A settings file: many short elements with attributes, some references and comments, in UTF-8.
std::string SettingsDocument(std::size_t bytes);

// An old-style package as the packager writes it: UTF-16 little-endian after a byte-order mark,
// one CDATA section carrying a legacy file whose lines end in carriage returns.
std::string PackageDocument(std::size_t bytes);

// Character data broken into short runs by references, in UTF-8.
std::string ReferencesDocument(std::size_t bytes);

// A document shaped like a MIME-type database: many elements with attributes and short texts in
// several languages, in UTF-8.
std::string MimeDatabaseDocument(std::size_t bytes);

// `depth` elements, each inside the one before.
std::string NestedDocument(std::size_t depth);

}  // namespace Bench
