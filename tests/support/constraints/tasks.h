// SPDX-License-Identifier: MIT
// The fixture of the scheduling tests: tasks made from intervals, kept until the solver ends.
#pragma once

#include <utility>
#include <vector>

#include "support/kit/probe.h"

namespace koru::test {

struct Interval {
  int min;
  int max;
  bool operator==(const Interval &) const = default;
};

inline std::ostream &operator<<(std::ostream &out, const Interval &i) { return out << i.min << ".." << i.max; }

inline Interval boundsOf(CSint *v) { return {cs_getMin(v), cs_getMax(v)}; }
inline Interval exactly(int value) { return {value, value}; }
inline CSint *make(const Interval &i) { return cs_createCSint(i.min, i.max); }

class SchedulingTest : public SolverTest {
 protected:
  void TearDown() override {
    SolverTest::TearDown();
    starts.clear();
    durations.clear();
    uses.clear();
  }

  void add(Interval start, Interval duration, Interval use = {1, 1}) {
    starts.push_back(make(start));
    durations.push_back(make(duration));
    uses.push_back(make(use));
  }
  void add(Interval start, int duration, int use = 1) { add(start, exactly(duration), exactly(use)); }

  int n() const { return static_cast<int>(starts.size()); }
  bool postCumulative(Interval limits) {
    capacity = make(limits);
    return postCumulative();
  }
  bool postCumulative() { return cs_Cumulative(starts.data(), durations.data(), uses.data(), n(), capacity); }
  bool postDisjunctive() { return cs_Disjunctive(starts.data(), durations.data(), n()); }

  std::vector<CSint *> starts;
  std::vector<CSint *> durations;
  std::vector<CSint *> uses;
  CSint *capacity = nullptr;
};

}  // namespace koru::test
