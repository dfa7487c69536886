// TextDialogBackend.cpp: dialogs on a terminal: an alert's texts and buttons out, one line of
// answer in; a folder question's message out, a path in.
#include "platform/DialogBackend.h"

#include <pwd.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <istream>
#include <ostream>

namespace {

std::string Trimmed(const std::string& line) {
  const char* const blanks = " \t\r\n";
  const std::size_t first = line.find_first_not_of(blanks);
  if (first == std::string::npos) return std::string();
  return line.substr(first, line.find_last_not_of(blanks) - first + 1);
}

// Labels are compared without regard to the case of ASCII letters; other characters must match.
bool SameIgnoringCase(const std::string& a, const std::string& b) {
  if (a.size() != b.size()) return false;
  for (std::size_t i = 0; i < a.size(); ++i) {
    const auto lower = [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c + 32) : c; };
    if (lower(a[i]) != lower(b[i])) return false;
  }
  return true;
}

// The label's first character, as UTF-8 bytes.
std::string FirstCharacter(const std::string& label) {
  if (label.empty()) return label;
  const unsigned char lead = static_cast<unsigned char>(label[0]);
  const std::size_t length = lead < 0xC0 ? 1 : lead < 0xE0 ? 2 : lead < 0xF0 ? 3 : 4;
  return label.substr(0, length);
}

// The item an answer picks, or 0 when it picks none.
DialogItemIndex ItemForAnswer(const std::string& answer, const AlertDescription& alert) {
  if (answer.empty()) return alert.m_nDefaultItem;
  for (const AlertDescription::Button& button : alert.m_vecButtons)
    if (SameIgnoringCase(answer, button.m_strLabel)) return button.m_nItem;
  DialogItemIndex byLetter = 0;
  for (const AlertDescription::Button& button : alert.m_vecButtons) {
    if (!SameIgnoringCase(answer, FirstCharacter(button.m_strLabel))) continue;
    if (byLetter != 0) return 0;  // two labels start with it
    byLetter = button.m_nItem;
  }
  return byLetter;
}

// "A, B or C".
std::string ListOfLabels(const AlertDescription& alert) {
  std::string list;
  const std::size_t count = alert.m_vecButtons.size();
  for (std::size_t i = 0; i < count; ++i) {
    if (i > 0) list += i + 1 == count ? " or " : ", ";
    list += alert.m_vecButtons[i].m_strLabel;
  }
  return list;
}

std::string DefaultLabel(const AlertDescription& alert) {
  for (const AlertDescription::Button& button : alert.m_vecButtons)
    if (button.m_nItem == alert.m_nDefaultItem) return button.m_strLabel;
  return std::string();
}

// The folder a leading "~" stands for: $HOME, or the user's entry in the password database.
std::string HomeFolder() {
  const char* home = std::getenv("HOME");
  if (home != nullptr && home[0] != '\0') return home;
  const passwd* user = getpwuid(getuid());
  return user != nullptr && user->pw_dir != nullptr ? user->pw_dir : "";
}

// "~" and "~/x"; another user's "~name" is taken as it is.
std::string ExpandHome(const std::string& path) {
  if (path.empty() || path[0] != '~' || (path.size() > 1 && path[1] != '/')) return path;
  return HomeFolder() + path.substr(1);
}

const char kFolderPrompt[] = "Folder (an empty line cancels): ";

}  // namespace

TextDialogBackend::TextDialogBackend(std::istream& in, std::ostream& out, std::ostream& err)
    : m_in(in), m_out(out), m_err(err) {}

DialogItemIndex TextDialogBackend::RunAlert(const AlertDescription& alert) {
  std::ostream& out = alert.m_nKind == kAlertStopAlert ? m_err : m_out;
  out << '\n' << alert.m_strMessage << '\n';
  if (!alert.m_strExplanation.empty()) out << alert.m_strExplanation << '\n';
  const std::string labels = ListOfLabels(alert);
  const std::string defaultLabel = DefaultLabel(alert);
  out << "Answer " << labels << " [" << defaultLabel << "]: " << std::flush;
  for (;;) {
    std::string line;
    // With nobody left to answer, the default button is the answer the alert was made to expect.
    if (!std::getline(m_in, line)) {
      out << '\n';
      return alert.m_nDefaultItem;
    }
    const DialogItemIndex item = ItemForAnswer(Trimmed(line), alert);
    if (item != 0) return item;
    out << "Please answer " << labels << " (a label or its first letter); an empty line means "
        << defaultLabel << ": " << std::flush;
  }
}

std::optional<std::string> TextDialogBackend::ChooseFolder(const std::string& message) {
  m_out << '\n';
  if (!message.empty()) m_out << message << '\n';
  m_out << kFolderPrompt << std::flush;
  for (;;) {
    std::string line;
    if (!std::getline(m_in, line)) {
      m_out << '\n';
      return std::nullopt;
    }
    const std::string typed = Trimmed(line);
    if (typed.empty()) return std::nullopt;
    const std::string path = ExpandHome(typed);
    struct stat status;
    const bool exists = stat(path.c_str(), &status) == 0;
    if (exists && S_ISDIR(status.st_mode)) return path;
    m_out << path << ": " << std::strerror(exists ? ENOTDIR : errno) << '\n'
          << kFolderPrompt << std::flush;
  }
}
