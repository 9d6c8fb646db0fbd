// SPDX-License-Identifier: MIT
// Benchmark problems of differences between all pairs or neighbours, as programs for Koru.
#pragma once

#include <cstddef>

#include "run.h"

namespace koru::bench {

inline bool inOrder(const Array &x) {
  for (std::size_t i = 1; i < x.size(); ++i)
    if (!cs_Lt(x[i - 1], x[i])) return false;
  return true;
}

// ----- Golomb rulers: the shortest on which no distance between two marks occurs twice

template <int n, auto different = allNeq>
Outcome golomb() {
  Lifetime lifetime;
  Outcome outcome;
  Array &marks = lifetime.array(n, 0, n * n);
  Array &distances = lifetime.array();
  bool posted = cs_EQ(marks[0], 0);
  for (std::size_t i = 0; i < marks.size(); ++i)
    for (std::size_t j = i + 1; j < marks.size(); ++j) {
      distances.push_back(cs_Sub(marks[j], marks[i]));
      posted = posted && cs_GE(distances.back(), 1);
    }
  posted = posted && different(distances) && inOrder(marks) && cs_Lt(distances.front(), distances.back());
  if (posted) minimize(outcome, marks, cs_findFreeVar, marks.back());
  return outcome;
}

// ----- all-interval series: neighbours in a permutation differ by each number once

template <int n>
Outcome allInterval() {
  Lifetime lifetime;
  Outcome outcome;
  Array &x = lifetime.array(n, 0, n - 1);
  Array &intervals = lifetime.array();
  bool posted = true;
  for (std::size_t i = 1; i < x.size(); ++i) {
    intervals.push_back(cs_Abs(cs_Sub(x[i], x[i - 1])));
    posted = posted && cs_GE(intervals.back(), 1);
  }
  posted = posted && allNeq(x) && allNeq(intervals) && cs_Lt(x[0], x[1]) && cs_Lt(intervals.back(), intervals.front());
  if (posted) findAll(outcome, x, cs_findFreeVarNbElements);
  return outcome;
}

}  // namespace koru::bench
