// Whole trees: a parsed document's nodes share one block of memory that goes with the document;
// nodes made by hand are each on their own. Trees that mix them must still free each node exactly
// once, which the sanitizer build checks. And no operation that walks a tree may reach the machine
// stack, however deep the tree.
#include <gtest/gtest.h>

#include <memory>

#include "tests/xmlparser/ParseTestSupport.h"

namespace {

using namespace Xml;
using namespace Xml::Testing;

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
