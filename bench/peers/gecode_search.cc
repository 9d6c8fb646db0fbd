// SPDX-License-Identifier: MIT
// Rulers and series as a Gecode user writes them: bounds-consistent differences, value-consistent distinct.
#include <gecode/minimodel.hh>

#include "gecode_problem.h"

namespace koru::bench {

namespace {

template <int n, Gecode::IntPropLevel level>
CostProblem *makeGolomb() {
  auto *problem = new CostProblem(n, 0, n * n, n * n);
  const IntVarArray &marks = problem->vars;
  IntVarArgs distances;
  Gecode::rel(*problem, marks[0], Gecode::IRT_EQ, 0);
  for (int i = 0; i < n; ++i)
    for (int j = i + 1; j < n; ++j) {
      distances << Gecode::IntVar(*problem, 1, n * n);
      Gecode::linear(*problem, IntArgs({1, -1}), IntVarArgs() << marks[j] << marks[i], Gecode::IRT_EQ,
                     distances[distances.size() - 1]);
    }
  problem->distinct(distances, level);
  Gecode::rel(*problem, marks, Gecode::IRT_LE);
  Gecode::rel(*problem, distances[0], Gecode::IRT_LE, distances[distances.size() - 1]);
  Gecode::rel(*problem, problem->cost, Gecode::IRT_EQ, marks[n - 1]);
  problem->inOrder(marks);
  return problem;
}

template <int n, Gecode::IntPropLevel level = Gecode::IPL_VAL>
Outcome golomb(const Recomputation &recomputation) {
  return minimizeByRestarts(makeGolomb<n, level>, recomputation);
}

template <int n>
Outcome allInterval(const Recomputation &recomputation) {
  auto *problem = new Problem(n, 0, n - 1);
  const IntVarArray &x = problem->vars;
  IntVarArgs intervals;
  for (int i = 1; i < n; ++i) {
    intervals << Gecode::IntVar(*problem, 1, n - 1);
    Gecode::rel(*problem, Gecode::abs(x[i] - x[i - 1]) == intervals[i - 1]);
  }
  problem->distinct(x);
  problem->distinct(intervals);
  Gecode::rel(*problem, x[0], Gecode::IRT_LE, x[1]);
  Gecode::rel(*problem, intervals[n - 2], Gecode::IRT_LE, intervals[0]);
  problem->smallestFirst(x);
  Outcome outcome;
  search(outcome, problem, recomputation, kAllSolutions);
  return outcome;
}

const PeerModel kPeers[] = {
    {"golomb 9", golomb<9>},
    {"golomb 10", golomb<10>},
    {"golomb bounds", golomb<10, Gecode::IPL_BND>},
    {"golomb both", golomb<10, Gecode::IPL_BND>},
    {"all_interval 11", allInterval<11>},
    {"all_interval 12", allInterval<12>},
};

}  // namespace

std::span<const PeerModel> searchPeers() { return kPeers; }

}  // namespace koru::bench
