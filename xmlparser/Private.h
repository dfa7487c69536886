// Private.h: helpers shared inside the XML library; nothing outside xmlparser/ includes this.
#pragma once

#include <map>

#include "xmlparser/TString.h"

namespace Xml {

class GenerateContext;
class NodeContainer;

namespace Private {

// The white space of XML values: space, tab, carriage return, line feed.
extern const wchar_t s_spaces[];
inline bool IsSpace(wchar_t c) { return c == L' ' || c == L'\t' || c == L'\r' || c == L'\n'; }

// Replaces every maximal run of white space, a trailing one included, by one space.
void NormalizeWhiteSpaces(TString& text);
// Removes leading and trailing white space.
void TrimSpaces(TString& text);
// Normalising, then trimming.
void Normalize(TString& text);

// The five predefined entities, name to character and back; each map is empty at start-up and
// filled on first use.
extern std::map<TString, wchar_t> s_mapReferences;
extern std::map<wchar_t, TString> s_mapEscapes;
void FillMap(std::map<TString, wchar_t>& references);
void FillMap(std::map<wchar_t, TString>& escapes);

// Writes `text` with < > & ' " replaced by their entity references.
void EscapeCharacters(GenerateContext& context, const TString& text);

// The value of an element, attribute or document: its children's values concatenated, then
// finished by the container's own rule. Nested containers are walked from a work list, so the
// depth of the tree never reaches the machine stack.
TString ContainerValue(const NodeContainer& container);

}  // namespace Private
}  // namespace Xml
