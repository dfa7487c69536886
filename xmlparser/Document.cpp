#include "xmlparser/Document.h"

#include <memory>

#include "xmlparser/Element.h"
#include "xmlparser/Private.h"

namespace Xml {

Document::Document()
    : NodeContainer(Node::null, Private::s_documentName.text, 0),
      m_strVersion(L"1.0"),
      m_strEncoding(L"UTF-16"),
      m_bStandalone(true),
      m_pRoot(nullptr),
      m_dtd(*this) {}

Document::Document(const wchar_t* rootName) : Document() {
  m_pRoot = new Element(*this, rootName);
  Add(m_pRoot);
}

// The children go before the arena that most of them live in.
Document::~Document() { DeleteChildren(); }

TString Document::GetData() const { return TString(); }

TString Document::GetValue() const {
  return Private::ContainerValue(*this, Private::ValueSpaces::kNormalize);
}

bool Document::IsKindOf(int kind) const { return kind == NODE_DOCUMENT; }

Node& Document::CloneNode(NodeContainer&) const { return Clone(); }

Document& Document::Clone() const {
  std::unique_ptr<Document> copy(new Document());
  CloneChildren(*copy);
  return *copy.release();
}

Element& Document::GetRoot() { return m_pRoot != nullptr ? *m_pRoot : Element::null; }

const Element& Document::GetRoot() const { return m_pRoot != nullptr ? *m_pRoot : Element::null; }

}  // namespace Xml
