// RunProgram.h: runs one of the project's programs as a user would, with arguments, an
// environment added to the test's own, and text on standard input; returns what it printed
// and how it ended.
#pragma once

#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <map>
#include <string>
#include <vector>

extern char** environ;

struct ProgramRun {
  int status = -1;  // the exit status; 128 + the signal when a signal ended it
  std::string out, err;
};

inline ProgramRun RunProgram(const std::string& program, const std::vector<std::string>& arguments,
                             const std::string& input = "",
                             const std::map<std::string, std::string>& environment = {}) {
  std::vector<std::string> variables;
  for (char** variable = environ; *variable != nullptr; ++variable) {
    const std::string text = *variable;
    if (environment.count(text.substr(0, text.find('='))) == 0) variables.push_back(text);
  }
  for (const auto& [name, value] : environment) variables.push_back(name + "=" + value);
  std::vector<char*> envp, argv{const_cast<char*>(program.c_str())};
  for (std::string& variable : variables) envp.push_back(variable.data());
  for (const std::string& argument : arguments) argv.push_back(const_cast<char*>(argument.c_str()));
  envp.push_back(nullptr);
  argv.push_back(nullptr);

  int in[2], out[2], err[2];
  ProgramRun run;
  if (pipe(in) != 0 || pipe(out) != 0 || pipe(err) != 0) return run;
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_adddup2(&actions, in[0], 0);
  posix_spawn_file_actions_adddup2(&actions, out[1], 1);
  posix_spawn_file_actions_adddup2(&actions, err[1], 2);
  for (int fd : {in[1], out[0], err[0]}) posix_spawn_file_actions_addclose(&actions, fd);
  pid_t child;
  const int spawned =
      posix_spawn(&child, program.c_str(), &actions, nullptr, argv.data(), envp.data());
  posix_spawn_file_actions_destroy(&actions);
  for (int fd : {in[0], out[1], err[1]}) close(fd);
  if (spawned != 0) {
    for (int fd : {in[1], out[0], err[0]}) close(fd);
    return run;
  }
  // Feed the input and drain both outputs together, so that no pipe fills up and stalls.
  fcntl(in[1], F_SETFL, O_NONBLOCK);
  size_t written = 0;
  if (input.empty()) close(in[1]);
  std::vector<pollfd> fds{{out[0], POLLIN, 0}, {err[0], POLLIN, 0}};
  if (!input.empty()) fds.push_back({in[1], POLLOUT, 0});
  while (fds[0].fd >= 0 || fds[1].fd >= 0) {
    if (poll(fds.data(), fds.size(), -1) < 0) break;
    for (size_t i = 0; i < 2; ++i) {
      if (fds[i].fd < 0 || fds[i].revents == 0) continue;
      char buffer[4096];
      const ssize_t n = read(fds[i].fd, buffer, sizeof buffer);
      if (n > 0) {
        (i == 0 ? run.out : run.err).append(buffer, n);
      } else {
        close(fds[i].fd);
        fds[i].fd = -1;
      }
    }
    if (fds.size() == 3 && fds[2].revents != 0) {
      const ssize_t n = write(in[1], input.data() + written, input.size() - written);
      if (n > 0) written += n;
      if (n <= 0 || written == input.size()) {
        close(in[1]);
        fds.pop_back();
      }
    }
  }
  if (fds.size() == 3) close(in[1]);
  int status = 0;
  waitpid(child, &status, 0);
  run.status = WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
  return run;
}
