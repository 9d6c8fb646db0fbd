// SPDX-License-Identifier: MIT
// A workshop: jobs are operations in a row, each of which some machines can do, in different times. Which machine does
// which operation, and when, so that all is done as early as possible?
//
// Each way to do an operation is a task that may be left out; one of them is there. A machine does one task at a time,
// an operation ends before the next one of its job begins. A chart shows who is busy with which job.
#include <iostream>
#include <koru.hpp>
#include <string>
#include <vector>

namespace {

struct Way {
  std::size_t machine;
  int duration;
};

using Operation = std::vector<Way>;
using Job = std::vector<Operation>;

constexpr std::size_t kMachines = 3;
constexpr int kHorizon = 40;

const std::vector<Job> jobs = {
    {{{0, 3}, {1, 4}}, {{1, 5}, {2, 3}}, {{0, 4}}},
    {{{1, 2}}, {{0, 6}, {2, 5}}, {{1, 3}, {2, 4}}},
    {{{2, 4}, {0, 5}}, {{0, 2}, {1, 2}}, {{2, 6}, {1, 7}}},
    {{{0, 3}, {2, 2}}, {{1, 4}}, {{0, 5}, {2, 5}}, {{1, 1}}},
};

// What one machine may have to do.
struct Machine {
  std::vector<koru::IntVar> starts, durations, present;
  std::vector<std::size_t> jobOf;
};

class Workshop {
 public:
  Workshop() : end_(model_.var(0, kHorizon, "end")), machines_(kMachines) {
    for (std::size_t job = 0; job < jobs.size(); ++job) addJob(job);
    for (const Machine &machine : machines_)
      model_.post(koru::disjunctive(machine.starts, machine.durations, machine.present));
  }

  // First who does what, then when.
  koru::Result plan() {
    return model_.minimize(end_, {.vars = choices_,
                                  .order = koru::dom_wdeg,
                                  .value = koru::max_value,
                                  .then = {{.vars = starts_, .order = koru::smallest_min}, {.vars = {end_}}},
                                  .restart = koru::geometric(100, 50),
                                  .last_conflict = true,
                                  .guided = true});
  }

  void show(const koru::Result &plan) const {
    std::cout << plan.status << ": all done after " << plan.best[end_] << '\n';
    for (const Machine &machine : machines_) std::cout << "  " << chart(machine, plan.best) << '\n';
  }

 private:
  void addJob(std::size_t job) {
    koru::Linear earliest = 0;
    for (const Operation &operation : jobs[job]) {
      const koru::IntVar start = model_.var(0, kHorizon);
      model_.post(start >= earliest);
      starts_.push_back(start);
      earliest = start + addWays(job, operation, start);
    }
    model_.post(end_ >= earliest);
  }

  // One of the ways is gone. The sum is how long that takes.
  koru::Linear addWays(std::size_t job, const Operation &operation, koru::IntVar start) {
    koru::Linear chosen;
    koru::Linear duration;
    for (const Way &way : operation) {
      const koru::IntVar present = model_.boolean();
      Machine &machine = machines_[way.machine];
      machine.starts.push_back(start);
      machine.durations.push_back(model_.constant(way.duration));
      machine.present.push_back(present);
      machine.jobOf.push_back(job);
      choices_.push_back(present);
      chosen += present;
      duration += way.duration * present;
    }
    model_.post(chosen == 1);
    return duration;
  }

  std::string chart(const Machine &machine, const koru::Solution &plan) const {
    std::string line(static_cast<std::size_t>(plan[end_]), '.');
    for (std::size_t i = 0; i < machine.starts.size(); ++i) {
      if (plan[machine.present[i]] == 0) continue;
      const auto from = static_cast<std::size_t>(plan[machine.starts[i]]);
      const auto length = static_cast<std::size_t>(plan[machine.durations[i]]);
      line.replace(from, length, length, static_cast<char>('A' + machine.jobOf[i]));
    }
    return line;
  }

  koru::Model model_;
  koru::IntVar end_;
  std::vector<Machine> machines_;
  std::vector<koru::IntVar> choices_, starts_;
};

}  // namespace

int main() {
  Workshop workshop;
  const koru::Result plan = workshop.plan();
  if (!plan.best) return 1;
  workshop.show(plan);
}
