// Whole documents: what each construct becomes, where each error is reported, which document
// type declarations are refused, and what a parse that keeps only the root keeps.
#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

#include "tests/xmlparser/ParseTestSupport.h"

namespace {

using namespace Xml;
using namespace Xml::Testing;

TEST(ContentParsingTest, WhatEachConstructBecomes) {
  const std::pair<const wchar_t*, const wchar_t*> cases[] = {
      {L"<a></a>", L"T\"\""},
      {L"<a><b/></a>", L"T\"\" E<b> T\"\""},
      {L"<a>x&amp;y</a>", L"T\"x\" &amp T\"y\""},
      {L"<a>&#9;&#10;&#13;&#x10FFFF;</a>", L"T\"\" #9 T\"\" #10 T\"\" #13 T\"\" #1114111 T\"\""},
      // Numbers wrap beyond 32 bits; hex digits in either case.
      {L"<a>&#4294967361;&#x1aF;&#x100000041;</a>", L"T\"\" #65 T\"\" #431 T\"\" #65 T\"\""},
      {L"<a>]]</a>", L"T\"]]\""},
      {L"<a>]x]></a>", L"T\"]x]>\""},
      {L"<a><?t?></a>", L"T\"\" P<t>\"\" T\"\""},
      {L"<a><?t  x y ?></a>", L"T\"\" P<t>\"x y \" T\"\""},
      {L"<a><!----></a>", L"T\"\" C\"\" T\"\""},
      {L"<a><![CDATA[<&]]]></a>", L"T\"\" D\"<&]\" T\"\""},
      {L"<a>l1\r\nl2\rl3</a>", L"T\"l1\r\nl2\rl3\""},
      {L"<a >\t<b\n/></a >", L"T\"\t\" E<b> T\"\""},
      // Document type declarations that are accepted, and leave no trace.
      {L"<!DOCTYPE a [ ]><a/>", L""},
      {L"<!DOCTYPE a [<!ELEMENT a (#PCDATA)><!ELEMENT b (c|d)*><!ELEMENT e (f,g?)+>"
       L"<!ELEMENT h EMPTY><!ELEMENT i ANY><!ELEMENT j (#PCDATA|k|l)*><!ELEMENT m (#PCDATA)*>"
       L"<!ELEMENT n ((o|p),(q,r)*,s)?><!ELEMENT t ( u , ( v | w )+ ) >]><a/>",
       L""},
      {L"<!DOCTYPE a [<!ATTLIST a x CDATA #IMPLIED y (p|q) \"p\" z NOTATION (n) #FIXED \"n\">"
       L"<!ATTLIST b i ID #REQUIRED r IDREFS #IMPLIED t NMTOKEN 'a&amp;&#65;'>]><a/>",
       L""},
      {L"<!DOCTYPE a [<!ENTITY e \"text\"><!ENTITY e \"a &amp; b %p;\"><!ENTITY % p 'x'>"
       L"<!ENTITY e SYSTEM \"f\" NDATA n><!ENTITY % q PUBLIC \"p\" \"s\">]><a/>",
       L""},
      {L"<!DOCTYPE a [<!NOTATION n SYSTEM \"x\"><!NOTATION n PUBLIC \"p\">"
       L"<!NOTATION n PUBLIC 'p' \"s\"> %pe; ]><a/>",
       L""},
      {L"<!DOCTYPE a SYSTEM \"tab\there\"><a/>", L""},
      {L"<!DOCTYPE a PUBLIC \"it's -//()+,./:=?;!*#@$_%\" 's'><a/>", L""},
  };
  for (const auto& [text, rootChildren] : cases) {
    SCOPED_TRACE(text);
    std::unique_ptr<Document> document = ParseText(text);
    EXPECT_EQ(L"E<a>", Picture(*document));
    EXPECT_EQ(rootChildren, Picture(document->GetRoot()));
  }
}

TEST(ContentParsingTest, Attributes) {
  std::unique_ptr<Document> document =
      ParseText(L"<a x=\"1\" x='2' y = \"a&lt;'&#x41;\r\nb\" z=''/>");
  const Element& a = document->GetRoot();
  ASSERT_EQ(4u, a.GetAttributeCount());
  EXPECT_EQ(L"1", a.GetAttribute(0ul).GetValue());  // duplicates stay, in order
  EXPECT_EQ(L"2", a.GetAttribute(1ul).GetValue());
  EXPECT_EQ(L"T\"a\" &lt T\"'\" #65 T\"\r\nb\"", Picture(a.GetAttribute(L"y")));
  EXPECT_EQ(L"T\"\"", Picture(a.GetAttribute(L"z")));
  EXPECT_EQ(&a, &a.GetAttribute(L"y").GetParent());
}

TEST(ContentParsingTest, PreserveSpaces) {
  // The value is trimmed before the comparison, the last xml:space decides, and children do not
  // inherit the flag.
  const wchar_t* const preserving[] = {L"<a xml:space=' preserve '/>",
                                       L"<a xml:space='default' xml:space='preserve'/>"};
  const wchar_t* const normalising[] = {L"<a xml:space='Preserve'/>",
                                        L"<a xml:space='preserve' xml:space='x'/>"};
  for (const wchar_t* text : preserving) EXPECT_TRUE(ParseText(text)->GetRoot().PreservesSpaces());
  for (const wchar_t* text : normalising)
    EXPECT_FALSE(ParseText(text)->GetRoot().PreservesSpaces());
  std::unique_ptr<Document> nested = ParseText(L"<a xml:space='preserve'><b> x  y </b></a>");
  EXPECT_EQ(L"x y", nested->GetRoot().GetElement(L"b", 0).GetValue());
}

TEST(ContentParsingTest, DocumentLevel) {
  // A target that only begins with "xml" is no second declaration.
  std::unique_ptr<Document> declared = ParseText(
      L"<?xml version='1.1' encoding=\"ISO-8859-1\" standalone='no' ?><?xml-stylesheet x?>\n"
      L"<!--before-->\n<!DOCTYPE a>\n<a/>\n<!--after--> <?end?>\n");
  EXPECT_EQ(L"1.1", declared->GetVersion());
  EXPECT_EQ(L"ISO-8859-1", declared->GetEncoding());
  EXPECT_FALSE(declared->IsStandalone());
  EXPECT_EQ(L"P<xml-stylesheet>\"x\" C\"before\" E<a> C\"after\" P<end>\"\"", Picture(*declared));

  EXPECT_EQ(L"E<a>", Picture(*ParseText(TString(L"<a/>\0<b/>", 9))));  // NUL ends the text
}

TEST(ContentParsingTest, ErrorsWithTheirPositions) {
  const std::pair<const wchar_t*, Outcome> cases[] = {
      {L"  \n ", {16, 2, 1}},
      {L"\uFEFF<a/>", {16, 1, 1}},
      {L"<a>", {1, 1, 4}},
      {L"<a x=\"abc", {1, 1, 10}},
      {L"<a>\x01</a>", {2, 1, 5}},
      {L"<a>&#0;</a>", {2, 1, 8}},
      {L"<a>&#xFFFFFFFF;</a>", {2, 1, 16}},
      {L"<!-- abc", {2, 1, 9}},
      {L"<a><![CDATA[x]></a>", {2, 1, 20}},
      {L"<a><?t x</a>", {2, 1, 13}},
      {L"<a x/>", {3, 1, 5}},
      {L"<?xml version x?><a/>", {3, 1, 14}},
      {L"<a x=1/>", {4, 1, 6}},
      {L"<a x=\"<\"/>", {5, 1, 8}},
      {L"<a>&#65</a>", {6, 1, 8}},
      {L"<a>&#x;</a>", {7, 1, 8}},
      {L"<a>&#X41;</a>", {8, 1, 7}},
      {L"<a>&nbsp;</a>", {9, 1, 10}},
      {L"<a></ a>", {10, 1, 6}},
      {L"< a/>", {10, 1, 2}},
      {L"<a><!DOCTYPE x></a>", {10, 1, 5}},
      {L"<a/ >", {11, 1, 5}},
      {L"<a x=\"1\"y=\"2\"/>", {12, 1, 10}},
      {L"<a></a x>", {12, 1, 8}},
      {L"<a>\r\n<b>\n</c>", {13, 3, 3}},
      {L"<a>\rx&;</a>", {6, 2, 2}},
      {L"<a>]]></a>", {15, 1, 7}},
      {L"<?xml version='1.0\"?><a/>", {17, 1, 20}},
      {L"<?xml?><a/>", {17, 1, 6}},
      {L"<?xml version='1.0' x?><a/>", {18, 1, 21}},
      {L"<?xml version='1.0' standalone='no' encoding='a'?><a/>", {18, 1, 37}},
      {L"<?xml version='1.0' encoding=x?><a/>", {19, 1, 31}},
      {L"<?xml version='1.0' encoding='8bit'?><a/>", {20, 1, 31}},
      {L"<?xml version='1.0' standalone=yes?><a/>", {21, 1, 33}},
      {L"<?xml version='1.0' standalone='maybe'?><a/>", {22, 1, 33}},
      {L"<!-- a -- b --><a/>", {23, 1, 10}},
      {L"<a><? x?></a>", {24, 1, 6}},
      {L" <?xml version='1.0'?><a/>", {25, 1, 7}},
      {L"<?XML version='1.0'?><a/>", {25, 1, 6}},
      {L"<a/>\n<!DOCTYPE a>", {43, 2, 1}},
  };
  for (const auto& [text, outcome] : cases) {
    EXPECT_EQ(outcome, ParseOutcome(text)) << text;
    EXPECT_EQ(outcome, RootOutcome(text)) << text;
  }
}

TEST(ContentParsingTest, EveryProperPrefixIsRejected) {
  const TString whole =
      L"<?xml version=\"1.0\"?><!--c--><setting set=\"Daubery\" a='&amp;&#65;'>"
      L"t<![CDATA[x]]><?p d?><e/></setting>";
  ASSERT_NO_THROW(ParseText(whole));
  for (size_t n = 0; n < whole.size(); ++n) {
    EXPECT_THROW(ParseText(whole.substr(0, n)), ParsingException) << n;
  }
}

TEST(ParseRootTest, KeepsOnlyWhatItSelects) {
  const std::pair<const wchar_t*, const wchar_t*> cases[] = {
      // The prolog, the root's content and what follows the root are read and dropped.
      {L"<?xml version='1.0'?><!--c--><!DOCTYPE a><?p?>"
       L"<a><b x='1'/>t<!--c--><?p?>&amp;</a><!--c-->",
       L"E<a>"},
      // The first attribute of each selected name, as the characters its value stands for.
      {L"<a z='0' y=' 1 ' x='&lt;&#x4E2D;&#65;' y='2'/>", L"E<a> y=T\" 1 \" x=T\"<\u4E2DA\""},
      // Only the first CDATA section among the root's own children.
      {L"<a><b><![CDATA[deep]]></b>t<![CDATA[first]]><![CDATA[second]]></a>", L"E<a> D\"first\""},
      // A root that is not selected is read, and left out with all it holds.
      {L"<b x='1'><![CDATA[c]]></b>", L""},
  };
  for (const auto& [text, kept] : cases) EXPECT_EQ(kept, KeptPicture(*ParseRootText(text))) << text;
  // Nor does the declaration stay, whatever its length.
  EXPECT_EQ(L"1.0", ParseRootText(L"<?xml version='1.1' encoding='x'?><a/>")->GetVersion());
}

// ParseRoot reads with Parse's grammar and keeps less: the same outcome on every text, at the
// same place, and what it keeps is what Parse's document holds.
TEST(ParseRootTest, AgreesWithParse) {
  const TString whole =
      L"<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
      L"<!DOCTYPE setting [<!ELEMENT setting (#PCDATA|group)*><!ATTLIST setting x CDATA \"&amp;\">"
      L"<!ENTITY e \"&lt;\">]>\r\n<!--c--><?p d?>\n"
      L"<setting set=\"Daubery\" x='&amp;&#65;&#x4E2D;' name=\" n \" y=\"1\" x=\"2\">\n"
      L"t&gt;<![CDATA[x]]><group y=\"&quot;\"><![CDATA[in]]>&#10;<c/></group><?q?><!--d-->]]\r"
      L"</setting>\n<!--e--> <?r?>";
  std::vector<TString> texts;
  for (size_t n = 0; n <= whole.size(); ++n) texts.push_back(whole.substr(0, n));
  // Deep nesting, whose end tags are checked against names found again in the text.
  const int depth = 100000;
  TString deep;
  for (int i = 0; i < depth; ++i) deep += L"<level" + std::to_wstring(i % 7) + L">";
  for (int i = depth - 1; i >= 0; --i) deep += L"</level" + std::to_wstring(i % 7) + L">";
  texts.push_back(L"<a>" + deep + L"</a>");
  texts.push_back(L"<a>" + deep.substr(0, deep.size() / 2 + 4) + L"x" +
                  deep.substr(deep.size() / 2 + 4));
  texts.push_back(L"<a>" + deep.substr(0, deep.size() / 2) + L"</a>");
  for (const TString& text : texts) {
    SCOPED_TRACE(text.size() < 400 ? std::string(text.begin(), text.end()) : "deep");
    const Outcome outcome = ParseOutcome(text);
    EXPECT_EQ(outcome, RootOutcome(text));
    if (std::get<0>(outcome) == PARSE_NO_ERROR) {
      EXPECT_EQ(SelectedPicture(*ParseText(text), kSelection), KeptPicture(*ParseRootText(text)));
    }
  }
}

TEST(DtdParsingTest, RefusedDeclarations) {
  const std::pair<const wchar_t*, int> cases[] = {
      {L"<!DOCTYPE>", PARSE_DOCTYPE_DECL},
      {L"<!DOCTYPE a><!DOCTYPE a>", PARSE_INVALID_TAG_NAME},  // only one before the root
      {L"<!DOCTYPE a [<!--c-->]>", PARSE_DOCTYPE_DECL},
      {L"<!DOCTYPE a [<?p?>]>", PARSE_DOCTYPE_DECL},
      {L"<!DOCTYPE a [%p]>", PARSE_PE_REFERENCE},
      {L"<!DOCTYPE a PUBLIC \"-//X//Y\">", PARSE_SYSTEM_LITERAL},
      {L"<!DOCTYPE a SYSTEM>", PARSE_SYSTEM_LITERAL},
      {L"<!DOCTYPE a PUBLIC \"{\" \"s\">", PARSE_PUBID_CHARACTER},
      {L"<!DOCTYPE a SYSTEM \"a\x01\">", PARSE_ILLEGAL_CHARACTER},
      {L"<!DOCTYPE a SYSTEM \"unterminated>", PARSE_UNEXPECTED_END},
      {L"<!DOCTYPE a [<!ELEMENT b (c|d,e)>]>", PARSE_BAR_EXPECTED},
      {L"<!DOCTYPE a [<!ELEMENT b (c,d|e)>]>", PARSE_COMMA_EXPECTED},
      {L"<!DOCTYPE a [<!ELEMENT b (c;d)>]>", PARSE_COMMA_EXPECTED},
      {L"<!DOCTYPE a [<!ELEMENT b ((c|d),e|f)>]>", PARSE_COMMA_EXPECTED},
      {L"<!DOCTYPE a [<!ELEMENT a (#PCDATA|b)>]>", PARSE_BAR_EXPECTED},
      {L"<!DOCTYPE a [<!ELEMENT a (#PCDATA|)*>]>", PARSE_CONTENT_PARTICLE},
      {L"<!DOCTYPE a [<!ELEMENT b (c,)>]>", PARSE_CONTENT_PARTICLE},
      {L"<!DOCTYPE a [<!ELEMENT b ()>]>", PARSE_CONTENT_PARTICLE},
      {L"<!DOCTYPE a [<!ELEMENT b>]>", PARSE_ELEMENT_DECL},
      {L"<!DOCTYPE a [<!ELEMENT b EMPTY x>]>", PARSE_ELEMENT_DECL},
      {L"<!DOCTYPE a [<!ATTLIST>]>", PARSE_ATTLIST_DECL},
      {L"<!DOCTYPE a [<!ATTLIST a x CDATA>]>", PARSE_ATTRIBUTE_DEF},
      {L"<!DOCTYPE a [<!ATTLIST a x CDATAX #IMPLIED>]>", PARSE_ATTRIBUTE_DEF},
      {L"<!DOCTYPE a [<!ATTLIST a x CDATA #FIXED\"v\">]>", PARSE_FIXED_DECL},
      {L"<!DOCTYPE a [<!ATTLIST a x CDATA '<'>]>", PARSE_UNEXPECTED_TAG},
      {L"<!DOCTYPE a [<!ATTLIST a x NOTATION (|)>]>", PARSE_NOTATION_TYPE},
      {L"<!DOCTYPE a [<!ATTLIST a x (p|) 'p'>]>", PARSE_ENUMERATION},
      {L"<!DOCTYPE a [<!ENTITY>]>", PARSE_ENTITY_DECL},
      {L"<!DOCTYPE a [<!ENTITY e>]>", PARSE_ENTITY_DECL},
      {L"<!DOCTYPE a [<!ENTITY e \"a &nbsp; b\">]>", PARSE_UNKNOWN_ENTITY},
      {L"<!DOCTYPE a [<!ENTITY e \"a &#1; b\">]>", PARSE_ILLEGAL_CHARACTER},
      {L"<!DOCTYPE a [<!ENTITY e \"% b\">]>", PARSE_PE_REFERENCE},
      {L"<!DOCTYPE a [<!ENTITY e \"runs to the end", PARSE_UNEXPECTED_END},
      {L"<!DOCTYPE a [<!ENTITY e SYSTEM \"f\" NDATA>]>", PARSE_NDATA_DECL},
      {L"<!DOCTYPE a [<!NOTATION n>]>", PARSE_NOTATION_DECL},
      {L"<!DOCTYPE a [<!NOTATION n PUBLIC>]>", PARSE_SYSTEM_LITERAL},
  };
  for (const auto& [declaration, error] : cases)
    EXPECT_EQ(error, std::get<0>(ParseOutcome(TString(declaration) + L"<a/>"))) << declaration;
}

TEST(DtdParsingTest, DeeplyNestedContentModels) {
  const int depth = 200000;
  const TString model = TString(depth, L'(') + L"x" + TString(depth, L')');
  EXPECT_EQ(PARSE_NO_ERROR,
            std::get<0>(ParseOutcome(L"<!DOCTYPE a [<!ELEMENT a " + model + L">]><a/>")));
  EXPECT_EQ(PARSE_UNEXPECTED_END,
            std::get<0>(ParseOutcome(L"<!DOCTYPE a [<!ELEMENT a " + model.substr(0, depth + 1))));
}

}  // namespace
