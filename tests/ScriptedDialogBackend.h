// ScriptedDialogBackend.h: the dialog backend of tests, which answers from queues and records
// what it was shown.
#pragma once

#include <deque>
#include <optional>
#include <string>
#include <vector>

#include "platform/DialogBackend.h"

// Records every alert and answers with the queued items in turn, or with the alert's default
// item once the queue is empty, leaving its check box, if any, as m_bTickCheckBoxes says. Folder
// questions likewise: each message is recorded and answered with the next queued path as it is,
// unchecked; an empty path or an empty queue cancels.
class ScriptedDialogBackend : public DialogBackend {
 public:
  DialogItemIndex RunAlert(const AlertDescription& alert) override;
  std::optional<std::string> ChooseFolder(const std::string& message) override;
  bool ShowsWindows() const override { return m_bShowsWindows; }

  std::deque<DialogItemIndex> m_queAnswers;
  bool m_bTickCheckBoxes = false;
  bool m_bShowsWindows = false;
  std::vector<AlertDescription> m_vecAlerts;
  std::deque<std::string> m_queFolders;
  std::vector<std::string> m_vecFolderQuestions;
};
