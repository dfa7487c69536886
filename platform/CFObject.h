// CFObject.h: what every Core Foundation object of the stand-in shares: a reference count and a
// virtual destructor, so that one CFRelease frees strings, URLs and bundles alike. Only platform/
// includes this header.
#pragma once

#include <string>
#include <vector>

#include "platform/CoreFoundation.h"

struct CFObject {
  virtual ~CFObject() = default;

  mutable long m_nReferences = 1;
  bool m_bConstant = false;  // made by CFSTR: never freed
};

struct CFStringObject : CFObject {
  std::vector<UniChar> m_units;
  bool m_bMadeFromUnits = false;  // lends its units through CFStringGetCharactersPtr
};

struct CFURLObject : CFObject {
  std::string m_strText;  // the URL as written, escapes included
};

// Strings made inside platform/ from UTF-16 units.
CFStringRef MakeCFString(std::vector<UniChar> units);
