// SPDX-License-Identifier: MIT
#include "traces/child.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/resource.h>
#include <sys/time.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>

#include "traces/limits.h"

#ifdef KORU_COVERAGE
extern "C" void __gcov_dump();  // its header is for C
#endif

namespace koru::traces {
namespace {

constexpr int kFailed = 77;

// Processor time, so that a busy machine changes nothing.
void limitTime(int milliseconds) {
  itimerval timer{};
  timer.it_value.tv_sec = milliseconds / 1000;
  timer.it_value.tv_usec = milliseconds % 1000 * 1000;
  setitimer(ITIMER_VIRTUAL, &timer, nullptr);
}

void limitMemory() {
  if (kSanitized) return;  // reserves terabytes of address space
  const rlimit limit{rlim_t{1} << 30, rlim_t{1} << 30};
  setrlimit(RLIMIT_AS, &limit);
}

// Nothing that is registered for the end of a process is run but the note of what has been covered.
[[noreturn]] void leave(int status) {
#ifdef KORU_COVERAGE
  __gcov_dump();
#endif
  _exit(status);
}

}  // namespace

bool sameKind(const Failure &a, const Failure &b) { return a.substr(0, a.find(" (")) == b.substr(0, b.find(" (")); }

Shared *makeShared() {
  void *memory = mmap(nullptr, sizeof(Shared), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
  if (memory == MAP_FAILED) std::abort();
  return new (memory) Shared{};
}

// The standard output is no use in a child; what it complains of on the other stream becomes part of the failure.
Child::Child(Shared &shared, const std::function<void()> &body)
    : shared_(shared), output_(memfd_create("child", 0)), pid_(0) {
  std::fflush(nullptr);
  pid_ = fork();
  if (pid_ != 0) return;
  dup2(open("/dev/null", O_WRONLY), STDOUT_FILENO);
  dup2(output_, STDERR_FILENO);
  const rlimit noCore{0, 0};
  setrlimit(RLIMIT_CORE, &noCore);
  limitMemory();
  body();
  leave(0);
}

std::string Child::complaint() const {
  char text[4096] = {};
  const ssize_t length = pread(output_, text, sizeof text - 1, 0);
  const std::string all(text, length > 0 ? static_cast<std::size_t>(length) : 0);
  for (const char *mark : {"koru: ", "runtime error: ", "ERROR: AddressSanitizer: ", "what():  "}) {
    const std::size_t at = all.find(mark);
    if (at == std::string::npos) continue;
    const std::string line = all.substr(at, all.find('\n', at) - at);
    return ": " + line.substr(0, std::min(line.find(" on address"), line.find(" on unknown")));
  }
  return "";
}

Failure Child::judge(int status) const {
  std::string failure;
  if (WIFEXITED(status) && WEXITSTATUS(status) == kFailed) {
    failure = shared_.failure;
  } else if (WIFSIGNALED(status) && WTERMSIG(status) == SIGVTALRM) {
    failure = "time: the trace does not end";
  } else if (WIFSIGNALED(status)) {
    failure = "crash: " + std::string(strsignal(WTERMSIG(status))) + complaint();
  } else if (WEXITSTATUS(status) != 0) {
    failure = "crash: exit status " + std::to_string(WEXITSTATUS(status)) + complaint();
  }
  close(output_);
  return failure;
}

void runOne(const Trace &trace, const Settings &settings, Shared &shared) {
  limitTime(kSanitized ? 10000 : 1000);
  const std::string failure = Machine(trace, settings, shared.tally).run();
  if (failure.empty()) return;
  std::strncpy(shared.failure, failure.c_str(), sizeof shared.failure - 1);
  leave(kFailed);
}

Failure runInChild(const Trace &trace, const Settings &settings, Shared &shared) {
  const Child child(shared, [&] { runOne(trace, settings, shared); });
  int status = 0;
  waitpid(child.pid(), &status, 0);
  return child.judge(status);
}

}  // namespace koru::traces
