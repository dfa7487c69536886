// TString.h: the text type of the whole system: one 32-bit wide character per element.
#pragma once

#include <string>

static_assert(sizeof(wchar_t) == 4, "TString holds one UTF-32 code unit per character");

typedef std::wstring TString;
