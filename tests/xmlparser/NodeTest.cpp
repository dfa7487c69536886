#include <gtest/gtest.h>

#include "xmlparser/Xml.h"

namespace {

using namespace Xml;

TEST(NodeTest, NullObjects) {
  EXPECT_EQ(&Node::null, &Element::null);
  EXPECT_EQ(&Element::null.GetParent(), &Element::null);
  for (const Node* node : std::initializer_list<const Node*>{&Attribute::null, &Comment::null,
                                                             &Pi::null, &CData::null}) {
    EXPECT_EQ(&node->GetParent(), &Element::null);
    EXPECT_TRUE(IsNullObject(*node));
  }
  Text parentless(L"x");
  EXPECT_EQ(&parentless.GetParent(), &Element::null);
  EXPECT_FALSE(IsNullObject(parentless));

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
  EXPECT_EQ(L"&", EntityRef(parent, L"amp").GetValue());
  EXPECT_EQ(TString(1, L'\0'), EntityRef(parent, L"AMP").GetValue());  // unknown, no throw
  try {
    EntityRef unknown(L"nbsp");
    FAIL() << "an unknown parentless entity must throw";
  } catch (const InvalidRefException& e) {
    EXPECT_EQ(L"nbsp", e.GetReference());
  }
}

// Adds children described as (kind, text): 'T' text, 'C' comment, 'E' entity reference,
// 'R' character reference of text[0], 'P' processing instruction, 'D' CDATA section.
void Fill(NodeContainer& c, std::initializer_list<std::pair<char, const wchar_t*>> children) {
  for (const auto& [kind, text] : children) {
    c.Add(kind == 'T'   ? static_cast<Node*>(new Text(c, text))
          : kind == 'C' ? static_cast<Node*>(new Comment(c, text))
          : kind == 'E' ? static_cast<Node*>(new EntityRef(c, text))
          : kind == 'R' ? static_cast<Node*>(new CharRef(c, text[0]))
          : kind == 'P' ? static_cast<Node*>(new Pi(c, L"t", text))
                        : static_cast<Node*>(new CData(c, text)));
  }
}

TEST(NodeTest, ValuesNormaliseAndTrimByContainer) {
  struct Case {
    const char* label;
    std::initializer_list<std::pair<char, const wchar_t*>> children;
    const wchar_t *element, *preserved, *attribute;
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
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.label);
    Element element(L"e");
    Fill(element, c.children);
    EXPECT_EQ(c.element, element.GetValue());
    element.SetPreserveSpaces(true);
    EXPECT_EQ(c.preserved, element.GetValue());
    Attribute& attribute = element.CreateAttribute(L"a");
    Fill(attribute, c.children);
    EXPECT_EQ(c.attribute, attribute.GetValue());
  }

  // Nested elements are normalised by themselves first, then again inside their parent.
  Document document(L"root");
  Element& root = document.GetRoot();
  root.AddText(L" a ");
  Element& inner = root.AddElementInto(L"inner");
  inner.SetPreserveSpaces(true);
  inner.AddText(L"  b  ");
  EXPECT_EQ(L"a b", document.GetValue());

  Value(inner).Set(L"c");  // replaces every child
  EXPECT_EQ(1u, inner.GetChildCount());
  EXPECT_EQ(L"a c", root.GetValue());
}

}  // namespace
