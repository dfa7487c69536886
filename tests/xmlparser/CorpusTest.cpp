// Every XML file of the conformance corpus ends in a document or a ParsingException, and
// nothing else: no crash, no other exception, no sanitizer report. The parser deliberately
// differs from XML 1.0 in places, so the corpus's verdicts are not compared. What a document
// generates parses again into a document that generates the same text. ParseRoot ends each file
// as Parse does, and keeps of a document what Parse's holds.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iterator>

#include "tests/xmlparser/ParseTestSupport.h"

namespace {

using namespace Xml;
using namespace Xml::Testing;

// UTF-16 with a byte-order mark, else UTF-8; a byte that does not fit is taken as its value.
TString DecodeSimply(const std::string& bytes) {
  TString text;
  auto byte = [&](size_t i) { return static_cast<unsigned char>(bytes[i]); };
  if (bytes.size() >= 2 && (byte(0) == 0xFE || byte(0) == 0xFF) && byte(0) + byte(1) == 0x1FD) {
    const size_t high = byte(0) == 0xFE ? 0 : 1;
    for (size_t i = 2; i + 1 < bytes.size(); i += 2)
      text += static_cast<wchar_t>(byte(i + high) << 8 | byte(i + 1 - high));
    return text;
  }
  for (size_t i = 0; i < bytes.size(); ++i) {
    int extra = byte(i) >= 0xF0 ? 3 : byte(i) >= 0xE0 ? 2 : byte(i) >= 0xC0 ? 1 : 0;
    if (i + extra >= bytes.size()) extra = 0;
    unsigned int code = extra == 0 ? byte(i) : byte(i) & (0x3F >> extra);
    for (; extra > 0; --extra) code = code << 6 | (byte(++i) & 0x3F);
    text += static_cast<wchar_t>(code);
  }
  return text;
}

TEST(CorpusTest, EveryFileEndsInADocumentOrAParsingException) {
  const std::filesystem::path corpus = KESTRAIL_XMLCONF_DIR;
  if (!std::filesystem::is_directory(corpus))
    GTEST_SKIP() << "no conformance corpus at " << corpus.string();
  int documents = 0, rejected = 0;
  for (const auto& entry : std::filesystem::recursive_directory_iterator(corpus)) {
    if (!entry.is_regular_file() || entry.path().extension() != ".xml") continue;
    std::ifstream file(entry.path(), std::ios::binary);
    const std::string bytes((std::istreambuf_iterator<char>(file)),
                            std::istreambuf_iterator<char>());
    try {
      const TString text = DecodeSimply(bytes);
      const Outcome outcome = ParseOutcome(text);
      EXPECT_EQ(outcome, RootOutcome(text)) << entry.path();
      if (std::get<0>(outcome) != PARSE_NO_ERROR) {
        ++rejected;
        continue;
      }
      ++documents;
      const std::unique_ptr<Document> document = ParseText(text);
      const TString generated = Compact(*document);
      EXPECT_EQ(generated, Compact(*ParseText(generated))) << entry.path();
      // Everything of the root that ParseRoot can keep.
      const Element& root = document->GetRoot();
      RootSelection all{{root.GetName()}, {}, true};
      for (unsigned long i = 0; i < root.GetAttributeCount(); ++i)
        all.attributes.push_back(root.GetAttribute(i).GetName());
      EXPECT_EQ(SelectedPicture(*document, all), KeptPicture(*ParseRootText(text, all)))
          << entry.path();
    } catch (...) {
      ADD_FAILURE() << entry.path() << " threw something else";
    }
  }
  EXPECT_GT(documents + rejected, 3000);
  std::cout << documents << " documents, " << rejected << " rejected\n";
}

}  // namespace
