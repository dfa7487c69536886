// RunProgram.h: runs one of the project's programs as a user would, with arguments, the test's
// own environment and text on standard input; returns what it printed and how it ended. Several
// can run at once.
#pragma once

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>

#include <string>
#include <vector>

#include "tests/TempFolder.h"

extern char** environ;

struct ProgramRun {
  int status = -1;  // the exit status; 128 + the signal when a signal ended it
  std::string out, err;
};

// A program started and not yet waited for.
class StartedProgram {
 public:
  StartedProgram(const std::string& program, const std::vector<std::string>& arguments,
                 const std::string& input = "") {
    std::vector<char*> argv{const_cast<char*>(program.c_str())};
    for (const std::string& argument : arguments)
      argv.push_back(const_cast<char*>(argument.c_str()));
    argv.push_back(nullptr);
    // The standard streams go through files, so that no pipe can fill up and stall either side.
    if (m_streams.Path().empty()) return;
    m_streams.Write("in", input);
    const std::string in = m_streams.Path("in"), out = m_streams.Path("out"),
                      err = m_streams.Path("err");
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, 0, in.c_str(), O_RDONLY, 0);
    posix_spawn_file_actions_addopen(&actions, 1, out.c_str(), O_WRONLY | O_CREAT, 0600);
    posix_spawn_file_actions_addopen(&actions, 2, err.c_str(), O_WRONLY | O_CREAT, 0600);
    if (posix_spawn(&m_child, program.c_str(), &actions, nullptr, argv.data(), environ) != 0)
      m_child = -1;
    posix_spawn_file_actions_destroy(&actions);
  }

  // Waits for the program to end.
  ProgramRun Finish() {
    ProgramRun run;
    int status = 0;
    if (m_child > 0 && waitpid(m_child, &status, 0) == m_child) {
      run.status = WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
      run.out = m_streams.Contents("out");
      run.err = m_streams.Contents("err");
    }
    return run;
  }

 private:
  TempFolder m_streams;
  pid_t m_child = -1;
};

inline ProgramRun RunProgram(const std::string& program, const std::vector<std::string>& arguments,
                             const std::string& input = "") {
  return StartedProgram(program, arguments, input).Finish();
}
