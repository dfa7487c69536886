// Element.h: an element of the tree, with its attributes, its typed child lookups and the
// operations that create elements and attributes. A null object refuses every creation.
#pragma once

#include <string_view>
#include <vector>

#include "xmlparser/CharacterData.h"
#include "xmlparser/Node.h"

namespace Xml {

class Attribute;
class Parser;
class Pi;
struct RootSelection;

class Element : public NodeContainer {
 public:
  // The failed element lookup, the parent of every parentless node, and its own parent.
  static Element null;

  Element(NodeContainer& parent, std::wstring_view name);
  explicit Element(std::wstring_view name);
  // An element of a parsed document, in its arena.
  Element(NodeContainer& parent, const StoredText& name, ArenaKey);
  // Destroys the attributes, in order, then the children.
  ~Element() override;

  TString GetData() const override;  // always empty
  // The children's values concatenated, then white space normalised and trimmed unless the
  // element preserves spaces (xml:space="preserve").
  TString GetValue() const override;
  bool IsKindOf(int kind) const override;
  Node& CloneNode(NodeContainer& parent) const override;
  void GenerateXML(GenerateContext& context) const override;

  // A deep copy of the children without the attributes; the copy does not preserve spaces.
  Element& Clone(NodeContainer& parent) const;

  bool PreservesSpaces() const { return (m_nFlags & kPreservesSpaces) != 0; }
  void SetPreserveSpaces(bool preserve) {
    m_nFlags = preserve ? m_nFlags | kPreservesSpaces : m_nFlags & ~kPreservesSpaces;
  }

  // Typed lookups: the child numbered `index` (from 0) among the matching ones, or the null
  // object of the type.
  Element& GetElement(const wchar_t* name, unsigned long index);
  CData& GetCData(unsigned long index);
  const CData& GetCData(unsigned long index) const;
  Pi& GetPi(unsigned long index);
  const Pi& GetPi(unsigned long index) const;
  Pi& GetPi(const wchar_t* target, unsigned long index);
  const Pi& GetPi(const wchar_t* target, unsigned long index) const;
  Comment& GetComment(unsigned long index);
  const Comment& GetComment(unsigned long index) const;

  // The attribute at `index`, or the first one named `name`; Attribute::null when absent.
  unsigned long GetAttributeCount() const;
  Attribute& GetAttribute(unsigned long index);
  const Attribute& GetAttribute(unsigned long index) const;
  Attribute& GetAttribute(const wchar_t* name);
  const Attribute& GetAttribute(const wchar_t* name) const;

  // Deletes the child element numbered `index` among those named `name`: true, or false when
  // there are not that many.
  bool DeleteChildElement(const wchar_t* name, unsigned long index);

  // The creating operations. Each returns the node it creates or finds; called on a null
  // object they create nothing and return the null object of their result type.
  //
  // The attribute `name`, created (without a value) and appended when there is none.
  Attribute& CreateAttribute(const wchar_t* name);
  // A new last child element.
  Element& AddElementInto(const wchar_t* name);
  // GetElement(name, index) when it finds one; otherwise one new last child element, however
  // large `index` is.
  Element& CreateElement(const wchar_t* name, unsigned long index);
  // A new sibling after all of the parent's children.
  //
  // Siblings need a parent to own them: on an element whose parent is a null object (a
  // parentless element) these three create nothing and return Element::null, as they do on a
  // null object. InsertElementBefore and InsertElementAfter do the same when this element is
  // not (yet) among its parent's children, rather than hand back an element that nobody owns.
  Element& AppendElement(const wchar_t* name);
  // A new sibling just before (after) this element.
  Element& InsertElementBefore(const wchar_t* name);
  Element& InsertElementAfter(const wchar_t* name);
  // A copy of `node`, made with this element as parent and appended as the last child.
  template <class T>
  T& AddInto(const T& node);

  // The grammar of elements. Elements nested in the one being read are held in an explicit
  // stack of open elements, innermost last, rather than in recursion, so that the depth of a
  // document never reaches the machine stack; each is linked into its parent when its end tag
  // has been read. They live in the document's arena until then.
  typedef std::vector<Element*> OpenElements;

  // A whole element, content and end tag included; null when no "<" stands here.
  static Element* Parse(Parser& parser, NodeContainer& parent);
  // "<", the name and the attributes, up to ">" (`isEmpty` false) or "/>" (true); null when no
  // "<" stands here.
  static Element* ParseTagBegining(Parser& parser, bool& isEmpty, NodeContainer& parent);
  // The content up to and including the end tag; true when the end tag was read.
  bool ParseContentETag(Parser& parser);
  // The markup at a "<" inside this element: true when it was this element's end tag. A child
  // element with content is pushed onto `open` for the content loop to read.
  bool ParseMarkup(Parser& parser, OpenElements& open);
  bool ParseETag(Parser& parser);
  void ParseReference(Parser& parser);
  // xml:space="preserve" switches normalisation of this element's value off.
  void HandleSpecialAttributes(const Attribute* attribute);

  // The grammar of Parser::ParseRoot. The root element as `selection` keeps it, read whole as
  // Parse reads it: `root` receives the element, or null when its name is not selected. False
  // when no "<" stands here.
  static bool ParseSelected(Parser& parser, NodeContainer& parent, const RootSelection& selection,
                            Element*& root);
  // The content of the element `name` up to and including its end tag, checked and dropped, but
  // for the first CDATA section among its children, which goes to `cdataHolder` when that is not
  // null.
  static void CheckContentETag(Parser& parser, std::wstring_view name, Element* cdataHolder);

 private:
  friend class NodeContainer;  // destroys attributes from its work list

  Element& InsertSibling(const wchar_t* name, bool before);
  // The start tag; true when the element has children that must follow (the start tag is
  // then open), false when it was written as an empty-element tag.
  bool GenerateStartTag(GenerateContext& context) const;
  void GenerateEndTag(GenerateContext& context) const;

  void AppendAttribute(Attribute* attribute);

  // The attributes, linked through their next pointers as children are; whether spaces are
  // preserved is a flag of the node.
  Node* m_pFirstAttribute = nullptr;
  Node* m_pLastAttribute = nullptr;
};

template <class T>
T& Element::AddInto(const T& node) {
  if (IsNullObject(*this)) return T::null;
  T& copy = node.Clone(*this);
  Add(&copy);
  return copy;
}

}  // namespace Xml
