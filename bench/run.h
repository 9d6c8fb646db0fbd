// SPDX-License-Identifier: MIT
// What the benchmark programs for Koru share: a solver's lifetime, searches, and what a run did.
#pragma once

#include <cstddef>
#include <ctime>
#include <deque>
#include <vector>

#include "koru.h"

namespace koru::bench {

// What a run did, for comparing trees and for the cost of one unit of work.
struct Outcome {
  long long units = 0;  // nodes of a search (choice points + roots), events or constraints; 0 when a post failed
  long long choicePoints = 0;
  long long fails = 0;
  long long solutions = 0;
  double seconds = kAll;  // of the part of the run that is meant

  static constexpr double kAll = -1;
};

using Array = std::vector<CSint *>;

inline double cpuSeconds() {
  timespec now{};
  clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &now);
  return static_cast<double>(now.tv_sec) + static_cast<double>(now.tv_nsec) * 1e-9;
}

// The part of all runs so far that was spent in cs_end.
inline double secondsInEnd = 0;

// A running solver, and the arrays that its constraints keep.
class Lifetime {
 public:
  Lifetime() { cs_init(); }
  Lifetime(const Lifetime &) = delete;
  Lifetime &operator=(const Lifetime &) = delete;
  ~Lifetime() {
    const double start = cpuSeconds();
    cs_end();
    secondsInEnd += cpuSeconds() - start;
  }

  Array &array() { return arrays_.emplace_back(); }
  Array &array(int size, int min, int max) {
    Array &result = array();
    result.reserve(static_cast<std::size_t>(size));
    while (static_cast<int>(result.size()) < size) result.push_back(cs_createCSint(min, max));
    return result;
  }

 private:
  std::deque<Array> arrays_;  // growing it moves no array
};

inline bool allNeq(Array &x) { return cs_AllNeq(x.data(), static_cast<int>(x.size())) != 0; }

inline long long solutionsFound = 0;
inline void countSolution(CSint **, int) { ++solutionsFound; }

inline void addSearch(Outcome &outcome) {
  outcome.choicePoints += cs_getNbChoicePoints();
  outcome.fails += cs_getNbFails();
  outcome.solutions += solutionsFound;
  outcome.units += cs_getNbChoicePoints() + 1;
}

inline void findAll(Outcome &outcome, Array &x, CSfindFreeVar select) {
  solutionsFound = 0;
  cs_findAll(x.data(), static_cast<int>(x.size()), select, countSolution);
  addSearch(outcome);
}

inline void findFirst(Outcome &outcome, Array &x, CSfindFreeVar select) {
  solutionsFound = cs_search(x.data(), static_cast<int>(x.size()), select) ? 1 : 0;
  addSearch(outcome);
}

inline void countImprovement(CSint **, int, CSint *) { ++solutionsFound; }

// One root for the first pass, one for each improvement.
inline void minimize(Outcome &outcome, Array &x, CSfindFreeVar select, CSint *cost) {
  solutionsFound = 0;
  cs_minimize(x.data(), static_cast<int>(x.size()), select, cost, countImprovement);
  addSearch(outcome);
  outcome.units += solutionsFound;
}

struct Model {
  const char *name;
  const char *unit;
  Outcome (*run)();
};

}  // namespace koru::bench
