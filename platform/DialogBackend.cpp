// DialogBackend.cpp: choosing the process's dialog backend, and the scripted backend of tests.
#include "platform/DialogBackend.h"

#include <iostream>
#include <memory>

namespace {

DialogBackend* s_pInstalled = nullptr;

// The one place that decides how alerts reach the user. Only the text backend exists in this
// build, so KESTRAIL_UI=text and the lack of a graphical display both lead to it; a graphical
// backend would be picked here otherwise.
std::unique_ptr<DialogBackend> ChooseDialogBackend() {
  return std::make_unique<TextDialogBackend>(std::cin, std::cout, std::cerr);
}

}  // namespace

DialogBackend& ActiveDialogBackend() {
  if (s_pInstalled != nullptr) return *s_pInstalled;
  static const std::unique_ptr<DialogBackend> chosen = ChooseDialogBackend();
  return *chosen;
}

ScopedDialogBackend::ScopedDialogBackend(DialogBackend& backend) : m_pPrevious(s_pInstalled) {
  s_pInstalled = &backend;
}

ScopedDialogBackend::~ScopedDialogBackend() { s_pInstalled = m_pPrevious; }

DialogItemIndex ScriptedDialogBackend::RunAlert(const AlertDescription& alert) {
  m_vecAlerts.push_back(alert);
  if (m_queAnswers.empty()) return alert.m_nDefaultItem;
  const DialogItemIndex answer = m_queAnswers.front();
  m_queAnswers.pop_front();
  return answer;
}

std::optional<std::string> ScriptedDialogBackend::ChooseFolder(const std::string& message) {
  m_vecFolderQuestions.push_back(message);
  if (m_queFolders.empty()) return std::nullopt;
  std::string folder = std::move(m_queFolders.front());
  m_queFolders.pop_front();
  if (folder.empty()) return std::nullopt;
  return folder;
}
