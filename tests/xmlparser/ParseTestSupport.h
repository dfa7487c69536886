// Helpers shared by the parser's tests.
#pragma once

#include <gtest/gtest.h>

#include <memory>

#include "xmlparser/Xml.h"

namespace Xml::Testing {

inline std::unique_ptr<Document> ParseText(const TString& text) {
  Parser parser;
  return std::unique_ptr<Document>(parser.Parse(text.data(), static_cast<int>(text.size())));
}

// The error of parsing `text`, or PARSE_NO_ERROR at 0:0 when it parses.
struct Outcome {
  int error, line, column;
  bool operator==(const Outcome&) const = default;
};

inline std::ostream& operator<<(std::ostream& out, const Outcome& outcome) {
  return out << "error " << outcome.error << " at " << outcome.line << ":" << outcome.column;
}

inline Outcome ParseOutcome(const TString& text) {
  try {
    ParseText(text);
    return {PARSE_NO_ERROR, 0, 0};
  } catch (const ParsingException& e) {
    return {e.GetError(), e.GetLine(), e.GetColumn()};
  }
}

}  // namespace Xml::Testing
