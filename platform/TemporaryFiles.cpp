// TemporaryFiles.cpp: the names of temporary files, their removal when a signal ends the process,
// and the removal of those that a killed process left behind.
#include "platform/internal/PosixFiles.h"

#include <dirent.h>
#include <fcntl.h>
#include <signal.h>
#include <sys/random.h>
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <cstdio>
#include <cstring>
#include <ctime>

namespace {

const char kPrefix[] = ".kestrail-unfinished-";
const int kCleanedSignals[] = {SIGHUP, SIGINT, SIGTERM};
// A writer changes its file as it goes; one untouched for this long has no writer left.
const time_t kStaleSeconds = 10 * 60;

// The files to remove when a signal ends the process: the folder, held open so that the removal
// needs no path, and the name. Changed with the signals blocked on this thread; a handler on
// another thread sees an entry only once its name is whole, as the folder is set last.
struct Marked {
  std::atomic<int> m_nFolder{-1};  // -1: a free slot
  char m_szName[64];
};
Marked s_marked[16];

// Keeps the signals away while the marks change, so that the handler never sees half of one.
class SignalsBlocked {
 public:
  SignalsBlocked() {
    sigset_t blocked;
    sigemptyset(&blocked);
    for (int signal : kCleanedSignals) sigaddset(&blocked, signal);
    sigprocmask(SIG_BLOCK, &blocked, &m_previous);
  }
  ~SignalsBlocked() { sigprocmask(SIG_SETMASK, &m_previous, nullptr); }

 private:
  sigset_t m_previous;
};

// Only async-signal-safe calls: the process is ending, and what it was doing is cut short.
void RemoveMarkedAndEnd(int signal) {
  for (const Marked& marked : s_marked) {
    const int folder = marked.m_nFolder;
    if (folder >= 0) unlinkat(folder, marked.m_szName, 0);
  }
  // Ended by the signal as it would have been, so that whoever sent it sees that.
  struct sigaction standard = {};
  standard.sa_handler = SIG_DFL;
  sigaction(signal, &standard, nullptr);
  raise(signal);
}

// Catches the signals that still end the process by default; one that the user had ignored (as
// nohup does) stays ignored.
void CatchEndingSignals() {
  static bool caught = false;
  if (caught) return;
  caught = true;
  struct sigaction cleanup = {};
  cleanup.sa_handler = RemoveMarkedAndEnd;
  sigemptyset(&cleanup.sa_mask);
  for (int signal : kCleanedSignals) sigaddset(&cleanup.sa_mask, signal);
  for (int signal : kCleanedSignals) {
    struct sigaction current;
    if (sigaction(signal, nullptr, &current) == 0 && current.sa_handler == SIG_DFL)
      sigaction(signal, &cleanup, nullptr);
  }
}

std::string FolderOf(const std::string& path) {
  const std::size_t slash = path.rfind('/');
  return slash == 0 ? std::string("/") : path.substr(0, slash);
}

std::string NameOf(const std::string& path) { return path.substr(path.rfind('/') + 1); }

}  // namespace

bool IsTemporaryName(const std::string& component) {
  return component.compare(0, sizeof kPrefix - 1, kPrefix) == 0;
}

std::string NewTemporaryName() {
  static unsigned long s_nCalls = 0;
  unsigned long long random = 0;
  // Without the kernel's randomness the time still tells this call from another process's.
  if (getrandom(&random, sizeof random, GRND_NONBLOCK) != sizeof random) {
    timespec now;
    clock_gettime(CLOCK_REALTIME, &now);
    random = static_cast<unsigned long long>(now.tv_sec) * 1000000000ull + now.tv_nsec;
  }
  char name[64];
  std::snprintf(name, sizeof name, "%s%ld-%lu-%016llx", kPrefix, static_cast<long>(getpid()),
                ++s_nCalls, random);
  return name;
}

void RemoveStaleTemporaryFiles(const std::string& folder) {
  DIR* entries = opendir(folder.c_str());
  if (entries == nullptr) return;
  const time_t staleBefore = time(nullptr) - kStaleSeconds;
  while (const dirent* entry = readdir(entries)) {
    struct stat status;
    if (IsTemporaryName(entry->d_name) &&
        fstatat(dirfd(entries), entry->d_name, &status, AT_SYMLINK_NOFOLLOW) == 0 &&
        S_ISREG(status.st_mode) && status.st_mtime < staleBefore)
      unlinkat(dirfd(entries), entry->d_name, 0);
  }
  closedir(entries);
}

bool RememberTemporaryFile(const std::string& path) {
  const std::string name = NameOf(path);
  if (name.size() >= sizeof Marked::m_szName) return false;
  SignalsBlocked blocked;
  CatchEndingSignals();
  for (Marked& marked : s_marked) {
    if (marked.m_nFolder >= 0) continue;
    const int folder = open(FolderOf(path).c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (folder < 0) return false;
    std::memcpy(marked.m_szName, name.c_str(), name.size() + 1);
    marked.m_nFolder = folder;
    return true;
  }
  return false;
}

void ForgetTemporaryFile(const std::string& path) {
  const std::string name = NameOf(path);
  SignalsBlocked blocked;
  for (Marked& marked : s_marked) {
    if (marked.m_nFolder < 0 || name != marked.m_szName) continue;
    close(marked.m_nFolder.exchange(-1));
  }
}
