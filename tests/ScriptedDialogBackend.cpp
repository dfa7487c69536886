#include "tests/ScriptedDialogBackend.h"

#include <utility>

DialogItemIndex ScriptedDialogBackend::RunAlert(const AlertDescription& alert) {
  m_vecAlerts.push_back(alert);
  if (!alert.m_strCheckBox.empty()) alert.m_bChecked = m_bTickCheckBoxes;
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
