// Dtd.h: the document type part of a document. The library does not validate: a declaration
// is checked for form and skipped, and nothing of it is kept.
#pragma once

namespace Xml {

class Document;

class Dtd {
 public:
  explicit Dtd(Document& document) : m_document(document) {}
  Dtd(const Dtd&) = delete;
  Dtd& operator=(const Dtd&) = delete;

 private:
  [[maybe_unused]] Document& m_document;
};

}  // namespace Xml
