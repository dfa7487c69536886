// Nodes and the trees they make: the null objects, values, lookups, edits and copies, and trees
// parsed, made by hand and mixed.
#include <gtest/gtest.h>

#include <initializer_list>
#include <memory>

#include "tests/xmlparser/ParseTestSupport.h"

namespace {

using namespace Xml;
using namespace Xml::Testing;

TEST(NodeTest, NullObjects) {
  for (const Node* node : std::initializer_list<const Node*>{
           &Element::null, &Attribute::null, &Comment::null, &Pi::null, &CData::null}) {
    EXPECT_EQ(&node->GetParent(), &Element::null);
    EXPECT_TRUE(IsNullObject(*node));
  }
  Text parentless(L"x");
  EXPECT_EQ(&parentless.GetParent(), &Element::null);

  // Chained calls on a failed lookup must not change what every later lookup sees.
  Element::null.AddText(L"x");
  EXPECT_TRUE(Element::null.GetElement(L"a", 0).AddElementInto(L"b").IsEmpty());
  EXPECT_TRUE(IsNullObject(Element::null.CreateAttribute(L"a")));
  Value(Attribute::null).Set(L"v");
  EXPECT_TRUE(Element::null.IsEmpty());
  EXPECT_EQ(0u, Element::null.GetAttributeCount());
  EXPECT_TRUE(Attribute::null.IsEmpty());
}

TEST(NodeTest, EntityReferences) {
  Element parent(L"p");
  EXPECT_EQ(TString(1, L'\0'), EntityRef(parent, L"AMP").GetValue());  // unknown, no throw
  try {
    EntityRef unknown(L"nbsp");
    FAIL() << "an unknown parentless entity must throw";
  } catch (const InvalidRefException& e) {
    EXPECT_EQ(L"nbsp", e.GetReference());
  }
}

TEST(NodeTest, ValuesNormaliseAndTrimByContainer) {
  struct Case {
    const char* label;
    const wchar_t *content, *element, *preserved, *attribute;  // the attribute holds copies
  };
  const Case cases[] = {
      {"text and comment", L" a  b <!--c-->", L"a b c", L" a  b c", L"a  b c"},
      {"reference", L" x &amp;  y", L"x & y", L" x &  y", L"x &  y"},
      {"pi and cdata", L"<?t p?><![CDATA[\t d\r\n]]>", L"p d", L"p\t d\r\n", L"p\t d"},
      {"character reference", L"&#65;\n", L"A", L"A\n", L"A"},
      {"only white space", L" \t\r\n ", L"", L" \t\r\n ", L""},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.label);
    std::unique_ptr<Document> document = ParseText(L"<e>" + TString(c.content) + L"</e>");
    Element& element = document->GetRoot();
    EXPECT_EQ(c.element, element.GetValue());
    element.SetPreserveSpaces(true);
    EXPECT_EQ(c.preserved, element.GetValue());
    Attribute& attribute = element.CreateAttribute(L"a");
    element.CloneChildren(attribute);
    EXPECT_EQ(c.attribute, attribute.GetValue());
  }

  // Nested elements are finished by their own rule first, then by their parent's.
  Document document(L"root");
  Element& root = document.GetRoot();
  root.AddText(L" a ");
  Element& inner = root.AddElementInto(L"inner");
  inner.SetPreserveSpaces(true);
  inner.AddText(L"  b  ");
  EXPECT_EQ(L"a b", document.GetValue());
  root.SetPreserveSpaces(true);  // and each keeps its own spaces when both preserve them
  EXPECT_EQ(L" a   b  ", root.GetValue());
}

class ElementTest : public testing::Test {
 protected:
  // root holds: element a, text, element b, element a (the second), two CDATA sections.
  void SetUp() override {
    m_root.AddElementInto(L"a").AddText(L"first");
    m_root.AddText(L"t");
    m_root.AddElementInto(L"b");
    m_root.AddElementInto(L"a").AddText(L"second");
    m_root.Add(new CData(m_root, L"c0"));
    m_root.Add(new CData(m_root, L"c1"));
  }
  Element m_root{L"root"};
};

TEST_F(ElementTest, CountedLookups) {
  EXPECT_EQ(L"b", m_root.GetChild(1, NODE_ELEMENT).GetName());
  EXPECT_EQ(L"second", m_root.GetElement(L"a", 1).GetValue());
  EXPECT_EQ(L"c1", m_root.GetCData(1).GetData());
  EXPECT_EQ(L"c0", m_root.GetChild(L"#cdata-section", 0, NODE_CDATA).GetValue());

  struct Miss {
    const char* label;
    const Node& result;
    const Node& null;
  };
  const Miss misses[] = {
      {"index past the children, Node::null", m_root.GetChild(9), Element::null},
      {"third a", m_root.GetElement(L"a", 2), Element::null},
      {"name differs in case", m_root.GetElement(L"A", 0), Element::null},
      {"third cdata", m_root.GetCData(2), CData::null},
      {"no comment", m_root.GetComment(0), Comment::null},
      {"no pi", m_root.GetPi(0), Pi::null},
      {"no pi with target", m_root.GetPi(L"t", 0), Pi::null},
      {"no attribute", m_root.GetAttribute(L"x"), Attribute::null},
      {"no attribute at index", m_root.GetAttribute(0ul), Attribute::null},
  };
  for (const Miss& m : misses) {
    SCOPED_TRACE(m.label);
    EXPECT_EQ(&m.null, &m.result);
  }
}

TEST_F(ElementTest, FindChildStaysOnItsMatch) {
  NodeContainer::iterator pos = m_root.begin(), again;
  ASSERT_TRUE(m_root.FindChild(L"a", NODE_ELEMENT, pos));
  ASSERT_TRUE(m_root.FindChild(L"a", NODE_ELEMENT, again = pos));
  EXPECT_EQ(pos, again);
  ++pos;
  ASSERT_TRUE(m_root.FindChild(L"a", pos));
  EXPECT_EQ(L"second", (*pos)->GetValue());
}

TEST_F(ElementTest, DeletingAndInserting) {
  EXPECT_TRUE(m_root.DeleteChildElement(L"a", 1));
  EXPECT_FALSE(m_root.DeleteChildElement(L"c", 0));
  m_root.GetElement(L"b", 0).Delete();
  Text stranger(L"s");
  stranger.Delete();  // not a child of anything: nothing happens
  EXPECT_EQ(L"E<a> T\"t\" D\"c0\" D\"c1\"", Picture(m_root));

  Element& a = m_root.GetElement(L"a", 0);
  EXPECT_EQ(L"before", a.InsertElementBefore(L"before").GetName());
  EXPECT_EQ(L"after", a.InsertElementAfter(L"after").GetName());
  EXPECT_EQ(L"last", a.AppendElement(L"last").GetName());
  EXPECT_EQ(L"E<before> E<a> E<after> T\"t\" D\"c0\" D\"c1\" E<last>", Picture(m_root));
  Comment* orphan = new Comment(m_root, L"o");
  EXPECT_FALSE(m_root.InsertBefore(stranger, orphan));  // the caller keeps it
  EXPECT_TRUE(m_root.InsertAfter(a, orphan));
  EXPECT_EQ(&m_root.GetChild(2), orphan);

  // Siblings need a parent to own them.
  Element parentless(L"p"), detached(m_root, L"d");  // d names m_root but was never added
  EXPECT_EQ(&Element::null, &parentless.AppendElement(L"x"));
  EXPECT_EQ(&Element::null, &detached.InsertElementAfter(L"x"));
  EXPECT_EQ(8u, m_root.GetChildCount());

  m_root.CreateAttribute(L"x");
  m_root.DeleteChildren();
  EXPECT_TRUE(m_root.IsEmpty());
  EXPECT_EQ(1u, m_root.GetAttributeCount());
}

TEST_F(ElementTest, Creating) {
  Attribute& x = m_root.CreateAttribute(L"x");
  EXPECT_EQ(&x, &m_root.CreateAttribute(L"x"));
  EXPECT_EQ(1u, m_root.GetAttributeCount());
  EXPECT_EQ(&m_root.GetElement(L"a", 1), &m_root.CreateElement(L"a", 1));
  Element& e = m_root.CreateElement(L"e", 3);
  EXPECT_EQ(&e, &m_root.GetElement(L"e", 0));
  EXPECT_EQ(7u, m_root.GetChildCount());

  CData source(L"payload");
  EXPECT_EQ(&m_root, &m_root.AddInto(source).GetParent());
  EXPECT_EQ(L"payload", m_root.GetCData(2).GetData());
  EXPECT_EQ(&CData::null, &Element::null.AddInto(source));
}

TEST_F(ElementTest, CloneCopiesChildrenButNotAttributes) {
  m_root.CreateAttribute(L"x");
  m_root.SetPreserveSpaces(true);
  Element& a = m_root.GetElement(L"a", 0);
  a.Add(new EntityRef(a, L"nbsp"));  // unknown: the copy must not throw

  Document document;
  std::unique_ptr<Element> copy(&m_root.Clone(document));
  EXPECT_EQ(&document, &copy->GetParent());
  EXPECT_EQ(0u, copy->GetAttributeCount());
  EXPECT_FALSE(copy->PreservesSpaces());
  EXPECT_EQ(Picture(m_root), Picture(*copy));
  Element& copiedA = copy->GetElement(L"a", 0);
  EXPECT_EQ(copy.get(), &copiedA.GetParent());  // a copy, not a moved original
  EXPECT_EQ(&copiedA, &copiedA.GetChild(1).GetParent());

  // A document's copy records no root although the root's copy is among its children.
  std::unique_ptr<Document> documentCopy(&Document(L"root").Clone());
  EXPECT_TRUE(IsNullObject(documentCopy->GetRoot()));
  EXPECT_EQ(L"root", documentCopy->GetChild(0).GetName());
}

// Whole trees: a parsed document's nodes share one block of memory that goes with the document;
// nodes made by hand are each on their own. Trees that mix them must still free each node exactly
// once, which the sanitizer build checks. And no operation that walks a tree may reach the machine
// stack, however deep the tree.

TEST(ParsedTreeTest, HandMadeAndParsedNodesMix) {
  std::unique_ptr<Document> document = ParseText(L"<r a=' 1 '><s><t>x</t></s><u>z</u>y</r>");
  Element& root = document->GetRoot();
  Element& s = root.GetElement(L"s", 0);
  Element& u = root.GetElement(L"u", 0);

  // Nodes made by hand, deep inside the parsed tree, before and among its children, and as
  // attributes and attribute values of a parsed element.
  s.GetElement(L"t", 0).AddElementInto(L"h1").AddText(L"1");
  u.AddElementInto(L"h2").AddText(L"2");
  root.InsertBefore(s, new Comment(root, L"c"));
  Value(root.CreateAttribute(L"b")).Set(L"2");
  Value(root.GetAttribute(L"a")).Set(L"3");

  // A parsed subtree copied into a tree made by hand, which outlives the document.
  Element copies(L"copies");
  copies.Add(&s.Clone(copies));

  // A parsed subtree deleted from its document, with a node made by hand inside it.
  u.Delete();
  EXPECT_EQ(L"<r a=\"3\" b=\"2\"><!--c--><s><t>x<h1>1</h1></t></s>y</r>", Compact(root));

  // The document deleted with nodes made by hand inside it.
  document.reset();
  EXPECT_EQ(L"<copies><s><t>x<h1>1</h1></t></s></copies>", Compact(copies));
}

TEST(ParsedTreeTest, ParsedChildrenDeletedAtTheirPositions) {
  std::unique_ptr<Document> document = ParseText(L"<r>1<a/>2<b/>3</r>");
  Element& root = document->GetRoot();
  root.GetChild(4).Delete();  // the last, so that adding goes after "2"
  root.AddElementInto(L"e");
  NodeContainer::iterator pos = root.begin();
  ASSERT_TRUE(root.FindChild(L"a", pos));
  root.DeleteChild(pos);           // in the middle
  root.DeleteChild(root.begin());  // the first
  EXPECT_EQ(L"T\"2\" E<b> E<e>", Picture(root));
}

// A chain of a million nested elements: parsing, destroying, cloning, valuing and generating it.
TEST(DeepTreeTest, MillionLevels) {
  const int depth = 1000000;
  TString opening, closing;
  for (int i = 0; i < depth; ++i) opening += L"<e>";
  for (int i = 0; i < depth; ++i) closing += L"</e>";
  const TString text = opening + L" deepest " + closing;

  std::unique_ptr<Document> document = ParseText(text);
  EXPECT_EQ(L"deepest", document->GetValue());

  // The copy written compactly gives back the parsed text, so both trees are whole. (Compared as a
  // bool: a failure must not print megabytes.)
  std::unique_ptr<Document> copy(&document->Clone());
  EXPECT_TRUE(Compact(*copy) == L"<?xml version=\"1.0\" encoding=\"UTF-16\"?>" + text);
  copy.reset();

  // Deleting a deep subtree from the middle goes through the same work list.
  document->GetRoot().GetElement(L"e", 0).Delete();
  EXPECT_EQ(2u, document->GetRoot().GetChildCount());
  document.reset();

  EXPECT_EQ((Outcome{PARSE_UNEXPECTED_END, 1, static_cast<int>(opening.size()) + 1}),
            ParseOutcome(opening));
}

}  // namespace
