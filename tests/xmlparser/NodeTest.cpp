#include <gtest/gtest.h>

#include <memory>

#include "xmlparser/Xml.h"

namespace {

using namespace Xml;

TEST(NodeTest, EveryClassAnswersOnlyItsOwnKind) {
  Element element(L"e");
  Attribute attribute(element, L"a");
  Document document;
  Text text(L"t");
  CData cdata(L"c");
  Pi pi(L"p", L"");
  Comment comment(L"c");
  EntityRef entity(L"amp");
  CharRef character(65);
  struct Case {
    const char* label;
    const Node& node;
    int kind;
  };
  const Case cases[] = {
      {"element", element, NODE_ELEMENT},
      {"attribute", attribute, NODE_ATTRIBUTE},
      {"document", document, NODE_DOCUMENT},
      {"text", text, NODE_TEXT},
      {"cdata", cdata, NODE_CDATA},
      {"pi", pi, NODE_PI},
      {"comment", comment, NODE_COMMENT},
      {"entity", entity, NODE_REFERENCE},
      {"character", character, NODE_REFERENCE},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.label);
    for (int kind = 0; kind <= 10; ++kind) EXPECT_EQ(kind == c.kind, c.node.IsKindOf(kind)) << kind;
  }
}

TEST(NodeTest, NullObjects) {
  EXPECT_EQ(&Node::null, &Element::null);
  EXPECT_EQ(&Element::null.GetParent(), &Element::null);
  const Node* nulls[] = {&Attribute::null, &Comment::null, &Pi::null, &CData::null};
  for (const Node* node : nulls) {
    EXPECT_EQ(&node->GetParent(), &Element::null);
    EXPECT_TRUE(IsNullObject(*node));
    EXPECT_EQ(L"", node->GetValue());
  }
  EXPECT_EQ(L"#comment", Comment::null.GetName());
  EXPECT_EQ(L"#cdata-section", CData::null.GetName());

  Text parentless(L"x");
  EXPECT_EQ(&parentless.GetParent(), &Element::null);
  EXPECT_FALSE(IsNullObject(parentless));
}

TEST(NodeTest, NullObjectsNeverChange) {
  Element::null.AddText(L"x");
  Element::null.Add(new Comment(L"c"));
  EXPECT_TRUE(Element::null.GetElement(L"a", 0).AddElementInto(L"b").IsEmpty());
  EXPECT_TRUE(IsNullObject(Element::null.CreateAttribute(L"a")));
  Value(Attribute::null).Set(L"v");
  EXPECT_TRUE(Element::null.IsEmpty());
  EXPECT_EQ(0u, Element::null.GetAttributeCount());
  EXPECT_TRUE(Attribute::null.IsEmpty());
}

TEST(NodeTest, EntityReferences) {
  Element parent(L"p");
  EXPECT_EQ(L"&", EntityRef(parent, L"amp").GetValue());
  EXPECT_EQ(TString(1, L'\0'), EntityRef(parent, L"nbsp").GetValue());
  EXPECT_EQ(TString(1, L'\0'), EntityRef(parent, L"AMP").GetValue());
  EXPECT_EQ(L"\"", EntityRef(L"quot").GetValue());
  try {
    EntityRef unknown(L"nbsp");
    FAIL() << "an unknown parentless entity must throw";
  } catch (const InvalidRefException& e) {
    EXPECT_EQ(L"nbsp", e.GetReference());
  }
  EXPECT_EQ(L"A", CharRef(65).GetValue());
  EXPECT_EQ(L"", CharRef(65).GetName());
}

// Builds a container's children from a compact description: 'T' text, 'C' comment, 'E' entity,
// 'R' character reference, 'P' processing instruction, 'D' CDATA section.
void Fill(NodeContainer& container, std::initializer_list<std::pair<char, const wchar_t*>> items) {
  for (const auto& [kind, text] : items) {
    switch (kind) {
      case 'T':
        container.AddText(text);
        break;
      case 'C':
        container.Add(new Comment(container, text));
        break;
      case 'E':
        container.Add(new EntityRef(container, text));
        break;
      case 'R':
        container.Add(new CharRef(container, text[0]));
        break;
      case 'P':
        container.Add(new Pi(container, L"t", text));
        break;
      case 'D':
        container.Add(new CData(container, text));
        break;
    }
  }
}

TEST(NodeTest, ValuesNormaliseAndTrimByContainer) {
  struct Case {
    const char* label;
    std::initializer_list<std::pair<char, const wchar_t*>> children;
    const wchar_t* element;
    const wchar_t* preserved;
    const wchar_t* attribute;
  };
  const Case cases[] = {
      {"text and comment", {{'T', L" a  b "}, {'C', L"c"}}, L"a b c", L" a  b c", L"a  b c"},
      {"references",
       {{'T', L" x "}, {'E', L"amp"}, {'T', L"  y"}},
       L"x & y",
       L" x &  y",
       L"x &  y"},
      {"pi and cdata", {{'P', L"p"}, {'D', L"\t d\r\n"}}, L"p d", L"p\t d\r\n", L"p\t d"},
      {"character reference", {{'R', L"A"}, {'T', L"\n"}}, L"A", L"A\n", L"A"},
      {"only white space", {{'T', L" \t\r\n "}}, L"", L" \t\r\n ", L""},
      {"empty", {}, L"", L"", L""},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.label);
    Element element(L"e");
    Fill(element, c.children);
    EXPECT_EQ(c.element, element.GetValue());
    EXPECT_EQ(L"", element.GetData());
    element.SetPreserveSpaces(true);
    EXPECT_EQ(c.preserved, element.GetValue());

    Attribute& attribute = element.CreateAttribute(L"a");
    Fill(attribute, c.children);
    EXPECT_EQ(c.attribute, attribute.GetValue());
    EXPECT_EQ(c.attribute, attribute.GetData());
  }
}

TEST(NodeTest, NestedElementsAreNormalisedTwice) {
  Document document(L"root");
  Element& root = document.GetRoot();
  root.AddText(L" a ");
  Element& inner = root.AddElementInto(L"inner");
  inner.SetPreserveSpaces(true);
  inner.AddText(L"  b  ");
  root.AddText(L"c ");
  EXPECT_EQ(L"  b  ", inner.GetValue());
  EXPECT_EQ(L"a b c", root.GetValue());
  EXPECT_EQ(L"a b c", document.GetValue());
}

TEST(NodeTest, Documents) {
  Document empty;
  EXPECT_TRUE(empty.IsEmpty());
  EXPECT_TRUE(IsNullObject(empty.GetRoot()));
  EXPECT_EQ(L"#document", empty.GetName());
  EXPECT_EQ(L"1.0", empty.GetVersion());
  EXPECT_EQ(L"UTF-16", empty.GetEncoding());
  EXPECT_TRUE(empty.IsStandalone());

  Document rooted(L"root");
  ASSERT_EQ(1u, rooted.GetChildCount());
  EXPECT_EQ(&rooted.GetChild(0), &rooted.GetRoot());
  EXPECT_EQ(L"root", rooted.GetRoot().GetName());
  EXPECT_EQ(&rooted.GetRoot().GetParent(), &rooted);
}

TEST(NodeTest, ValueSetReplacesAllChildren) {
  Element element(L"e");
  Attribute& attribute = element.CreateAttribute(L"a");
  Fill(attribute, {{'T', L"old"}, {'E', L"amp"}});
  Value(attribute).Set(L" new ");
  ASSERT_EQ(1u, attribute.GetChildCount());
  EXPECT_TRUE(attribute.GetChild(0).IsKindOf(NODE_TEXT));
  EXPECT_EQ(L"new", attribute.GetValue());
}

}  // namespace
