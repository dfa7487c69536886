// Document type declarations: which are accepted (and leave no trace) and which are refused.
#include <gtest/gtest.h>

#include "tests/xmlparser/ParseTestSupport.h"

namespace {

using namespace Xml;
using namespace Xml::Testing;

TEST(DtdParsingTest, AcceptedDeclarationsLeaveNoTrace) {
  const wchar_t* const declarations[] = {
      L"<!DOCTYPE a>",
      L"<!DOCTYPE a [ ]>",
      L"<!DOCTYPE a [<!ELEMENT a (#PCDATA)><!ELEMENT b (c|d)*><!ELEMENT e (f,g?)+>"
      L"<!ELEMENT h EMPTY><!ELEMENT i ANY><!ELEMENT j (#PCDATA|k|l)*><!ELEMENT m (#PCDATA)*>"
      L"<!ELEMENT n ((o|p),(q,r)*,s)?><!ELEMENT t ( u , ( v | w )+ ) >]>",
      L"<!DOCTYPE a [<!ATTLIST a x CDATA #IMPLIED y (p|q) \"p\" z NOTATION (n) #FIXED \"n\">"
      L"<!ATTLIST b i ID #REQUIRED r IDREFS #IMPLIED t NMTOKEN 'a&amp;&#65;'>]>",
      L"<!DOCTYPE a [<!ENTITY e \"text\"><!ENTITY e \"a &amp; b %p;\"><!ENTITY % p 'x'>"
      L"<!ENTITY e SYSTEM \"f\" NDATA n><!ENTITY % q PUBLIC \"p\" \"s\">]>",
      L"<!DOCTYPE a [<!NOTATION n SYSTEM \"x\"><!NOTATION n PUBLIC \"p\">"
      L"<!NOTATION n PUBLIC 'p' \"s\"> %pe; ]>",
      L"<!DOCTYPE a SYSTEM \"tab\there\">",
      L"<!DOCTYPE a PUBLIC \"it's -//()+,./:=?;!*#@$_%\" 's'>",
  };
  for (const wchar_t* declaration : declarations) {
    SCOPED_TRACE(testing::Message() << "declaration #" << (&declaration - declarations));
    std::unique_ptr<Document> document = ParseText(TString(declaration) + L"<a/>");
    EXPECT_EQ(1u, document->GetChildCount());
    EXPECT_EQ(L"a", document->GetRoot().GetName());
  }
}

TEST(DtdParsingTest, RefusedDeclarations) {
  struct Case {
    const wchar_t* declaration;
    int error;
  };
  const Case cases[] = {
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
  for (const Case& c : cases) {
    SCOPED_TRACE(testing::Message() << "case #" << (&c - cases));
    EXPECT_EQ(c.error, std::get<0>(ParseOutcome(TString(c.declaration) + L"<a/>")));
  }
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
