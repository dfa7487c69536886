// A chain of a million nested elements must not reach the machine stack in any operation that
// walks the tree: destroying, cloning, valuing and generating it.
#include <gtest/gtest.h>

#include <memory>

#include "xmlparser/Xml.h"

namespace {

using namespace Xml;

const int kDepth = 1000000;

std::unique_ptr<Document> Chain(int depth) {
  auto document = std::make_unique<Document>(L"e");
  Element* element = &document->GetRoot();
  for (int level = 1; level < depth; ++level) element = &element->AddElementInto(L"e");
  element->AddText(L" deepest ");
  return document;
}

TEST(DeepTreeTest, MillionLevels) {
  std::unique_ptr<Document> document = Chain(kDepth);
  EXPECT_EQ(L"deepest", document->GetValue());
  EXPECT_EQ(L"deepest", document->GetRoot().GetValue());

  std::unique_ptr<Document> copy(&document->Clone());
  TString original, copied;
  GenerateContext a(original, nullptr, GenerateContext::COMPACT);
  GenerateContext b(copied, nullptr, GenerateContext::COMPACT);
  document->GenerateXML(a);
  copy->GenerateXML(b);
  EXPECT_EQ(original, copied);

  const TString declaration = L"<?xml version=\"1.0\" encoding=\"UTF-16\"?>";
  const TString open = L"<e>", close = L"</e>", deepest = L" deepest ";
  EXPECT_EQ(declaration.size() + kDepth * (open.size() + close.size()) + deepest.size(),
            original.size());
  EXPECT_EQ(0, original.compare(0, declaration.size() + 6, declaration + L"<e><e>"));
  EXPECT_EQ(0, original.compare(original.size() - 8, 8, L"</e></e>"));

  // Deleting a deep subtree from the middle goes through the same work list.
  Element& middle = document->GetRoot().GetElement(L"e", 0);
  middle.Delete();
  EXPECT_TRUE(document->GetRoot().IsEmpty());
}

}  // namespace
