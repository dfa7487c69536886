#include <gtest/gtest.h>

#include <utility>

#include "xmlparser/Xml.h"

namespace {

using namespace Xml;

const TString kDeclaration = L"<?xml version=\"1.0\" encoding=\"UTF-16\"?>\n";

TEST(GeneratorTest, WorkedExample) {
  Document document(L"settings");
  Element& root = document.GetRoot();
  Value(root.CreateAttribute(L"name")).Set(L"a<b");
  root.Add(new Comment(root, L" c "));
  Value(root.AddElementInto(L"item").CreateAttribute(L"id")).Set(L"1");
  Element& value = root.AddElementInto(L"value");
  value.AddText(L"x & y");
  value.Add(new CData(value, L"raw"));

  EXPECT_EQ(kDeclaration +
                L"<settings name=\"a&lt;b\">\n"
                L"  <!-- c -->\n"
                L"  <item id=\"1\"/>\n"
                L"  <value>x &amp; y\n"
                L"    <![CDATA[raw]]>\n"
                L"  </value>\n"
                L"</settings>",
            document.GenerateXML());
}

// The text of a document whose root is built by `build`, without the declaration's line.
template <class Build>
TString RootText(Build build, unsigned long flags = 0) {
  Document document(L"a");
  build(document.GetRoot());
  TString out;
  GenerateContext context(out, nullptr, flags);
  document.GenerateXML(context);
  return out.substr(out.find(L"?>") + (flags & GenerateContext::COMPACT ? 2 : 3));
}

TEST(GeneratorTest, Layout) {
  struct Case {
    const char* label;
    void (*build)(Element&);
    const wchar_t* formatted;
    const wchar_t* compact;
  };
  const Case cases[] = {
      {"text after markup keeps the end tag on its own line",
       [](Element& a) {
         a.AddElementInto(L"b");
         a.AddText(L"x");
       },
       L"<a>\n  <b/>x\n</a>", L"<a><b/>x</a>"},
      {"nested levels",
       [](Element& a) { a.AddElementInto(L"b").AddElementInto(L"c").AddText(L"t"); },
       L"<a>\n  <b>\n    <c>t</c>\n  </b>\n</a>", L"<a><b><c>t</c></b></a>"},
      {"text alone stays on one line, escaped but for its line feeds",
       [](Element& a) { a.AddText(L"a<b & \"c\">'\n"); },
       L"<a>a&lt;b &amp; &quot;c&quot;&gt;&apos;\n</a>",
       L"<a>a&lt;b &amp; &quot;c&quot;&gt;&apos;\n</a>"},
      {"references are written by name, not escaped again",
       [](Element& a) {
         Attribute& x = a.CreateAttribute(L"x");
         x.Add(new EntityRef(x, L"amp"));
         x.AddText(L"'\"");
         a.Add(new CharRef(a, 233));
         a.Add(new CharRef(a, 65));
       },
       L"<a x=\"&amp;&apos;&quot;\">&#xE9;&#x41;</a>",
       L"<a x=\"&amp;&apos;&quot;\">&#xE9;&#x41;</a>"},
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
    EXPECT_EQ(c.formatted, RootText(c.build));
    EXPECT_EQ(c.compact, RootText(c.build, GenerateContext::COMPACT));
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
