// A chain of a million nested elements must not reach the machine stack in any operation that
// walks the tree: parsing, destroying, cloning, valuing and generating it.
#include <gtest/gtest.h>

#include <memory>

#include "tests/xmlparser/ParseTestSupport.h"

namespace {

using namespace Xml;
using namespace Xml::Testing;

TEST(DeepTreeTest, MillionLevels) {
  const int depth = 1000000;
  TString text;
  text.reserve(depth * 7 + 9);
  for (int i = 0; i < depth; ++i) text += L"<e>";
  const size_t middle = text.size();
  text += L" deepest ";
  for (int i = 0; i < depth; ++i) text += L"</e>";

  std::unique_ptr<Document> document = ParseText(text);
  const Element* element = &document->GetRoot();
  int levels = 1;
  while (element->GetChildCount() == 3) {
    element = &static_cast<const Element&>(element->GetChild(1));
    ++levels;
  }
  EXPECT_EQ(depth, levels);
  EXPECT_EQ(L"deepest", document->GetValue());

  // The copy written compactly gives back the parsed text, so it is whole. (Compared as a bool: a
  // failure must not print megabytes.)
  std::unique_ptr<Document> copy(&document->Clone());
  TString generated;
  GenerateContext context(generated, nullptr, GenerateContext::COMPACT);
  copy->GenerateXML(context);
  EXPECT_TRUE(generated == L"<?xml version=\"1.0\" encoding=\"UTF-16\"?>" + text);
  copy.reset();

  // Deleting a deep subtree from the middle goes through the same work list.
  document->GetRoot().GetElement(L"e", 0).Delete();
  EXPECT_EQ(2u, document->GetRoot().GetChildCount());
  document.reset();

  EXPECT_EQ((Outcome{PARSE_UNEXPECTED_END, 1, static_cast<int>(middle) + 1}),
            ParseOutcome(text.substr(0, middle)));
}

}  // namespace
