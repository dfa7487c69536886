#include <gtest/gtest.h>

#include <utility>

#include "tests/xmlparser/ParseTestSupport.h"

namespace {

using namespace Xml;
using namespace Xml::Testing;

const TString kDeclaration = L"<?xml version=\"1.0\" encoding=\"UTF-16\"?>";

TEST(GeneratorTest, Layout) {
  struct Case {
    const char* label;
    void (*build)(Element&);             // the root's attributes and children
    const wchar_t *formatted, *compact;  // compact: null where it is the formatted text
  };
  const Case cases[] = {
      {"attributes escaped, text then markup",
       [](Element& a) {
         Value(a.CreateAttribute(L"name")).Set(L"a<b");
         Value(a.AddElementInto(L"item").CreateAttribute(L"id")).Set(L"1");
         Element& value = a.AddElementInto(L"value");
         value.AddText(L"x & y");
         value.Add(new CData(value, L"raw"));
       },
       L"<a name=\"a&lt;b\">\n  <item id=\"1\"/>\n  <value>x &amp; y\n    <![CDATA[raw]]>\n"
       L"  </value>\n</a>",
       L"<a name=\"a&lt;b\"><item id=\"1\"/><value>x &amp; y<![CDATA[raw]]></value></a>"},
      {"text after markup keeps the end tag on its own line",
       [](Element& a) {
         a.AddElementInto(L"b");
         a.AddText(L"x");
       },
       L"<a>\n  <b/>x\n</a>", L"<a><b/>x</a>"},
      {"text alone stays on one line, escaped but for its line feeds",
       [](Element& a) { a.AddText(L"a<b & \"c\">'\n"); },
       L"<a>a&lt;b &amp; &quot;c&quot;&gt;&apos;\n</a>", nullptr},
      {"references are written by name, not escaped again",
       [](Element& a) {
         Attribute& x = a.CreateAttribute(L"x");
         x.Add(new EntityRef(x, L"amp"));
         x.AddText(L"'\"");
         a.Add(new CharRef(a, 233));
         a.Add(new CharRef(a, 65));
       },
       L"<a x=\"&amp;&apos;&quot;\">&#xE9;&#x41;</a>", nullptr},
      {"pi with and without data, cdata and comments, none escaped",
       [](Element& a) {
         a.Add(new Pi(a, L"t", L""));
         a.Add(new Pi(a, L"u", L"<&>"));
         a.Add(new CData(a, L"<&>"));
         a.Add(new Comment(a, L"<&>"));
       },
       L"<a>\n  <?t?>\n  <?u <&>?>\n  <![CDATA[<&>]]>\n  <!--<&>-->\n</a>",
       L"<a><?t?><?u <&>?><![CDATA[<&>]]><!--<&>--></a>"},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.label);
    Document document(L"a");
    c.build(document.GetRoot());
    EXPECT_EQ(kDeclaration + L"\n" + c.formatted, document.GenerateXML());
    EXPECT_EQ(kDeclaration + (c.compact != nullptr ? c.compact : c.formatted), Compact(document));
  }
}

TEST(GeneratorTest, ContextBasics) {
  // An element generated on its own with a fresh formatted context starts on a new line.
  Element a(L"a");
  TString out = L"prefix";
  GenerateContext context(out, L"\t", 0);
  a.AddElementInto(L"b");
  a.GenerateXML(context);
  EXPECT_EQ(L"prefix\n<a>\n\t<b/>\n</a>", out);

  // Assignment copies the other's text into this context's own string.
  TString first = L"1", second = L"2";
  GenerateContext one(first, nullptr, 0), two(second, nullptr, 0);
  one = two;
  one.Write(L"+");
  EXPECT_EQ(L"2+", first);
  EXPECT_EQ(L"2", second);
}

TEST(GeneratorTest, Int2Chars) {
  // Nothing for a number that is no character; the largest int must still fit the buffer.
  const std::pair<int, const wchar_t*> cases[] = {{0x7FFFFFFF, L"7FFFFFFF"}, {0, L""}, {-5, L""}};
  for (const auto& [value, text] : cases) {
    wchar_t buffer[10];
    EXPECT_EQ(TString(text), Int2Chars(value, buffer, sizeof(buffer))) << value;
  }
}

}  // namespace
