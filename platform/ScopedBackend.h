// ScopedBackend.h: putting a backend of one's own in place for a scope, as tests do with the
// disk and the dialogs, and the one before it back afterwards. Scopes nest.
#pragma once

#include <utility>

template <class Backend>
class ScopedBackend {
 public:
  explicit ScopedBackend(Backend& backend) : m_pPrevious(std::exchange(s_pInstalled, &backend)) {}
  ~ScopedBackend() { s_pInstalled = m_pPrevious; }
  ScopedBackend(const ScopedBackend&) = delete;
  ScopedBackend& operator=(const ScopedBackend&) = delete;

  // The backend of the innermost scope; null outside every scope.
  static Backend* Installed() { return s_pInstalled; }

 private:
  static inline Backend* s_pInstalled = nullptr;
  Backend* m_pPrevious;
};
