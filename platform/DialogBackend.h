// DialogBackend.h: the seam between the alert calls of Dialogs.h and the choose-folder dialog of
// Navigation.h and whatever shows them. One backend serves the process, picked once by
// ActiveDialogBackend(); tests put their own in place with ScopedDialogBackend. The text backend
// talks on the terminal.
#pragma once

#include <iosfwd>
#include <optional>
#include <string>
#include <vector>

#include "platform/Dialogs.h"
#include "platform/ScopedBackend.h"

// An alert as a backend receives it, texts in UTF-8.
struct AlertDescription {
  struct Button {
    std::string m_strLabel;
    DialogItemIndex m_nItem;
  };

  AlertType m_nKind = kAlertNoteAlert;
  std::string m_strMessage;
  std::string m_strExplanation;      // empty when the alert has none
  std::vector<Button> m_vecButtons;  // in item order; items without a text are left out
  DialogItemIndex m_nDefaultItem = kAlertStdAlertOKButton;
  DialogItemIndex m_nCancelItem = 0;  // 0: none
  std::string m_strCheckBox = {};     // the title of a check box under the texts; empty: none
  // The check box's state: as it is shown at first, and as the backend leaves it once answered.
  mutable bool m_bChecked = false;
};

class DialogBackend {
 public:
  virtual ~DialogBackend() = default;

  // Shows the alert until the user picks a button and returns that button's item, leaving the
  // state of its check box, if any, in `alert.m_bChecked`.
  virtual DialogItemIndex RunAlert(const AlertDescription& alert) = 0;

  // Shows `message` (UTF-8, maybe empty) and lets the user choose an existing folder. Its POSIX
  // path, or nothing when the user cancels.
  virtual std::optional<std::string> ChooseFolder(const std::string& message) = 0;

  // Whether the dialogs are windows on a desktop, whose file manager can show files.
  virtual bool ShowsWindows() const { return false; }
};

// The backend that shows this process's dialogs: one installed by a ScopedDialogBackend if any,
// else the one chosen on first use: GTK windows from the dialog module when there is a graphical
// display and KESTRAIL_UI is not "text", else (or when the module cannot serve, said on standard
// error) the text backend on the standard streams.
DialogBackend& ActiveDialogBackend();

// Makes a backend the active one for its own lifetime, then restores the previous one.
using ScopedDialogBackend = ScopedBackend<DialogBackend>;

// Writes each alert's texts to `out` (stop alerts, which report failed checks, to `err`) with its
// buttons, as TerminalText shows them and without the isolation marks U+2068 and U+2069, and reads
// one line of answer from `in`: a label in any case, or its first letter when no other label
// starts with it (where one does, the first letter of its first word that sets it apart, shown
// after the label); an empty line or the end of input picks the default button. A check box is
// ticked by a + after the answer. Anything else is
// asked again, with the accepted answers spelled out, up to ten times; then the default button is
// taken. A folder is chosen by typing its path on one line; a leading "~" stands for the home
// folder. An empty line or the end of input cancels; a path that names no folder is asked for
// again, up to ten times; then the question cancels. No answer is read past 4096 bytes: when
// that many come without a line end, the alert takes its default button and the folder question
// cancels at once, each saying so in one line, as after the ten tries.
class TextDialogBackend : public DialogBackend {
 public:
  TextDialogBackend(std::istream& in, std::ostream& out, std::ostream& err);
  DialogItemIndex RunAlert(const AlertDescription& alert) override;
  std::optional<std::string> ChooseFolder(const std::string& message) override;

 private:
  std::istream& m_in;
  std::ostream& m_out;
  std::ostream& m_err;
};
