// SPDX-License-Identifier: MIT
// The benchmark problems as a Gecode user writes them: value-consistent distinct, where nothing else is said, with
// offset views where Koru needs shifted variables, n-ary branching on ascending values, no restarts.
#include <gecode/minimodel.hh>

#include <memory>

#include "gecode_problem.h"
#include "models_strong.h"

namespace koru::bench {

namespace {

Problem *makeQueens(int n) {
  auto *problem = new Problem(n, 0, n - 1);
  problem->distinct(problem->vars);
  problem->distinct(IntArgs::create(n, 0, 1), problem->vars);
  problem->distinct(IntArgs::create(n, 0, -1), problem->vars);
  problem->smallestFirst(problem->vars);
  return problem;
}

template <int n, long long solutions>
Outcome queens(const Recomputation &recomputation) {
  Outcome outcome;
  search(outcome, makeQueens(n), recomputation, solutions);
  return outcome;
}

// x[j] + k != x[i] and x[j] - k != x[i] as binary linear disequalities.
template <int n>
Outcome queensNeq(const Recomputation &recomputation) {
  auto *problem = new Problem(n, 0, n - 1);
  const IntVarArray &x = problem->vars;
  for (int j = 1; j < n; ++j)
    for (int i = 0; i < j; ++i) {
      Gecode::rel(*problem, x[i], Gecode::IRT_NQ, x[j]);
      for (const int distance : {j - i, i - j})
        Gecode::linear(*problem, IntArgs({1, -1}), IntVarArgs() << x[i] << x[j], Gecode::IRT_NQ, distance);
    }
  problem->smallestFirst(problem->vars);
  Outcome outcome;
  search(outcome, problem, recomputation, kAllSolutions);
  return outcome;
}

template <int n>
Outcome pigeon(const Recomputation &recomputation) {
  auto *problem = new Problem(n, 0, n - 2);
  const IntVarArray &x = problem->vars;
  for (int i = 0; i < n; ++i)
    for (int j = i + 1; j < n; ++j) Gecode::rel(*problem, x[i], Gecode::IRT_NQ, x[j]);
  problem->inOrder(problem->vars);
  Outcome outcome;
  search(outcome, problem, recomputation, kAllSolutions);
  return outcome;
}

template <Gecode::IntPropLevel level, class Belongs>
void distinctWhere(Problem &problem, int order, Belongs belongs) {
  IntVarArgs group;
  for (int i = 0; i < order * order; ++i)
    if (belongs(i / order, i % order)) group << problem.vars[i];
  problem.distinct(group, level);
}

template <Gecode::IntPropLevel level>
Problem *makeGrid(const Grid &grid) {
  const int n = grid.order;
  const int b = grid.block;
  auto *problem = new Problem(n * n, 1, n);
  for (int k = 0; k < n; ++k) distinctWhere<level>(*problem, n, [k](int row, int) { return row == k; });
  for (int k = 0; k < n; ++k) distinctWhere<level>(*problem, n, [k](int, int column) { return column == k; });
  for (int k = 0; b > 0 && k < n; ++k)
    distinctWhere<level>(*problem, n, [k, b](int r, int c) { return r / b == k / b && c / b == k % b; });
  for (int i = 0; i < n * n; ++i) {
    const int clue = grid.cells[static_cast<std::size_t>(i)];
    if (clue != 0) Gecode::rel(*problem, problem->vars[i], Gecode::IRT_EQ, clue);
  }
  problem->smallestFirst(problem->vars);
  return problem;
}

template <Gecode::IntPropLevel level>
Outcome completeGrids(const std::vector<Grid> &grids, long long solutions, const Recomputation &recomputation) {
  Outcome outcome;
  for (const Grid &grid : grids) search(outcome, makeGrid<level>(grid), recomputation, solutions);
  return outcome;
}

template <auto grids, long long solutions, Gecode::IntPropLevel level = Gecode::IPL_VAL>
Outcome completeGrids(const Recomputation &recomputation) {
  return completeGrids<level>(instances().*grids, solutions, recomputation);
}

template <const std::vector<Grid> &(*grids)()>
Outcome largeSquares(const Recomputation &recomputation) {
  return completeGrids<Gecode::IPL_DOM>(grids(), 1, recomputation);
}

// Domain consistency in the shifts: holes pass there in Koru as well.
template <int k, int n>
Outcome langford(const Recomputation &recomputation) {
  auto *problem = new Problem(k * n, 0, k * n - 1);
  const IntVarArray &p = problem->vars;
  for (int i = 0; i < n * (k - 1); ++i)
    Gecode::linear(*problem, IntArgs({1, -1}), IntVarArgs() << p[i + n] << p[i], Gecode::IRT_EQ, i % n + 2,
                   Gecode::IPL_DOM);
  problem->distinct(problem->vars);
  IntVarArgs firstCopies;
  for (int v = n - 1; v >= 0; --v) firstCopies << p[v];
  problem->inOrder(firstCopies);
  Outcome outcome;
  search(outcome, problem, recomputation, kAllSolutions);
  return outcome;
}

template <int n, int slack>
Outcome chain(const Recomputation &) {
  Problem problem(n, 0, n + slack);
  Outcome outcome;
  const IntVarArray &x = problem.vars;
  for (int i = 0; i < n; ++i) Gecode::dom(problem, x[i], i, i + slack);
  for (int i = 1; i < n; ++i) Gecode::rel(problem, x[i - 1], Gecode::IRT_LE, x[i]);
  if (problem.status() == Gecode::SS_FAILED) return outcome;
  for (int q = 1; q <= slack; ++q) {
    Gecode::rel(problem, x[0], Gecode::IRT_GQ, q);
    if (problem.status() == Gecode::SS_FAILED) return outcome;
  }
  outcome.units = x[n - 1].min() == n - 1 + slack ? static_cast<long long>(n) * slack : 0;
  return outcome;
}

template <int n, int steps>
Outcome ladder(const Recomputation &) {
  Problem problem(n + 1, 0, steps + n);
  Outcome outcome;
  const IntVarArray &s = problem.vars;
  Gecode::dom(problem, s[0], 0, steps);
  for (int i = 0; i < n; ++i) Gecode::rel(problem, s[i] + Gecode::IntVar(problem, 0, 1) == s[i + 1]);
  if (problem.status() == Gecode::SS_FAILED) return outcome;
  for (int q = 1; q <= steps; ++q) {
    Gecode::rel(problem, s[0], Gecode::IRT_GQ, q);
    if (problem.status() == Gecode::SS_FAILED) return outcome;
  }
  outcome.units = s[n].min() == steps ? static_cast<long long>(n) * steps : 0;
  return outcome;
}

Outcome postPairs(const Recomputation &) {
  Problem problem(kPairVariables, 0, 9);
  Outcome outcome;
  for (const auto &[first, second] : instances().pairs) {
    Gecode::rel(problem, problem.vars[first], Gecode::IRT_NQ, problem.vars[second]);
    ++outcome.units;
  }
  return problem.status() != Gecode::SS_FAILED ? outcome : Outcome{};
}

template <int n>
Outcome endVariables(const Recomputation &) {
  auto problem = std::make_unique<Problem>(n, 0, 9);
  Outcome outcome;
  outcome.units = problem->vars.size();
  const double start = cpuSeconds();
  problem.reset();
  outcome.seconds = cpuSeconds() - start;
  return outcome;
}

const PeerModel kPeers[] = {
    {"queens_all 12", queens<12, kAllSolutions>},
    {"queens_first 200", queens<200, 1>},
    {"queens_neq 11", queensNeq<11>},
    {"pigeon 10", pigeon<10>},
    {"sudoku 9x9", completeGrids<&Instances::sudoku9, kAllSolutions>},
    {"sudoku 16x16", completeGrids<&Instances::sudoku16, 1>},
    {"qwh 20/150", completeGrids<&Instances::qwh, 1>},
    {"sudoku strong", completeGrids<&Instances::sudoku16, 1, Gecode::IPL_DOM>},
    {"qwh strong", largeSquares<squares30>},
    {"qwh 30/360", largeSquares<mixedSquares<30, 360>>},
    {"qwh 33/450", largeSquares<mixedSquares<33, 450>>},
    {"langford 2,10", langford<2, 10>},
    {"langford 3,11", langford<3, 11>},
    {"chain 10^4 x 200", chain<10000, 200>},
    {"chain 10^6 x 5", chain<1000000, 5>},
    {"ladder 10^4 x 200", ladder<10000, 200>},
    {"ladder 10^6 x 5", ladder<1000000, 5>},
    {"post 10^6", postPairs},
    {"end 10^6", endVariables<1000000>},
};

}  // namespace

std::span<const PeerModel> relationPeers() { return kPeers; }

}  // namespace koru::bench
