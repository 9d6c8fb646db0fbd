// SPDX-License-Identifier: MIT
// What the Gecode programs share: a space with one array of variables, branching, and searches that count.
#pragma once

#include <gecode/int.hh>
#include <gecode/search.hh>

#include "gecode.h"

namespace koru::bench {

using Gecode::IntArgs;
using Gecode::IntVarArgs;
using Gecode::IntVarArray;

// A problem whose solutions are those of `vars`.
class Problem : public Gecode::Space {
 public:
  IntVarArray vars;

  Problem(int size, int min, int max) : vars(*this, size, min, max) {}
  Problem(Problem &other) : Gecode::Space(other) { vars.update(*this, other.vars); }
  Gecode::Space *copy() override { return new Problem(*this); }

  void smallestFirst(const IntVarArgs &x) {
    Gecode::branch(*this, x, Gecode::INT_VAR_SIZE_MIN(), Gecode::INT_VALUES_MIN());
  }
  void inOrder(const IntVarArgs &x) { Gecode::branch(*this, x, Gecode::INT_VAR_NONE(), Gecode::INT_VALUES_MIN()); }
  void distinct(const IntVarArgs &x, Gecode::IntPropLevel level = Gecode::IPL_VAL) {
    Gecode::distinct(*this, x, level);
  }
  void distinct(const IntArgs &offsets, const IntVarArgs &x) { Gecode::distinct(*this, offsets, x, Gecode::IPL_VAL); }
};

inline constexpr long long kAllSolutions = -1;

// The engine takes the problem over.
inline Gecode::Search::Options optionsFor(const Recomputation &recomputation) {
  Gecode::Search::Options options;
  options.threads = 1;
  options.clone = false;
  options.c_d = recomputation.commitDistance;
  options.a_d = recomputation.adaptiveDistance;
  return options;
}

inline void addStatistics(Outcome &outcome, const Gecode::Search::Statistics &statistics, long long roots) {
  outcome.units += static_cast<long long>(statistics.node);
  outcome.choicePoints += static_cast<long long>(statistics.node) - roots;
  outcome.fails += static_cast<long long>(statistics.fail);
}

inline void search(Outcome &outcome, Problem *problem, const Recomputation &recomputation, long long solutions) {
  Gecode::DFS<Problem> engine(problem, optionsFor(recomputation));
  while (solutions-- != 0) {
    Problem *solution = engine.next();
    if (solution == nullptr) break;
    ++outcome.solutions;
    delete solution;
  }
  addStatistics(outcome, engine.statistics(), 1);
}

// A problem whose cost is to be as low as can be.
class CostProblem : public Problem {
 public:
  CostProblem(int size, int min, int max, int costMax) : Problem(size, min, max), cost(*this, 0, costMax) {}
  CostProblem(CostProblem &other) : Problem(other) { cost.update(*this, other.cost); }
  Gecode::Space *copy() override { return new CostProblem(*this); }

  Gecode::IntVar cost;
};

// Restart form, as in Koru: every improvement is a new search from the root.
template <class Make>
Outcome minimizeByRestarts(Make make, const Recomputation &recomputation) {
  Outcome outcome;
  int bound = -1;
  for (bool improved = true; improved;) {
    CostProblem *problem = make();
    if (bound >= 0) Gecode::rel(*problem, problem->cost, Gecode::IRT_LE, bound);
    Gecode::DFS<CostProblem> engine(problem, optionsFor(recomputation));
    CostProblem *solution = engine.next();
    improved = solution != nullptr;
    if (improved) bound = solution->cost.val();
    outcome.solutions += improved;
    addStatistics(outcome, engine.statistics(), 1);
    delete solution;
  }
  return outcome;
}

}  // namespace koru::bench
