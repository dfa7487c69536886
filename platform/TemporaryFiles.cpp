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

#include "platform/DiskBackend.h"

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
Marked s_marked[kMostTemporaryFiles];

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

// Whether `name` has exactly the form NewTemporaryName gives: the prefix, the process, the count
// and sixteen hexadecimal digits. A user's own file that merely begins like one is not ours.
bool IsMadeTemporaryName(const char* name) {
  if (std::strncmp(name, kPrefix, sizeof kPrefix - 1) != 0) return false;
  const char* p = name + sizeof kPrefix - 1;
  for (int field = 0; field < 2; ++field) {
    const char* digits = p;
    while (*p >= '0' && *p <= '9') ++p;
    if (p == digits || p - digits > 20 || *p++ != '-') return false;
  }
  for (int i = 0; i < 16; ++i, ++p)
    if (!((*p >= '0' && *p <= '9') || (*p >= 'a' && *p <= 'f'))) return false;
  return *p == '\0';
}

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

void RemoveStaleTemporaryFiles(UInt32 folder) {
  DiskBackend& disk = ActiveDiskBackend();
  int listing;
  if (disk.Open(HeldDescriptor(folder), ".", O_RDONLY | O_DIRECTORY | O_CLOEXEC, 0, listing) != 0)
    return;
  DIR* entries = fdopendir(listing);
  if (entries == nullptr) {
    close(listing);
    return;
  }
  const time_t staleBefore = time(nullptr) - kStaleSeconds;
  const uid_t user = geteuid();
  while (const dirent* entry = readdir(entries)) {
    struct statx status;
    if (IsMadeTemporaryName(entry->d_name) &&
        disk.Look(dirfd(entries), entry->d_name, AT_SYMLINK_NOFOLLOW, status) == 0 &&
        S_ISREG(status.stx_mode) && status.stx_uid == user && status.stx_mtime.tv_sec < staleBefore)
      disk.Remove(dirfd(entries), entry->d_name, false);
  }
  closedir(entries);
}

bool RememberTemporaryFile(UInt32 folder, const std::string& name) {
  if (name.size() >= sizeof Marked::m_szName) return false;
  SignalsBlocked blocked;
  CatchEndingSignals();
  for (Marked& marked : s_marked) {
    if (marked.m_nFolder >= 0) continue;
    // A descriptor of its own: the handler cannot know whether a held one is still open.
    const int fd = fcntl(HeldDescriptor(folder), F_DUPFD_CLOEXEC, 0);
    if (fd < 0) return false;
    std::memcpy(marked.m_szName, name.c_str(), name.size() + 1);
    marked.m_nFolder = fd;
    return true;
  }
  return false;
}

void ForgetTemporaryFile(const std::string& name) {
  SignalsBlocked blocked;
  for (Marked& marked : s_marked) {
    if (marked.m_nFolder < 0 || name != marked.m_szName) continue;
    close(marked.m_nFolder.exchange(-1));
  }
}
