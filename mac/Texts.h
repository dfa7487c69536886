// Texts.h: the applications' texts in the user's language: looked up by key in the main bundle
// (the key is the text where there is no translation), with fillers put in their markers %0, %1,
// ... by TStringParamReplace. The one way mac/ says things, in alerts and on the terminal alike.
#pragma once

#include <algorithm>
#include <string>

#include "ovlib/base_ui_framework/mac/MacUtil.h"
#include "ovlib/general_framework/OVUtil.h"
#include "platform/CFHolder.h"
#include "platform/CoreFoundation.h"
#include "xmlparser/TString.h"

// The text for `key` in the user's language; the key itself is the text when there is no
// translation. The caller releases it; null when there is none at all.
inline CFStringRef CopyLocalizedString(CFStringRef key) {
  return CFBundleCopyLocalizedString(CFBundleGetMainBundle(), key, key, nullptr);
}

// A string's text, or an empty one for a string that could not be had (which has been reported).
inline TString TextOf(CFStringRef string) {
  return string != nullptr ? CreateTStringFromCFStringRef(string) : TString();
}

// Markers are filled in turn, each one searched for in all that was filled before it. So that a
// name holding "%1" is never taken for the next marker, a filler's own "%" is held as U+0001
// meanwhile: no filler carries that control of its own, as names show theirs as escapes.
inline TString WithPercentAs(TString text, wchar_t from, wchar_t to) {
  std::replace(text.begin(), text.end(), from, to);
  return text;
}

// `textTemplate` with `fillers` in its markers %0, %1, ...
template <typename... Fillers>
TString FilledText(const TString& textTemplate, const Fillers&... fillers) {
  const wchar_t held = L'\x01';
  return WithPercentAs(
      TStringParamReplace(&textTemplate, WithPercentAs(fillers, L'%', held).c_str()...), held,
      L'%');
}

// The text for `key` in the user's language with `fillers` in its markers %0, %1, ...; empty when
// there is no text at all.
template <typename... Fillers>
TString LocalizedText(CFStringRef key, const Fillers&... fillers) {
  auto text = CFHold(CopyLocalizedString(key));
  if (text == nullptr) return TString();
  return FilledText(TextOf(text.get()), TString(fillers)...);
}

// UTF-8 text as a TString; empty when it is not UTF-8.
inline TString TextOfUtf8(const std::string& text) {
  auto string = CFHold(CreateCFStringRefFromString(text.c_str()));
  return TextOf(string.get());
}

// The same for the terminal, in UTF-8, for a key kept as a C string (LOCALIZABLE_TEXT); the key
// itself when the text cannot be had.
template <typename... Fillers>
std::string Localized(const char* key, const Fillers&... fillers) {
  auto keyString = CFHold(CreateCFStringRefFromString(key));
  if (keyString == nullptr) return key;
  auto filled =
      CFHold(CreateCFStringRefFromTString(LocalizedText(keyString.get(), TextOfUtf8(fillers)...)));
  return filled != nullptr ? CreateStringFromCFStringRef(filled.get()) : key;
}
