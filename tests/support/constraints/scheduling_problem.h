// SPDX-License-Identifier: MIT
// Small scheduling problems, and what is feasible by the definition: at every instant the uses of the tasks that run
// add up to at most the capacity.
#pragma once

#include <functional>
#include <numeric>
#include <random>
#include <sstream>

#include "support/constraints/tasks.h"
#include "support/kit/small_domains.h"

namespace koru::test::scheduling {

struct TaskDomains {
  Interval start;
  Interval duration;
  Interval use;
};

struct Problem {
  std::vector<TaskDomains> tasks;
  Interval capacity;

  std::size_t positions() const { return tasks.size() * 3 + 1; }
  Interval at(std::size_t p) const {
    if (p / 3 == tasks.size()) return capacity;
    const TaskDomains &task = tasks[p / 3];
    return p % 3 == 0 ? task.start : p % 3 == 1 ? task.duration : task.use;
  }
};

inline std::ostream &operator<<(std::ostream &out, const Problem &problem) {
  for (const TaskDomains &t : problem.tasks)
    out << "start " << t.start << " for " << t.duration << " use " << t.use << "; ";
  return out << "capacity " << problem.capacity;
}

// The values in the order start, duration and use of each task, then the capacity.
inline bool feasible(const std::vector<int> &values) {
  const int capacity = values.back();
  for (std::size_t i = 0; i + 1 < values.size(); i += 3) {
    int height = 0;  // when task i begins: nothing else can make the profile higher
    for (std::size_t j = 0; j + 1 < values.size(); j += 3)
      if (values[j] <= values[i] && values[i] < values[j] + values[j + 1]) height += values[j + 2];
    if (height > capacity) return false;
  }
  return true;
}

using Post = std::function<bool(CSint **starts, CSint **durations, CSint **uses, int n, CSint *capacity)>;

inline bool postDisjunctive(CSint **starts, CSint **durations, CSint **, int n, CSint *) {
  return cs_Disjunctive(starts, durations, n);
}

// A problem posted in the running solver. Its arrays must outlive the context it is posted in.
class Posted {
 public:
  Posted(const Problem &problem, const Post &post) {
    for (const TaskDomains &t : problem.tasks) {
      starts_.push_back(make(t.start));
      durations_.push_back(make(t.duration));
      uses_.push_back(make(t.use));
      variables.insert(variables.end(), {starts_.back(), durations_.back(), uses_.back()});
    }
    variables.push_back(make(problem.capacity));
    const auto n = static_cast<int>(starts_.size());
    consistent = post(starts_.data(), durations_.data(), uses_.data(), n, variables.back());
  }

  // Binds the variables in the given order, in a context of its own.
  bool accepts(const std::vector<int> &values, const std::vector<std::size_t> &order) const {
    cs_saveContext();
    bool accepted = consistent;
    for (const std::size_t i : order) accepted = accepted && cs_EQ(variables[i], values[i]);
    cs_restoreContext();
    return accepted;
  }

  bool consistent;
  std::vector<CSint *> variables;

 private:
  std::vector<CSint *> starts_;
  std::vector<CSint *> durations_;
  std::vector<CSint *> uses_;
};

struct Tally {
  int problems = 0;
  int feasible = 0;  // schedules
  int refused = 0;   // of them, in some order of binding
  int problemsWithRefusals = 0;
  std::string first;
};

// Counts the feasible schedules and those that are refused when bound in array order or in its reverse; one that is
// not feasible and accepted is an error.
inline void tally(const Problem &problem, const Post &post, Tally &tally) {
  std::vector<std::vector<int>> domains;
  for (std::size_t p = 0; p < problem.positions(); ++p) domains.push_back(range(problem.at(p).min, problem.at(p).max));
  std::vector<std::size_t> order(domains.size());
  std::iota(order.begin(), order.end(), std::size_t{0});
  const std::vector<std::size_t> reversed(order.rbegin(), order.rend());
  cs_saveContext();
  const Posted posted(problem, post);
  int refused = 0;
  brute::forEachTuple(domains, [&](const brute::Tuple &values) {
    const bool both = posted.accepts(values, order) && posted.accepts(values, reversed);
    if (!feasible(values)) {
      EXPECT_FALSE(posted.accepts(values, order)) << problem << " accepts " << ::testing::PrintToString(values);
      EXPECT_FALSE(posted.accepts(values, reversed)) << problem << " accepts " << ::testing::PrintToString(values);
      return;
    }
    ++tally.feasible;
    if (both) return;
    if (refused++ > 0 || tally.refused > 0) return;
    std::ostringstream text;
    text << problem << " refuses " << ::testing::PrintToString(values);
    tally.first = text.str();
  });
  cs_restoreContext();
  ++tally.problems;
  tally.refused += refused;
  tally.problemsWithRefusals += refused > 0 ? 1 : 0;
}

// Restarts the solver now and then, for variables are only freed with it.
template <class Make>
Tally tallyMany(int count, const Post &post, Make make) {
  Tally result;
  for (int i = 0; i < count && !::testing::Test::HasFailure(); ++i) {
    if (i % 10 == 0) {
      cs_end();
      cs_init();
    }
    tally(make(), post, result);
  }
  return result;
}

class Generator {
 public:
  explicit Generator(unsigned seed) : random_(seed) {}

  int number(int low, int high) { return std::uniform_int_distribution<int>(low, high)(random_); }

  // An interval within [low, high] of at most `width` values.
  Interval interval(int low, int high, int width) {
    const int min = number(low, high);
    return {min, std::min(high, min + number(0, width - 1))};
  }

 private:
  std::mt19937 random_;
};

}  // namespace koru::test::scheduling
