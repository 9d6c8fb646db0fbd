// SPDX-License-Identifier: MIT
// Up to three tasks on a resource: with so few, no feasible schedule is refused; semantic/cumulative_test.cc has more.
#include "semantic/cases.h"
#include "support/constraints/scheduling_problem.h"

namespace koru::test::brute {
namespace {

// The columns are start, duration and use of each task, and the capacity.
struct Tasks {
  std::vector<CSint *> starts;
  std::vector<CSint *> durations;
  std::vector<CSint *> uses;
};

Constraint cumulative(int n) {
  const auto tasks = std::make_shared<Tasks>();
  return relation(
      "cs_Cumulative of " + std::to_string(n), 3 * n + 1,
      [](Values t) {
        return scheduling::feasible({t.begin(), t.end()});
      },
      [tasks, n](CSint **x) {
        *tasks = {};
        for (int i = 0; i < n; ++i) {
          tasks->starts.push_back(x[3 * i]);
          tasks->durations.push_back(x[3 * i + 1]);
          tasks->uses.push_back(x[3 * i + 2]);
        }
        return cs_Cumulative(tasks->starts.data(), tasks->durations.data(), tasks->uses.data(), n, x[3 * n]);
      });
}

// The starts, then the durations.
bool apart(Values t) {
  const std::size_t n = t.size() / 2;
  for (std::size_t i = 0; i < n; ++i)
    for (std::size_t j = 0; j < i; ++j) {
      const bool both = t[n + i] > 0 && t[n + j] > 0;
      if (both && Wide{t[i]} < Wide{t[j]} + t[n + j] && Wide{t[j]} < Wide{t[i]} + t[n + i]) return false;
    }
  return true;
}

Constraint disjunctive(int n) {
  return relation("cs_Disjunctive of " + std::to_string(n), 2 * n, apart,
                  [n](CSint **x) { return cs_Disjunctive(x, x + n, n); });
}

}  // namespace

Cases schedulingCases() {
  const Effort lean{1, 2, 2};
  // A variable that is the capacity is no use as well: that may abort.
  Case one{"CumulativeOfOneTask", {"cs_Cumulative"}, {cumulative(1)}, {{0, 4}, {0, 3}, {0, 3}, {0, 4}}, 600};
  one.patterns = {{0, 1, 2, 3}, {0, 0, 1, 2}, {0, 1, 0, 2}, {0, 1, 1, 2}, {0, 0, 0, 1}, {0, 1, 2, 0}, {0, 1, 2, 1}};
  Case two{"Cumulative", {"cs_Cumulative"}, {cumulative(2)}, {{0, 3}, {0, 3}, {0, 3}}, 60, lean};
  two.patterns = {{0, 1, 2, 3, 4, 5, 6}, {0, 1, 2, 0, 3, 4, 5}, {0, 1, 2, 3, 1, 4, 5}, {0, 1, 2, 3, 4, 2, 5},
                  {0, 1, 2, 0, 1, 2, 3}, {0, 1, 1, 2, 3, 4, 5}, {0, 1, 2, 3, 0, 4, 5}, {0, 1, 2, 3, 4, 3, 5}};
  Case three{"CumulativeOfThreeTasks",
             {"cs_Cumulative"},
             {cumulative(3)},
             {{0, 3}, {1, 2}, {1, 1}, {0, 3}, {1, 2}, {1, 1}, {0, 3}, {2, 1}, {1, 2}, {1, 2}},
             400,
             lean};
  three.patterns = {{0, 1, 2, 3, 4, 5, 6, 7, 8, 9}, {0, 1, 2, 3, 1, 4, 5, 6, 7, 8}, {0, 1, 2, 3, 4, 2, 5, 6, 7, 8}};
  Case pair{"DisjunctiveOfTwoTasks", {"cs_Disjunctive"}, {disjunctive(1), disjunctive(2)}, {{0, 4}}, 60};
  Case more{"Disjunctive", {"cs_Disjunctive"}, {disjunctive(3)}, {{0, 5}, {0, 4}, {0, 4}, {1, 2}}, 500, lean};
  more.patterns = {{0, 1, 2, 3, 4, 5}, {0, 1, 2, 3, 3, 3}, {0, 1, 2, 3, 4, 3}};
  return {one, two, three, pair, more};
}

}  // namespace koru::test::brute
