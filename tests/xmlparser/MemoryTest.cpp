// Where documents get their memory: a program's own routines, each block given back to the one
// that gave it.
#include <gtest/gtest.h>

#include <memory>
#include <new>
#include <string>

#include "xmlparser/Xml.h"

namespace {

int g_given = 0, g_takenBack = 0;
std::size_t g_prepared = 0;
bool g_refuse = false;

void* CountedAllocate(std::size_t bytes) {
  if (g_refuse) return nullptr;
  ++g_given;
  return ::operator new(bytes);
}
void CountedFree(void* block, std::size_t) {
  ++g_takenBack;
  ::operator delete(block);
}
void CountedPrepare(void*, std::size_t bytes) { g_prepared += bytes; }

TEST(MemoryTest, BlocksGoBackToTheRoutineThatGaveThem) {
  const auto document = [](int elements) {
    std::wstring text = L"<r>";
    for (int i = 0; i < elements; ++i) text += L"<e a='" + std::to_wstring(i) + L"'>text</e>";
    return text + L"</r>";
  };
  const std::wstring text = document(20000);
  Xml::Parser::ReleaseSpareMemory();
  Xml::SetMemoryFunctions({CountedAllocate, CountedFree, CountedPrepare});
  Xml::Parser parser;
  std::unique_ptr<Xml::Document>(parser.Parse(text.data(), static_cast<int>(text.size())));
  g_refuse = true;
  // A document far larger than the spares: the parse fails cleanly, and what it had is freed.
  const std::wstring larger = document(80000);
  EXPECT_THROW(parser.Parse(larger.data(), static_cast<int>(larger.size())), std::bad_alloc);
  g_refuse = false;
  // Spare blocks kept from the first document still go back to the counted routine.
  Xml::SetMemoryFunctions(Xml::DefaultMemoryFunctions());
  Xml::Parser::ReleaseSpareMemory();

  EXPECT_GT(g_given, 2);
  EXPECT_EQ(g_given, g_takenBack);
  EXPECT_GT(g_prepared, text.size());
}

}  // namespace
