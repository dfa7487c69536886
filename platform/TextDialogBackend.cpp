// TextDialogBackend.cpp: dialogs on a terminal: an alert's texts and buttons out, one line of
// answer in; a folder question's message out, a path in.
#include "platform/DialogBackend.h"

#include <pwd.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <initializer_list>
#include <istream>
#include <optional>
#include <ostream>
#include <sstream>
#include <string>
#include <vector>

#include "platform/Terminal.h"
#include "platform/internal/CFObject.h"

namespace {

// An answer is a label or a path, and a path has at most 4095 bytes: a line of this many bytes,
// its line end included, is the most that is read for an answer.
const std::size_t kLongestAnswer = 4096;
// Whatever feeds the terminal (`yes`, a file, a stuck key) gets this many tries in a row; then the
// question takes its safe answer and stops asking.
const int kTries = 10;

// The text for `key` in the user's language with its markers %0, %1, ... replaced by `fillers`,
// all in one pass: a translation may put them in any order, and a filler is never searched for
// markers in turn.
std::string Localized(const char* key, std::initializer_list<std::string> fillers = {}) {
  const std::string text = LocalizedText(key);
  std::string result;
  for (std::size_t i = 0; i < text.size(); ++i) {
    const char next = i + 1 < text.size() ? text[i + 1] : '\0';
    if (text[i] == '%' && next >= '0' && static_cast<std::size_t>(next - '0') < fillers.size()) {
      result += fillers.begin()[next - '0'];
      ++i;
    } else {
      result += text[i];
    }
  }
  return result;
}

// What ReadAnswer found.
enum class Answer {
  kLine,     // a line, its line end not kept; the last one may lack it
  kEnd,      // the end of input, with nothing before it
  kTooLong,  // kLongestAnswer bytes without a line end
};

// Reads one line of answer, never more than kLongestAnswer bytes with its line end: endless input
// without one (`yes | tr -d '\n'`, /dev/zero) must not hold a question forever.
Answer ReadAnswer(std::istream& in, std::string& line) {
  line.clear();
  for (std::size_t read = 0; read < kLongestAnswer; ++read) {
    const int c = in.get();
    if (c == std::char_traits<char>::eof()) return line.empty() ? Answer::kEnd : Answer::kLine;
    if (c == '\n') return Answer::kLine;
    line += static_cast<char>(c);
  }
  return Answer::kTooLong;
}

std::string Trimmed(const std::string& line) {
  const char* const blanks = " \t\r\n";
  const std::size_t first = line.find_first_not_of(blanks);
  if (first == std::string::npos) return std::string();
  return line.substr(first, line.find_last_not_of(blanks) - first + 1);
}

// The next answer, trimmed; none when no one is answering: the input ended (the question's line
// is ended) or a line came too long for anyone typing (what `tooLong` makes of the byte count is
// said). The question then takes its safe answer.
template <typename TooLong>
std::optional<std::string> NextAnswer(std::istream& in, std::ostream& out, TooLong tooLong) {
  std::string line;
  switch (ReadAnswer(in, line)) {
    case Answer::kEnd:
      out << '\n';
      return std::nullopt;
    case Answer::kTooLong:
      out << tooLong(std::to_string(kLongestAnswer)) << '\n';
      return std::nullopt;
    case Answer::kLine:
      break;
  }
  return Trimmed(line);
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

// A label's words, split at spaces.
std::vector<std::string> WordsOf(const std::string& label) {
  std::vector<std::string> words;
  std::istringstream in(label);
  for (std::string word; in >> word;) words.push_back(word);
  return words;
}

// The letter that answers for the button `index`: its label's first character, or, where another
// label starts with the same one ("Keep Existing" beside "Keep Both"), the first character of its
// first word that no other label starts with or has at that place. Empty when there is none.
std::string AnswerLetter(const AlertDescription& alert, std::size_t index) {
  const auto& buttons = alert.m_vecButtons;
  const std::vector<std::string> words = WordsOf(buttons[index].m_strLabel);
  for (std::size_t place = 0; place < words.size(); ++place) {
    const std::string letter = FirstCharacter(words[place]);
    bool shared = false;
    for (std::size_t other = 0; other < buttons.size() && !shared; ++other) {
      if (other == index) continue;
      const std::vector<std::string> others = WordsOf(buttons[other].m_strLabel);
      const auto sharedAt = [&](std::size_t at) {
        return at < others.size() && SameIgnoringCase(letter, FirstCharacter(others[at]));
      };
      shared = sharedAt(0) || sharedAt(place);
    }
    if (!shared) return letter;
  }
  return std::string();
}

// The item an answer picks, or 0 when it picks none.
DialogItemIndex ItemForAnswer(const std::string& answer, const AlertDescription& alert) {
  if (answer.empty()) return alert.m_nDefaultItem;
  for (const AlertDescription::Button& button : alert.m_vecButtons)
    if (SameIgnoringCase(answer, button.m_strLabel)) return button.m_nItem;
  for (std::size_t i = 0; i < alert.m_vecButtons.size(); ++i) {
    const std::string letter = AnswerLetter(alert, i);
    if (!letter.empty() && SameIgnoringCase(answer, letter)) return alert.m_vecButtons[i].m_nItem;
  }
  return 0;
}

// A button's label as the terminal shows it: followed by its letter where that is not the
// label's first, so that each answer can still be one letter.
std::string ShownLabel(const AlertDescription& alert, std::size_t index) {
  const std::string& label = alert.m_vecButtons[index].m_strLabel;
  const std::string letter = AnswerLetter(alert, index);
  const std::string shown = TerminalText(label);
  const std::vector<std::string> words = WordsOf(label);
  if (letter.empty() || letter == FirstCharacter(words[0])) return shown;
  return shown + " (" + TerminalText(letter) + ")";
}

// "A, B or C", in the user's language.
std::string ListOfLabels(const AlertDescription& alert) {
  std::string list;
  const std::size_t count = alert.m_vecButtons.size();
  for (std::size_t i = 0; i < count; ++i) {
    const std::string label = ShownLabel(alert, i);
    if (i == 0) {
      list = label;
    } else if (i + 1 < count) {
      // Translators: a list of button titles on the terminal, one more (%1) added to those
      // before it (%0), when another one follows.
      list = Localized(LOCALIZABLE_TEXT("%0, %1"), {list, label});
    } else {
      // Translators: the last button title (%1) added to the list of those before it (%0).
      list = Localized(LOCALIZABLE_TEXT("%0 or %1"), {list, label});
    }
  }
  return list;
}

std::string DefaultLabel(const AlertDescription& alert) {
  for (const AlertDescription::Button& button : alert.m_vecButtons)
    if (button.m_nItem == alert.m_nDefaultItem) return TerminalText(button.m_strLabel);
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

// Translators: the prompt of the folder question on the terminal, after its message.
const char kFolderPrompt[] = LOCALIZABLE_TEXT("Folder (an empty line cancels): ");

}  // namespace

TextDialogBackend::TextDialogBackend(std::istream& in, std::ostream& out, std::ostream& err)
    : m_in(in), m_out(out), m_err(err) {}

DialogItemIndex TextDialogBackend::RunAlert(const AlertDescription& alert) {
  std::ostream& out = alert.m_nKind == kAlertStopAlert ? m_err : m_out;
  out << '\n' << TerminalMessage(alert.m_strMessage) << '\n';
  // An explanation may run over lines of its own (a summary's groups); names in it show their
  // line ends as escapes, so every line end left is the application's.
  std::istringstream explanation(alert.m_strExplanation);
  for (std::string line; std::getline(explanation, line);) out << TerminalMessage(line) << '\n';
  if (!alert.m_strCheckBox.empty()) {
    // Translators: on the terminal, how to tick an alert's check box; %0 is its title, such as
    // "Apply to all". The + stays as it is.
    out << Localized(LOCALIZABLE_TEXT("To choose \"%0\" too, put + after your answer."),
                     {TerminalText(alert.m_strCheckBox)})
        << '\n';
  }
  const std::string labels = ListOfLabels(alert);
  const std::string defaultLabel = DefaultLabel(alert);
  // Translators: the prompt after an alert's texts on the terminal. %0 lists the buttons' titles;
  // %1 is the title of the button that an empty answer picks.
  out << Localized(LOCALIZABLE_TEXT("Answer %0 [%1]: "), {labels, defaultLabel}) << std::flush;
  for (int tries = 1;; ++tries) {
    std::optional<std::string> answer = NextAnswer(m_in, out, [&](const std::string& bytes) {
      // Translators: said when %0 bytes (always 4096) came on the terminal without a line end,
      // so no one is answering; %1 is the title of the button taken.
      return Localized(LOCALIZABLE_TEXT("No line end in %0 bytes; taking %1."),
                       {bytes, defaultLabel});
    });
    // With nobody left to answer, the default button is the answer the alert was made to expect.
    if (!answer) return alert.m_nDefaultItem;
    std::string& typed = *answer;
    const bool ticked = !alert.m_strCheckBox.empty() && !typed.empty() && typed.back() == '+';
    if (ticked) typed = Trimmed(typed.substr(0, typed.size() - 1));
    const DialogItemIndex item = ItemForAnswer(typed, alert);
    if (item != 0) {
      alert.m_bChecked = alert.m_bChecked || ticked;
      return item;
    }
    if (tries == kTries) {
      // Translators: %0 is the number of tries, always 10; %1 is the title of the button taken.
      out << Localized(LOCALIZABLE_TEXT("No answer after %0 tries; taking %1."),
                       {std::to_string(kTries), defaultLabel})
          << '\n';
      return alert.m_nDefaultItem;
    }
    // Translators: asked after a wrong answer. %0 lists the buttons' titles; %1 is the title of
    // the button that an empty answer picks.
    out << Localized(LOCALIZABLE_TEXT("Please answer %0 (a label or its first letter); "
                                      "an empty line means %1: "),
                     {labels, defaultLabel})
        << std::flush;
  }
}

std::optional<std::string> TextDialogBackend::ChooseFolder(const std::string& message) {
  m_out << '\n';
  if (!message.empty()) m_out << TerminalMessage(message) << '\n';
  m_out << Localized(kFolderPrompt) << std::flush;
  for (int tries = 1;; ++tries) {
    const std::optional<std::string> typed = NextAnswer(m_in, m_out, [](const std::string& bytes) {
      // Translators: said when %0 bytes (always 4096) came on the terminal without a line end,
      // so no one is answering the folder question.
      return Localized(LOCALIZABLE_TEXT("No line end in %0 bytes; cancelled."), {bytes});
    });
    if (!typed || typed->empty()) return std::nullopt;
    const std::string path = ExpandHome(*typed);
    struct stat status;
    const bool exists = stat(path.c_str(), &status) == 0;
    if (exists && S_ISDIR(status.st_mode)) return path;
    // Taken at once: looking up a text may change errno.
    const int reason = exists ? ENOTDIR : errno;
    m_out << TerminalText(path) << ": " << std::strerror(reason) << '\n';
    if (tries == kTries) {
      // Translators: %0 is the number of tries, always 10.
      m_out << Localized(LOCALIZABLE_TEXT("No folder after %0 tries; cancelled."),
                         {std::to_string(kTries)})
            << '\n';
      return std::nullopt;
    }
    m_out << Localized(kFolderPrompt) << std::flush;
  }
}
