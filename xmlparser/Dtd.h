// Dtd.h: the document type part of a document. The library does not validate: a declaration
// is checked for form and skipped, and nothing of it is kept.
#pragma once

#include <deque>

namespace Xml {

class Document;
class Parser;

class Dtd {
 public:
  explicit Dtd(Document& document) : m_document(document) {}
  Dtd(const Dtd&) = delete;
  Dtd& operator=(const Dtd&) = delete;

  // Each routine reads its construct and returns true, or returns false when the construct
  // does not start here (nothing consumed unless noted). Malformed declarations raise errors
  // 26 to 42, and 1, 2 and the reference errors inside literals and values.
  bool ParseDoctypedecl(Parser& parser);
  bool ParseMarkupdecl(Parser& parser);
  bool ParseElementDecl(Parser& parser);
  bool ParseContentspec(Parser& parser);
  bool ParseMixed(Parser& parser);
  bool ParseChildren(Parser& parser);
  // A parenthesised choice or sequence. Nested lists are held in an explicit stack of their
  // separators, innermost last, rather than in recursion: one byte a list, however deep.
  bool ParseChoiceSeq(Parser& parser);
  // One content particle: a name with its suffix, or the "(" of a nested list, which is pushed
  // onto `openLists` for ParseChoiceSeq to read.
  bool ParseCp(Parser& parser, std::deque<char>& openLists);
  bool ParseAttlistDecl(Parser& parser);
  bool ParseAttDef(Parser& parser);
  bool ParseAttType(Parser& parser);
  bool ParseNotationType(Parser& parser);
  bool ParseEnumeration(Parser& parser);
  bool ParseDefaultDecl(Parser& parser);
  bool ParseEntityDecl(Parser& parser);
  bool ParseEntityDef(Parser& parser);
  bool ParsePEDef(Parser& parser);
  bool ParseNDataDecl(Parser& parser);
  bool ParseEntityValue(Parser& parser);
  bool ParseNotationDecl(Parser& parser);
  bool ParseExternalID(Parser& parser);
  bool ParsePublicID(Parser& parser);
  // The two literals leave a first character that is not a quote consumed.
  bool ParsePubidLiteral(Parser& parser);
  bool ParseSystemLiteral(Parser& parser);
  bool ParsePEReference(Parser& parser);

 private:
  [[maybe_unused]] Document& m_document;
};

}  // namespace Xml
