// SPDX-License-Identifier: MIT
// A point of the memory campaign: one scenario, with stacks filled in one way, and its k-th allocation failing, alone
// or with all that follow. What is wrong with it comes back as text, with how to run just that point.
#pragma once

#include <optional>
#include <string>

#include "core/check.h"
#include "memory/filling.h"
#include "support/kit/failing_allocations.h"
#include "support/memory/scenario.h"

namespace koru::test {

struct Point {
  Filling filling;
  int k;
  Failing how;

  std::string text() const {
    return filling.text() + " " + std::to_string(k) + (how == Failing::kOnce ? " once" : " for-ever");
  }
};

inline std::string replayOf(const Scenario &scenario, const Point &point) {
  return "KORU_MEMORY_POINT='" + scenario.name + " " + point.text() + "' test_memory --gtest_filter='*Campaign.*'";
}

// What undoing brings back of a variable: its domain and the constraints on it. Intervals may be the whole int range.
inline void describe(CSint &v, std::string &text) {
  text += std::to_string(v.min) + ".." + std::to_string(v.max) + " " + std::to_string(v.count);
  if (hasHoles(&v) && v.bits != nullptr)
    for (const int value : values(&v)) text += " " + std::to_string(value);
  for (const Entry *entry = v.constraints; entry != nullptr; entry = entry->next)
    text += std::string(" ") + entry->constraint->site->name() + "@" + std::to_string(entry->index);
  text += '\n';
}

// The variables of the stack from position `first` up to but not including `last`.
inline std::string describeVariables(int first, int last) {
  std::string text;
  int at = 0;
  solver::variables.forEach([&](CSint &v) {
    if (at >= first && at < last) describe(v, text);
    ++at;
  });
  return text;
}

// What a run came to: two runs that differ in nothing but memory have the same.
struct Outcome {
  bool result = false;
  std::string state;
  bool operator==(const Outcome &) const = default;
};

// A solver with a stage, a context open, and stacks filled, for one run of a scenario and perhaps a second one.
class Trial {
 public:
  Trial(const Scenario &scenario, const Filling &filling) : scenario_(scenario), blocksBefore_(blocksAlive) {
    cs_init();
    cs_setErrHandler(
        CS_ERR_MEMORY, [](CSint *, void *count) { ++*static_cast<int *>(count); }, &reports_);
    // The checker's walk over a thousand variables after each propagation would dominate.
    solver::checked.period = solver::checked.untilNext = 64;
    stage_.emplace();
    if (scenario.prepare) scenario.prepare(*stage_);
    stageSize_ = solver::variables.count();
    stageState_ = describeVariables(0, stageSize_);
    cs_saveContext();
    fillStacks(filling);
    contexts_ = solver::contexts.count();
    for (std::size_t stack = 0; stack < kStacks; ++stack) blocks_[stack] = blocksOf(static_cast<Stack>(stack));
    cs_initErr();
  }
  Trial(const Trial &) = delete;
  Trial &operator=(const Trial &) = delete;
  ~Trial() { end(); }

  Outcome run() {
    const int first = solver::variables.count();
    stage_->seen.clear();
    Outcome outcome;
    outcome.result = scenario_.run(*stage_);
    outcome.state = describeVariables(0, stageSize_) + describeVariables(first, solver::variables.count());
    outcome.state += stage_->seen;
    return outcome;
  }

  // Takes everything back, as a host would that has heard of exhausted memory.
  void takeBack() {
    cs_restoreAll();
    cs_saveContext();
    cs_initErr();
    reports_ = 0;
  }

  int reports() const { return reports_; }
  bool contextsOpen() const { return solver::contexts.count() >= contexts_; }
  bool asAFailureLeavesIt() { return !scenario_.afterFailure || scenario_.afterFailure(*stage_); }
  bool asStaged() const { return describeVariables(0, stageSize_) == stageState_; }
  bool grew(Stack stack) const { return blocksOf(stack) > blocks_[stack]; }

  // How many blocks of memory are left when the solver has ended.
  long end() {
    cs_end();
    stage_.reset();
    solver::checked.period = solver::checked.untilNext = 1;
    return blocksAlive - blocksBefore_;
  }

  static void checkInvariants() {
    solver::checked.untilNext = 1;
    check::invariantsWhenIdle();
  }

 private:
  const Scenario &scenario_;
  long blocksBefore_;
  int reports_ = 0;
  std::optional<Stage> stage_;
  int stageSize_ = 0;
  std::string stageState_;
  int contexts_ = 0;
  std::array<int, kStacks> blocks_{};
};

// Collects what is wrong, a line each.
class Complaints {
 public:
  void unless(bool holds, const std::string &what) {
    if (!holds) text_ += "  " + what + "\n";
  }
  const std::string &text() const { return text_; }

 private:
  std::string text_;
};

// The run in which the allocation fails: how often, and what must then hold.
inline void complainOfFailedRun(const Scenario &scenario, const Point &point, Trial &trial, Complaints &complaints) {
  Outcome outcome;
  {
    const FailingAllocator failing(point.k, point.how);
    outcome = trial.run();
  }
  const int failures = FailingAllocator::failures();
  complaints.unless(failures > 0, "the allocation does not exist");
  complaints.unless(trial.reports() == failures, "the memory handler was called " + std::to_string(trial.reports()) +
                                                     " times for " + std::to_string(failures) + " failed requests");
  complaints.unless(cs_getErr() == CS_ERR_MEMORY, "the error code is " + std::to_string(cs_getErr()));
  if (scenario.failsAtOnce) {
    complaints.unless(failures == 1, "the call went on to " + std::to_string(failures) + " failed requests");
    complaints.unless(!outcome.result, "the call succeeded without the memory");
  }
  complaints.unless(solver::events.empty() && solver::queue.depth == 0, "propagation has not ended");
  complaints.unless(trial.asAFailureLeavesIt(), "the failure has left something behind");
  complaints.unless(trial.contextsOpen(), "contexts of the caller were closed");
  Trial::checkInvariants();
}

// What is wrong with the point; nothing when the text is empty. `expected` is what the scenario comes to with memory.
inline std::string tryPoint(const Scenario &scenario, const Point &point, const Outcome &expected) {
  Complaints complaints;
  Trial trial(scenario, point.filling);
  complainOfFailedRun(scenario, point, trial, complaints);
  trial.takeBack();
  complaints.unless(trial.asStaged(), "a restore does not bring the domains back");
  const Outcome again = trial.run();
  complaints.unless(again.result == expected.result, "the same call does not succeed afterwards");
  complaints.unless(again.state == expected.state,
                    "with memory it comes to\n" + again.state + "  instead of\n" + expected.state);
  complaints.unless(cs_getErr() == CS_ERR_NONE && trial.reports() == 0, "there are reports with memory, too");
  Trial::checkInvariants();
  const long left = trial.end();
  complaints.unless(left == 0, std::to_string(left) + " blocks leak");
  if (complaints.text().empty()) return {};
  return scenario.name + ", " + point.text() + "; run it with " + replayOf(scenario, point) + "\n" + complaints.text();
}

}  // namespace koru::test
