// Where documents get their memory: a program's own routines, each block given back to the one
// that gave it, and a refusal thrown as std::bad_alloc with nothing kept.
#include <gtest/gtest.h>

#include <memory>
#include <new>
#include <string>

#include "xmlparser/Xml.h"

namespace {

TEST(MemoryTest, BlocksGoBackToTheRoutineThatGaveThem) {
  static int given = 0, takenBack = 0;
  static std::size_t prepared = 0;
  static bool refuse = false;
  const auto document = [](int elements) {
    std::wstring text = L"<r>";
    for (int i = 0; i < elements; ++i) text += L"<e a='" + std::to_wstring(i) + L"'>text</e>";
    return text + L"</r>";
  };
  const std::wstring text = document(20000), larger = document(80000);
  Xml::Parser::ReleaseSpareMemory();
  Xml::SetMemoryFunctions(
      {[](std::size_t bytes) { return refuse ? nullptr : (++given, ::operator new(bytes)); },
       [](void* block, std::size_t) { ++takenBack, ::operator delete(block); },
       [](void*, std::size_t bytes) { prepared += bytes; }});
  Xml::Parser parser;
  std::unique_ptr<Xml::Document>(parser.Parse(text.data(), static_cast<int>(text.size())));
  refuse = true;  // beyond what the first document left spare
  EXPECT_THROW(parser.Parse(larger.data(), static_cast<int>(larger.size())), std::bad_alloc);
  // Spare blocks kept from the first document still go back to the counted routine.
  Xml::SetMemoryFunctions(Xml::DefaultMemoryFunctions());
  Xml::Parser::ReleaseSpareMemory();
  EXPECT_GT(given, 2);
  EXPECT_EQ(given, takenBack);
  EXPECT_GT(prepared, text.size());
}

}  // namespace
