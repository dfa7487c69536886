// Writing a tree back as XML text: the generation context, escaping, and each node class's
// GenerateXML.
#include "xmlparser/GenerateContext.h"

#include <algorithm>
#include <iterator>
#include <vector>

#include "xmlparser/Attribute.h"
#include "xmlparser/CharacterData.h"
#include "xmlparser/Document.h"
#include "xmlparser/Element.h"
#include "xmlparser/Private.h"
#include "xmlparser/Reference.h"

namespace Xml {
namespace {

const wchar_t s_szDefaultIndentation[] = L"  ";
const wchar_t s_szEscaped[] = L"<>&'\"";

// Writes a stored text, escaped or not; a narrow one is widened a piece at a time.
void WriteStored(GenerateContext& context, const StoredText& text, bool escape) {
  auto write = [&](std::wstring_view piece) {
    if (escape) {
      Private::EscapeCharacters(context, piece);
    } else {
      context.Write(piece);
    }
  };
  if (!text.narrow) return write(text.View());
  wchar_t wide[1024];
  for (std::size_t done = 0; done < text.length;) {
    const std::size_t count = std::min<std::size_t>(text.length - done, std::size(wide));
    std::copy(text.Bytes() + done, text.Bytes() + done + count, wide);
    write({wide, count});
    done += count;
  }
}

// A CDATA section, comment or processing instruction: markup that stands on a line of its own
// when formatting and closes itself. A processing instruction's target comes first, then its
// data after a space.
void GenerateClosedMarkup(GenerateContext& context, const wchar_t* open, std::wstring_view target,
                          const StoredText& text, const wchar_t* close) {
  context.GenerateStartTagIndentation();
  context.Write(open);
  context.Write(target);
  if (!target.empty() && text.length > 0) context.Write(L" ");
  WriteStored(context, text, false);
  context.Write(close);
  context.GenerateNewLine();
  context.EndTag();
}

}  // namespace

GenerateContext::GenerateContext(TString& out, const wchar_t* indentation, unsigned long flags)
    : m_nFlags(flags),
      m_szIndentation(indentation != nullptr ? indentation : s_szDefaultIndentation),
      m_strOut(out),
      m_nLevel(0),
      m_bEndTag(false),
      m_bNewLine(false) {}

GenerateContext& GenerateContext::operator=(const GenerateContext& other) {
  m_nFlags = other.m_nFlags;
  m_szIndentation = other.m_szIndentation;
  m_nLevel = other.m_nLevel;
  m_bEndTag = other.m_bEndTag;
  m_bNewLine = other.m_bNewLine;
  if (&m_strOut != &other.m_strOut) m_strOut = other.m_strOut;
  return *this;
}

void GenerateContext::Write(const TString& text) {
  m_bNewLine = false;
  m_strOut += text;
}

void GenerateContext::Write(std::wstring_view text) {
  m_bNewLine = false;
  m_strOut += text;
}

void GenerateContext::Write(const wchar_t* text) {
  m_bNewLine = false;
  m_strOut += text;
}

void GenerateContext::Write(const wchar_t* text, size_t length) {
  m_bNewLine = false;
  m_strOut.append(text, length);
}

void GenerateContext::GenerateNewLine() {
  if (IsCompact() || m_bNewLine) return;
  m_strOut += L'\n';
  m_bNewLine = true;
}

void GenerateContext::WriteIndentation() {
  m_bNewLine = false;
  for (int level = 1; level < m_nLevel; ++level) m_strOut += m_szIndentation;
}

void GenerateContext::GenerateIndentation() { WriteIndentation(); }

void GenerateContext::GenerateStartTagIndentation() {
  ++m_nLevel;
  if (IsCompact()) return;
  GenerateNewLine();
  WriteIndentation();
  m_bEndTag = false;
}

void GenerateContext::GenerateEndTagIndentation() {
  if (IsCompact()) return;
  // Markup inside the element puts the end tag on its own line; text alone keeps it on the
  // line of the text.
  if (m_bEndTag) {
    GenerateNewLine();
    WriteIndentation();
  }
  EndTag();
}

void GenerateContext::EndTag() {
  --m_nLevel;
  m_bEndTag = true;
}

wchar_t* Int2Chars(int value, wchar_t* buffer, int size) {
  static const wchar_t digits[] = L"0123456789ABCDEF";
  wchar_t* first = buffer + size / static_cast<int>(sizeof(wchar_t)) - 1;
  *first = 0;
  for (unsigned int rest = value > 0 ? value : 0; rest > 0; rest >>= 4)
    *--first = digits[rest & 15];
  return first;
}

namespace Private {

void EscapeCharacters(GenerateContext& context, std::wstring_view text) {
  if (s_mapEscapes.empty()) FillMap(s_mapEscapes);
  size_t from = 0;
  for (size_t i = text.find_first_of(s_szEscaped); i != std::wstring_view::npos;
       i = text.find_first_of(s_szEscaped, from)) {
    context.Write(text.data() + from, i - from);
    context.Write(L"&");
    context.Write(s_mapEscapes[text[i]]);
    context.Write(L";");
    from = i + 1;
  }
  if (from < text.size()) context.Write(text.data() + from, text.size() - from);
}

}  // namespace Private

void NodeContainer::GenerateXML(GenerateContext& context) const {
  for (const Node* child : *this) child->GenerateXML(context);
}

void Document::GenerateXML(GenerateContext& context) const {
  context.Write(L"<?xml version=\"");
  context.Write(m_strVersion);
  context.Write(L"\" encoding=\"");
  context.Write(m_strEncoding);
  context.Write(L"\"?>");
  context.GenerateNewLine();
  NodeContainer::GenerateXML(context);
}

void Document::GenerateXML(TString& out) const {
  GenerateContext context(out, nullptr, 0);
  GenerateXML(context);
}

TString Document::GenerateXML() const {
  TString out;
  GenerateXML(out);
  return out;
}

void Element::GenerateXML(GenerateContext& context) const {
  // Nested elements are opened and closed from a work list rather than by recursion, so the
  // depth of the tree never reaches the machine stack. Other nodes write themselves.
  struct Open {
    const Element* element;
    const_iterator next;
  };
  if (!GenerateStartTag(context)) return;
  std::vector<Open> open{{this, begin()}};
  while (!open.empty()) {
    Open& top = open.back();
    if (top.next == top.element->end()) {
      top.element->GenerateEndTag(context);
      open.pop_back();
      continue;
    }
    const Node* child = *top.next++;
    if (Private::IsExactly<Element>(*child)) {
      auto* element = static_cast<const Element*>(child);
      if (element->GenerateStartTag(context)) open.push_back({element, element->begin()});
    } else {
      child->GenerateXML(context);
    }
  }
}

bool Element::GenerateStartTag(GenerateContext& context) const {
  context.GenerateStartTagIndentation();
  context.Write(L"<");
  context.Write(GetName());
  for (const Node* attribute = m_pFirstAttribute; attribute != nullptr;
       attribute = attribute->m_pNext) {
    context.Write(L" ");
    attribute->GenerateXML(context);
  }
  if (IsEmpty()) {
    context.Write(L"/>");
    context.EndTag();
    return false;
  }
  context.Write(L">");
  return true;
}

void Element::GenerateEndTag(GenerateContext& context) const {
  context.GenerateEndTagIndentation();
  context.Write(L"</");
  context.Write(GetName());
  context.Write(L">");
}

void Attribute::GenerateXML(GenerateContext& context) const {
  context.Write(GetName());
  context.Write(L"=\"");
  NodeContainer::GenerateXML(context);
  context.Write(L"\"");
}

template <>
void Text::GenerateXML(GenerateContext& context) const {
  WriteStored(context, *m_pText, true);
}

template <>
void CData::GenerateXML(GenerateContext& context) const {
  GenerateClosedMarkup(context, L"<![CDATA[", {}, *m_pText, L"]]>");
}

template <>
void Comment::GenerateXML(GenerateContext& context) const {
  GenerateClosedMarkup(context, L"<!--", {}, *m_pText, L"-->");
}

void Pi::GenerateXML(GenerateContext& context) const {
  GenerateClosedMarkup(context, L"<?", GetName(), *m_pData, L"?>");
}

void EntityRef::GenerateXML(GenerateContext& context) const {
  context.Write(L"&");
  context.Write(GetName());
  context.Write(L";");
}

void CharRef::GenerateXML(GenerateContext& context) const {
  wchar_t buffer[10];
  context.Write(L"&#x");
  context.Write(Int2Chars(m_nCode, buffer, sizeof(buffer)));
  context.Write(L";");
}

}  // namespace Xml
