// Document.h: a whole XML document: the values of its XML declaration and its children, the
// root element among them. Whoever creates or parses a document owns it. A parsed document
// also holds the memory of its parsed nodes, released with it.
#pragma once

#include "xmlparser/Arena.h"
#include "xmlparser/Dtd.h"
#include "xmlparser/Node.h"

namespace Xml {

class Element;
class Parser;

class Document : public NodeContainer {
 public:
  // Version "1.0", encoding "UTF-16", standalone, no root.
  Document();
  // The same, with a new element `rootName` as the root and first child.
  explicit Document(const wchar_t* rootName);
  ~Document() override;

  TString GetData() const override;  // always empty
  // The children's values concatenated, white space normalised and trimmed.
  TString GetValue() const override;
  bool IsKindOf(int kind) const override;
  // Documents have no parent: `parent` is ignored and the result is Clone().
  Node& CloneNode(NodeContainer& parent) const override;
  void GenerateXML(GenerateContext& context) const override;

  // A new document with default declaration values and copies of the children, which the
  // caller owns and deletes (`delete &copy`). Its root is not recorded (GetRoot() yields
  // Element::null) although the root's copy is among them.
  Document& Clone() const;

  // Appends the formatted text of the document, declaration first, to `out`.
  void GenerateXML(TString& out) const;
  TString GenerateXML() const;

  // The root element, or Element::null while there is none.
  Element& GetRoot();
  const Element& GetRoot() const;
  const TString& GetVersion() const { return m_strVersion; }
  const TString& GetEncoding() const { return m_strEncoding; }
  bool IsStandalone() const { return m_bStandalone; }

  // The grammar of the document level. Parse makes the document and runs the rest: prolog,
  // root element, then comments, processing instructions and white space up to the end.
  static Document* Parse(Parser& parser);
  bool ParseProlog(Parser& parser);
  // "<?xml" at the very start, with version, then optional encoding and standalone, in that
  // order; false when the text does not begin with "<?xml".
  bool ParseXMLDecl(Parser& parser);
  bool ParseVersionInfo(Parser& parser, TString& version);
  bool ParseVersionNum(Parser& parser, TString& version);
  bool ParseEncodingDecl(Parser& parser, TString& encoding);
  bool ParseEncName(Parser& parser, TString& encoding);
  bool ParseSDDecl(Parser& parser, bool& standalone);
  // A comment, processing instruction or white space: true when something was consumed.
  bool ParseMisc(Parser& parser);
  void ParseMiscs(Parser& parser);
  // The root element (PARSE_NO_ROOT when there is none), recorded and added.
  void ParseRootElement(Parser& parser);

 private:
  TString m_strVersion;
  TString m_strEncoding;
  bool m_bStandalone;
  Element* m_pRoot;  // one of the children, owned through them
  Dtd m_dtd;
  Arena m_arena;  // the parsed nodes; empty for a document built by hand
};

}  // namespace Xml
