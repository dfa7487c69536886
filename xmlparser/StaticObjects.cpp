// The library's static objects, defined in one place so that they are built in this order at
// start-up (and destroyed in the reverse order at exit): the null objects, then the maps.
#include "xmlparser/Attribute.h"
#include "xmlparser/CharacterData.h"
#include "xmlparser/Element.h"
#include "xmlparser/Private.h"

namespace Xml {

namespace Private {

// Constant-initialised, so that the null objects below can share them while being built.
constinit const StoredText s_emptyText{0, 0};
constinit const FixedText<6> s_textName{{5, 0}, L"#text"};
constinit const FixedText<15> s_cdataName{{14, 0}, L"#cdata-section"};
constinit const FixedText<9> s_commentName{{8, 0}, L"#comment"};
constinit const FixedText<10> s_documentName{{9, 0}, L"#document"};

}  // namespace Private

// A reference bound to a static object is constant-initialised, so Node::null is usable while
// the null objects themselves are being built.
NodeContainer& Node::null = Element::null;

Attribute Attribute::null(Element::null, L"");
Element Element::null(Element::null, L"");
template <>
Comment Comment::null(Element::null, L"");
Pi Pi::null(Element::null, L"", L"");
template <>
CData CData::null(Element::null, L"");

namespace Private {

const wchar_t s_spaces[] = L" \t\r\n";

std::map<TString, wchar_t, std::less<>> s_mapReferences;
std::map<wchar_t, TString> s_mapEscapes;

namespace {

const struct {
  const wchar_t* name;
  wchar_t character;
} kPredefinedEntities[] = {
    {L"lt", L'<'}, {L"gt", L'>'}, {L"amp", L'&'}, {L"apos", L'\''}, {L"quot", L'"'},
};

}  // namespace

void FillMap(std::map<TString, wchar_t, std::less<>>& references) {
  for (const auto& entity : kPredefinedEntities) references[entity.name] = entity.character;
}

void FillMap(std::map<wchar_t, TString>& escapes) {
  for (const auto& entity : kPredefinedEntities) escapes[entity.character] = entity.name;
}

}  // namespace Private
}  // namespace Xml
