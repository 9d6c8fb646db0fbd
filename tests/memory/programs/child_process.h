// SPDX-License-Identifier: MIT
// The example programs inside a test: each runs in a child process, with an allocation of the library failing.
#pragma once

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <string>
#include <vector>

#include "core/solver.h"
#include "support/kit/failing_allocations.h"

namespace koru::test {

struct Ending {
  int status = -1;     // the exit status; -1 when it was killed
  std::string errors;  // what it wrote to the standard error stream
};

using Main = int (*)(int argc, char **argv);

// Does not return. `k` counts from 0.
[[noreturn]] inline void runHere(Main program, std::vector<std::string> words, int k, int errorStream) {
  const int nowhere = open("/dev/null", O_RDWR);
  dup2(nowhere, STDIN_FILENO);
  dup2(nowhere, STDOUT_FILENO);
  dup2(errorStream, STDERR_FILENO);
  std::vector<char *> arguments;
  for (std::string &word : words) arguments.push_back(word.data());
  arguments.push_back(nullptr);
  solver::checked.period = solver::checked.untilNext = 1000;
  const FailingAllocator failing(k, Failing::kForEver);
  std::exit(program(static_cast<int>(words.size()), arguments.data()));
}

inline std::string readAll(int stream) {
  std::string text;
  char buffer[512];
  for (ssize_t got; (got = read(stream, buffer, sizeof(buffer))) > 0;)
    text.append(buffer, static_cast<std::size_t>(got));
  return text;
}

inline Ending runWithout(Main program, const std::vector<std::string> &words, int k) {
  int ends[2];
  if (pipe(ends) != 0) return {};
  std::fflush(nullptr);
  const pid_t child = fork();
  if (child == 0) {
    close(ends[0]);
    runHere(program, words, k, ends[1]);
  }
  close(ends[1]);
  Ending ending;
  ending.errors = readAll(ends[0]);
  close(ends[0]);
  int status = 0;
  if (child > 0 && waitpid(child, &status, 0) == child && WIFEXITED(status)) ending.status = WEXITSTATUS(status);
  return ending;
}

}  // namespace koru::test
