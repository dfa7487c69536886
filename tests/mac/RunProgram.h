// RunProgram.h: runs one of the project's programs as a user would, with arguments, the test's
// own environment and text on standard input; returns what it printed and how it ended.
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

inline ProgramRun RunProgram(const std::string& program, const std::vector<std::string>& arguments,
                             const std::string& input = "") {
  std::vector<char*> argv{const_cast<char*>(program.c_str())};
  for (const std::string& argument : arguments) argv.push_back(const_cast<char*>(argument.c_str()));
  argv.push_back(nullptr);

  // The standard streams go through files, so that no pipe can fill up and stall either side.
  TempFolder streams;
  ProgramRun run;
  if (streams.Path().empty()) return run;
  streams.Write("in", input);
  const std::string in = streams.Path("in"), out = streams.Path("out"), err = streams.Path("err");
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_addopen(&actions, 0, in.c_str(), O_RDONLY, 0);
  posix_spawn_file_actions_addopen(&actions, 1, out.c_str(), O_WRONLY | O_CREAT, 0600);
  posix_spawn_file_actions_addopen(&actions, 2, err.c_str(), O_WRONLY | O_CREAT, 0600);
  pid_t child;
  int status = 0;
  if (posix_spawn(&child, program.c_str(), &actions, nullptr, argv.data(), environ) == 0 &&
      waitpid(child, &status, 0) == child) {
    run.status = WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
    run.out = streams.Contents("out");
    run.err = streams.Contents("err");
  }
  posix_spawn_file_actions_destroy(&actions);
  return run;
}
