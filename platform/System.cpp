// System.cpp: Gestalt, the text encoding, the desktop's URL opener, the debugger and process exit.
#include "platform/System.h"

#include <fcntl.h>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <string>

#include "platform/internal/CFObject.h"

extern char** environ;

namespace {

bool DebuggerAttached() {
  std::ifstream status("/proc/self/status");
  std::string line;
  while (std::getline(status, line))
    if (line.compare(0, 10, "TracerPid:") == 0) return std::atoi(line.c_str() + 10) != 0;
  return false;
}

}  // namespace

OSErr Gestalt(OSType selector, SInt32* response) {
  if (response == nullptr) return paramErr;
  switch (selector) {
    case gestaltSystemVersion:
      *response = 0x1049;
      return noErr;
    case gestaltFindFolderAttr:
      *response = 1 << gestaltFolderMgrPresent | 1 << gestaltFolderMgrSupportsDomains;
      return noErr;
    default:
      return gestaltUndefSelectorErr;
  }
}

TextEncoding GetApplicationTextEncoding() { return kCFStringEncodingUTF8; }

OSStatus LSOpenCFURLRef(CFURLRef url, CFURLRef* outLaunchedURL) {
  if (url == nullptr || outLaunchedURL != nullptr) return paramErr;
  // The opener must not read the answers meant for the text dialogs, so it gets no input.
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_addopen(&actions, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
  char program[] = "xdg-open";
  std::string text = url->m_strText;
  char* arguments[] = {program, text.data(), nullptr};
  pid_t child;
  const int error = posix_spawnp(&child, program, &actions, nullptr, arguments, environ);
  posix_spawn_file_actions_destroy(&actions);
  if (error != 0) return kLSApplicationNotFoundErr;
  int status;
  while (waitpid(child, &status, 0) < 0)
    if (errno != EINTR) return kLSApplicationNotFoundErr;
  return WIFEXITED(status) && WEXITSTATUS(status) == 0 ? noErr : kLSApplicationNotFoundErr;
}

void Debugger() {
  if (DebuggerAttached()) {
    raise(SIGTRAP);
    return;
  }
  std::fputs("No debugger is attached; going on.\n", stderr);
}

void ExitToShell() {
  std::fflush(nullptr);
  std::_Exit(EXIT_FAILURE);
}
