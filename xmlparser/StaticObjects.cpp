// The library's static objects, defined in one place so that they are built in this order at
// start-up (and destroyed in the reverse order at exit): the null objects, then the maps.
#include "xmlparser/Attribute.h"
#include "xmlparser/CharacterData.h"
#include "xmlparser/Element.h"
#include "xmlparser/Private.h"

namespace Xml {

// A reference bound to a static object is constant-initialised, so Node::null is usable while
// the null objects themselves are being built.
NodeContainer& Node::null = Element::null;

Attribute Attribute::null(Element::null, L"");
Element Element::null(Element::null, L"");
Comment Comment::null(Element::null, L"");
Pi Pi::null(Element::null, L"", L"");
CData CData::null(Element::null, L"");

namespace Private {

const wchar_t s_spaces[] = L" \t\r\n";

std::map<TString, wchar_t> s_mapReferences;
std::map<wchar_t, TString> s_mapEscapes;

namespace {

const struct {
  const wchar_t* name;
  wchar_t character;
} kPredefinedEntities[] = {
    {L"lt", L'<'}, {L"gt", L'>'}, {L"amp", L'&'}, {L"apos", L'\''}, {L"quot", L'"'},
};

}  // namespace

void FillMap(std::map<TString, wchar_t>& references) {
  for (const auto& entity : kPredefinedEntities) references[entity.name] = entity.character;
}

void FillMap(std::map<wchar_t, TString>& escapes) {
  for (const auto& entity : kPredefinedEntities) escapes[entity.character] = entity.name;
}

}  // namespace Private
}  // namespace Xml
