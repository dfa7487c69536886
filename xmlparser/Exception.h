// Exception.h: the exceptions of the XML library. Only the parser and the parentless entity
// reference throw; every other operation answers with null objects instead.
#pragma once

#include "xmlparser/TString.h"

namespace Xml {

// Root of the library's exceptions; catch by const reference.
class Exception {
 public:
  virtual ~Exception() = default;
};

// An entity name that is not one of the five predefined entities.
class InvalidRefException : public Exception {
 public:
  explicit InvalidRefException(const TString& reference) : m_strReference(reference) {}
  const TString& GetReference() const { return m_strReference; }

 private:
  TString m_strReference;
};

}  // namespace Xml
