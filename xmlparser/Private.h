// Private.h: helpers shared inside the XML library; nothing outside xmlparser/ includes this.
#pragma once

#include <cstddef>
#include <functional>
#include <map>
#include <string_view>
#include <typeinfo>

#include "xmlparser/Node.h"
#include "xmlparser/TString.h"

namespace Xml {

class GenerateContext;
class NodeContainer;
class Parser;

namespace Private {

// A static StoredText: the count, then the characters (and a terminating zero).
template <std::size_t N>
struct FixedText {
  StoredText text;
  wchar_t chars[N];
};

// The empty text, shared by every node without a name or text, and the fixed names.
extern const StoredText s_emptyText;
extern const FixedText<6> s_textName;
extern const FixedText<15> s_cdataName;
extern const FixedText<9> s_commentName;
extern const FixedText<10> s_documentName;

// Writes `text`, four bytes per character, into `memory`, which holds WideSize(text) bytes.
inline std::size_t WideSize(std::wstring_view text) {
  return sizeof(StoredText) + text.size() * sizeof(wchar_t);
}
const StoredText& StoreWide(void* memory, std::wstring_view text);

// A copy of `text` owned by a node off the arena (the empty text is shared), and its release.
const StoredText& OwnedCopy(std::wstring_view text);
void ReleaseOwnedCopy(const StoredText& text);

// The white space of XML values: space, tab, carriage return, line feed.
extern const wchar_t s_spaces[];
inline bool IsSpace(wchar_t c) { return c == L' ' || c == L'\t' || c == L'\r' || c == L'\n'; }

// The two characters that delimit attribute values and literals.
inline bool IsQuote(wchar_t c) { return c == L'"' || c == L'\''; }

// Characters that may stand in a document: tab, line feed, carriage return, or any value from
// 32 up read as a signed 32-bit number (so a value with the top bit set is illegal).
inline bool IsLegal(wchar_t c) {
  return static_cast<int>(c) >= 32 || c == L'\t' || c == L'\n' || c == L'\r';
}

// Reads a run whose first character passes `isFirst` and the rest `isRest`. Returns false, with
// nothing consumed, when the first character does not pass. ParseRun also cuts the run out into
// `out`; SkipName reads a name without cutting it.
bool SkipRun(Parser& parser, bool (*isFirst)(wchar_t), bool (*isRest)(wchar_t));
bool ParseRun(Parser& parser, bool (*isFirst)(wchar_t), bool (*isRest)(wchar_t), TString& out);
bool SkipName(Parser& parser);
// A name read in bulk, as a view into the parser's text; false, with nothing consumed, when no
// name starts here.
bool ScanName(Parser& parser, std::wstring_view& name);
// The quote that opens a literal, read; 0, with nothing read, when no quote is next.
wchar_t ParseOpeningQuote(Parser& parser);

// A comment or processing instruction for `parent` where the parser stands: markup that may
// stand at the document level and inside elements alike; null when neither starts here.
Node* ParseCommentOrPi(Parser& parser, NodeContainer& parent);

// Readers that build nothing, for what a parse drops: each reads its construct whole with the
// errors the building grammar raises, and returns false, with nothing read, when the construct
// does not start here.
//
// A comment or processing instruction.
bool ReadCommentOrPi(Parser& parser);
// A character or entity reference, and the character it stands for.
bool ReadReference(Parser& parser, wchar_t& character);
// A quoted value with its references, as of an attribute.
bool SkipAttValue(Parser& parser);
// A name token.
bool SkipNmtoken(Parser& parser);

// Replaces every maximal run of white space, a trailing one included, by one space.
void NormalizeWhiteSpaces(TString& text);
// Removes leading and trailing white space.
void TrimSpaces(TString& text);
// Normalising, then trimming.
void Normalize(TString& text);

// The five predefined entities, name to character and back; each map is empty at start-up and
// filled on first use.
// The first is looked up with views of the parser's text, hence its transparent order.
extern std::map<TString, wchar_t, std::less<>> s_mapReferences;
extern std::map<wchar_t, TString> s_mapEscapes;
void FillMap(std::map<TString, wchar_t, std::less<>>& references);
void FillMap(std::map<wchar_t, TString>& escapes);

// Writes `text` with < > & ' " replaced by their entity references.
void EscapeCharacters(GenerateContext& context, std::wstring_view text);

// What a container's value does with the white space of its children's values: an element's
// normalises it unless the element preserves spaces, an attribute's trims it, a document's
// normalises it.
enum class ValueSpaces { kNormalize, kTrim, kKeep };
inline ValueSpaces ElementValueSpaces(bool preservesSpaces) {
  return preservesSpaces ? ValueSpaces::kKeep : ValueSpaces::kNormalize;
}

// The value of an element, attribute or document: its children's values concatenated, then
// finished by the container's rule. Nested containers are walked from a work list, so the depth
// of the tree never reaches the machine stack.
TString ContainerValue(const NodeContainer& container, ValueSpaces spaces);

// True when `node` is a T itself, not of a class derived from T. The tree walks do the work of
// an element (attribute, document) themselves, in place of its virtual call, so that depth never
// reaches the machine stack; a derived class may have changed that work, so it is asked instead.
template <class T>
bool IsExactly(const Node& node) {
  return typeid(node) == typeid(T);
}

}  // namespace Private
}  // namespace Xml
