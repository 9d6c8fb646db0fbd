// SPDX-License-Identifier: MIT
// A child writes as any run does, with the objective in a line of its own, to a pipe. What children hand to each other
// is the best objective: a solution is written first, its objective told then, so that at the end of a child that has
// found nothing better the solution it had to beat can be read. Children end with their parent, whatever ends that.
#include "minizinc/portfolio.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <charconv>
#include <csignal>
#include <cstdio>
#include <cstdlib>

#include "minizinc/shared_bound.h"

namespace koru::fzn {

namespace {

constexpr std::string_view kObjective = "%%%koru-objective=";

struct Child {
  pid_t pid = -1;
  int pipe = -1;
  std::string unread;    // the beginning of a line
  std::string solution;  // the lines of one so far
  std::string statistics;
  long long objective = 0;
  Outcome outcome = Outcome::kUnknown;
  bool ended = false;  // it has written all
};

// The first child does what was asked for, the second one the other of following the annotations or not.
Options optionsOf(Options options, int number) {
  options.processes = 1;
  options.milliseconds = 0;
  options.intermediate = true;
  options.tellsObjective = true;
  options.seed += static_cast<unsigned long long>(number);
  if (number == 1) options.free = !options.free;
  if (number > 1) options.free = true;
  if (number % 3 == 2) options.restarts = "geometric";
  if (number > 0) options.profile.clear();
  return options;
}

class Portfolio {
 public:
  Portfolio(const Syntax &syntax, const Options &options)
      : goal_(syntax.solve.goal),
        options_(options),
        report_(options),
        bound_(goal_ == Goal::kSatisfy ? nullptr : SharedBound::create(goal_ == Goal::kMinimize)) {}

  // False when no child could be made.
  bool start(const std::function<int(const Options &)> &solve) {
    const auto count = static_cast<int>(std::min(options_.processes, 64LL));
    for (int i = 0; i < count; ++i) {
      int ends[2];
      if (pipe2(ends, O_CLOEXEC) != 0) break;
      const pid_t pid = fork();
      if (pid == 0) runChild(i, ends[1], solve);
      close(ends[1]);
      if (pid < 0) {
        close(ends[0]);
        break;
      }
      children_.push_back({});
      children_.back().pid = pid;
      children_.back().pipe = ends[0];
    }
    report_.setGoal(goal_);
    report_.watch(options_.milliseconds);
    return !children_.empty();
  }

  int run() {
    while (!isOver_ && !report_.isStopping() && readSome()) continue;
    const Outcome outcome = isOver_ ? outcome_ : report_.solutions() > 0 ? Outcome::kSolutions : Outcome::kUnknown;
    if (isOver_ || report_.isStopping()) {
      report_.end(outcome);
      return stopChildren();
    }
    const int status = stopChildren();
    if (status == 0 || outcome == Outcome::kSolutions) report_.end(outcome);  // else the model was refused
    return status;
  }

 private:
  [[noreturn]] void runChild(int number, int out, const std::function<int(const Options &)> &solve) const {
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    dup2(out, STDOUT_FILENO);
    const int nowhere = number == 0 ? -1 : open("/dev/null", O_WRONLY | O_CLOEXEC);
    if (nowhere >= 0) dup2(nowhere, STDERR_FILENO);  // the first one says it all
    Options own = optionsOf(options_, number);
    own.bound = bound_;
    const int status = solve(own);
    std::fflush(stdout);
    std::_Exit(status);
  }

  // Waits for something to read. False when all children have ended.
  bool readSome() {
    std::vector<pollfd> waiting;
    std::vector<Child *> readers;
    for (Child &child : children_) {
      if (child.pipe < 0) continue;
      waiting.push_back({child.pipe, POLLIN, 0});
      readers.push_back(&child);
    }
    if (waiting.empty()) return false;
    poll(waiting.data(), waiting.size(), 50);
    for (std::size_t i = 0; i < waiting.size(); ++i) {
      if (waiting[i].revents != 0) readFrom(*readers[i]);
    }
    return true;
  }

  void readFrom(Child &child) {
    char block[1 << 14];
    const ssize_t n = read(child.pipe, block, sizeof block);
    if (n <= 0) {
      close(child.pipe);
      child.pipe = -1;
      finish(child);
      return;
    }
    child.unread.append(block, static_cast<std::size_t>(n));
    std::size_t begin = 0;
    for (std::size_t end; (end = child.unread.find('\n', begin)) != std::string::npos; begin = end + 1)
      take(child, std::string_view(child.unread).substr(begin, end - begin));
    child.unread.erase(0, begin);
  }

  void take(Child &child, std::string_view line) {
    if (line == "----------")
      takeSolution(child);
    else if (line == "==========")
      child.outcome = Outcome::kComplete;
    else if (line == "=====UNSATISFIABLE=====")
      child.outcome = Outcome::kUnsatisfiable;
    else if (line.starts_with(kObjective))
      std::from_chars(line.data() + kObjective.size(), line.data() + line.size(), child.objective);
    else if (line == "%%%mzn-stat-end")
      finish(child);
    else if (isOfAll(line))
      return;
    else if (line.starts_with("%%%mzn-stat: "))
      child.statistics.append(line).append("\n");
    else if (line != "=====UNKNOWN=====")
      child.solution.append(line).append("\n");
  }

  // Statistics that are not those of the child that ends the search.
  static bool isOfAll(std::string_view line) {
    return line.starts_with("%%%mzn-stat: objective") || line.starts_with("%%%mzn-stat: nSolutions");
  }

  void takeSolution(Child &child) {
    if (child.outcome == Outcome::kUnknown) child.outcome = Outcome::kSolutions;
    std::string text = std::move(child.solution);
    child.solution.clear();
    const bool first = report_.solutions() == 0;
    const bool better = goal_ == Goal::kMinimize ? child.objective < best_ : child.objective > best_;
    if (!first && (goal_ == Goal::kSatisfy || !better)) return;
    best_ = child.objective;
    report_.solution(std::move(text));
    tellStatistics("");
  }

  void tellStatistics(std::string lines) {
    const long long found = report_.solutions();
    if (found > 0 && goal_ != Goal::kSatisfy) {
      lines += "%%%mzn-stat: objective=" + std::to_string(best_) + "\n";
      if (isOver_) lines += "%%%mzn-stat: objectiveBound=" + std::to_string(best_) + "\n";
    }
    report_.setStatistics(lines + "%%%mzn-stat: nSolutions=" + std::to_string(found) + "\n");
  }

  // What a child says at its end holds for all, unless it has given up.
  void finish(Child &child) {
    if (child.ended || isOver_) return;
    child.ended = true;
    const bool solved = goal_ == Goal::kSatisfy && child.outcome == Outcome::kSolutions;
    if (child.outcome == Outcome::kUnknown || (child.outcome == Outcome::kSolutions && !solved)) return;
    isOver_ = true;
    outcome_ = child.outcome;
    if (goal_ != Goal::kSatisfy) {
      for (Child &other : children_) readAllOf(other);
      if (report_.solutions() > 0) outcome_ = Outcome::kComplete;
    }
    tellStatistics(child.statistics);
  }

  // What has been written so far.
  void readAllOf(Child &child) {
    for (pollfd waiting = {child.pipe, POLLIN, 0}; child.pipe >= 0 && !child.ended && poll(&waiting, 1, 0) > 0;)
      readFrom(child);
  }

  // Those that have ended by themselves tell how.
  int stopChildren() {
    int result = 0;
    for (const Child &child : children_) {
      int status = 0;
      if (!child.ended) kill(child.pid, SIGKILL);
      waitpid(child.pid, &status, 0);
      if (WIFEXITED(status) && WEXITSTATUS(status) != 0) result = 1;
    }
    return result;
  }

  Goal goal_;
  const Options &options_;
  Report report_;
  SharedBound *const bound_;
  std::vector<Child> children_;
  long long best_ = 0;  // once there is a solution
  bool isOver_ = false;
  Outcome outcome_ = Outcome::kUnknown;
};

}  // namespace

bool isForPortfolio(const Syntax &syntax, const Options &options) {
  const bool several = syntax.solve.goal == Goal::kSatisfy && (options.all || options.solutions > 1);
  return options.processes > 1 && !several;
}

int runPortfolio(const Syntax &syntax, const Options &options, const std::function<int(const Options &)> &solve) {
  Portfolio portfolio(syntax, options);
  return portfolio.start(solve) ? portfolio.run() : solve(options);
}

}  // namespace koru::fzn
