// SPDX-License-Identifier: MIT
// Up to three tasks on a resource: with so few, no feasible schedule is refused; semantic/cumulative_test.cc has more.
#include "semantic/cases.h"

namespace koru::test::brute {
namespace {

// The columns are start, duration and use of each task, and the capacity; the call has an array of each.
template <class T>
std::vector<T> byArray(const T *columns, int n) {
  std::vector<T> result;
  for (int field = 0; field < 3; ++field)
    for (int i = 0; i < n; ++i) result.push_back(columns[3 * i + field]);
  result.push_back(columns[3 * n]);
  return result;
}

Constraint cumulative(int n) {
  const auto handedOver = std::make_shared<std::vector<CSint *>>();
  Constraint c = stated("cs_Cumulative", {n});
  c.solution = [n, inOrder = c.solution](Values t) { return inOrder(byArray(t.data(), n)); };
  c.post = [=, inOrder = c.post](CSint **x, CSint *&result) {
    *handedOver = byArray(x, n);
    return inOrder(handedOver->data(), result);
  };
  return c;
}

Constraint disjunctive(int n) { return stated("cs_Disjunctive", {n}); }

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
