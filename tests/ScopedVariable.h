// ScopedVariable.h: an environment variable set (or, for null, unset) until the end of a scope.
#pragma once

#include <stdlib.h>

#include <optional>
#include <string>

class ScopedVariable {
 public:
  ScopedVariable(const char* name, const char* value) : m_name(name) {
    if (const char* old = getenv(name)) m_old = old;
    Set(value);
  }
  ~ScopedVariable() { Set(m_old ? m_old->c_str() : nullptr); }
  ScopedVariable(const ScopedVariable&) = delete;
  ScopedVariable& operator=(const ScopedVariable&) = delete;

 private:
  void Set(const char* value) { value != nullptr ? setenv(m_name, value, 1) : unsetenv(m_name); }

  const char* m_name;
  std::optional<std::string> m_old;
};
