// SPDX-License-Identifier: MIT
// The benchmark problems as programs for Koru, from cs_init to cs_end, posting included.
#pragma once

#include <cstddef>
#include <vector>

#include "instances.h"
#include "models_arith.h"
#include "models_automata.h"
#include "models_counting.h"
#include "models_globals.h"
#include "models_scheduling.h"
#include "models_search.h"
#include "run.h"

namespace koru::bench {

// ----- queens

inline Array *postQueens(Lifetime &lifetime, int n) {
  Array &x = lifetime.array(n, 0, n - 1);
  Array &y = lifetime.array();
  Array &z = lifetime.array();
  for (int i = 0; i < n; ++i) {
    CSint *row = x[static_cast<std::size_t>(i)];
    y.push_back(cs_Add(row, CSINT(i)));
    z.push_back(cs_Sub(row, CSINT(i)));
  }
  return allNeq(x) && allNeq(y) && allNeq(z) ? &x : nullptr;
}

template <int n>
Outcome queensAll() {
  Lifetime lifetime;
  Outcome outcome;
  if (Array *x = postQueens(lifetime, n)) findAll(outcome, *x, cs_findFreeVarNbElements);
  return outcome;
}

template <int n>
Outcome queensFirst() {
  Lifetime lifetime;
  Outcome outcome;
  if (Array *x = postQueens(lifetime, n)) findFirst(outcome, *x, cs_findFreeVarNbElements);
  return outcome;
}

// x[j] + k and x[j] - k for every distance k between rows, each made once.
struct Shifted {
  Array up;
  Array down;
};

inline Shifted shift(CSint *v, int distances) {
  Shifted result;
  for (int k = 0; k < distances; ++k) {
    result.up.push_back(k == 0 ? v : cs_Add(v, CSINT(k)));
    result.down.push_back(k == 0 ? v : cs_Sub(v, CSINT(k)));
  }
  return result;
}

inline bool postQueensNeq(const Array &x) {
  for (std::size_t j = 1; j < x.size(); ++j) {
    const Shifted shifted = shift(x[j], static_cast<int>(j) + 1);
    for (std::size_t i = 0; i < j; ++i) {
      if (!cs_Neq(x[i], x[j]) || !cs_Neq(x[i], shifted.up[j - i]) || !cs_Neq(x[i], shifted.down[j - i])) return false;
    }
  }
  return true;
}

template <int n>
Outcome queensNeq() {
  Lifetime lifetime;
  Outcome outcome;
  Array &x = lifetime.array(n, 0, n - 1);
  if (postQueensNeq(x)) findAll(outcome, x, cs_findFreeVarNbElements);
  return outcome;
}

// ----- pigeons

inline bool neqPairs(const Array &x) {
  for (std::size_t i = 0; i < x.size(); ++i)
    for (std::size_t j = i + 1; j < x.size(); ++j)
      if (!cs_Neq(x[i], x[j])) return false;
  return true;
}

template <int n>
Outcome pigeon() {
  Lifetime lifetime;
  Outcome outcome;
  Array &x = lifetime.array(n, 0, n - 2);
  if (neqPairs(x)) findAll(outcome, x, cs_findFreeVar);
  return outcome;
}

// ----- grids

// The cells of one row, column or block, in row-major order of the grid.
template <class Belongs>
Array &cellsWhere(Lifetime &lifetime, const Array &cells, int order, Belongs belongs) {
  Array &group = lifetime.array();
  for (int i = 0; i < order * order; ++i)
    if (belongs(i / order, i % order)) group.push_back(cells[static_cast<std::size_t>(i)]);
  return group;
}

template <auto different = allNeq>
bool postGrid(Lifetime &lifetime, const Grid &grid, Array &cells) {
  const int n = grid.order;
  const int b = grid.block;
  for (int k = 0; k < n; ++k)
    if (!different(cellsWhere(lifetime, cells, n, [k](int row, int) { return row == k; }))) return false;
  for (int k = 0; k < n; ++k)
    if (!different(cellsWhere(lifetime, cells, n, [k](int, int column) { return column == k; }))) return false;
  for (int k = 0; b > 0 && k < n; ++k)
    if (!different(cellsWhere(lifetime, cells, n, [k, b](int r, int c) { return r / b == k / b && c / b == k % b; })))
      return false;
  for (std::size_t i = 0; i < cells.size(); ++i)
    if (grid.cells[i] != 0 && !cs_EQ(cells[i], grid.cells[i])) return false;
  return true;
}

template <auto search>
Outcome completeGrids(const std::vector<Grid> &grids) {
  Outcome outcome;
  for (const Grid &grid : grids) {
    Lifetime lifetime;
    Array &cells = lifetime.array(grid.order * grid.order, 1, grid.order);
    if (postGrid(lifetime, grid, cells)) search(outcome, cells, cs_findFreeVarNbElements);
  }
  return outcome;
}

inline Outcome sudoku9() { return completeGrids<findAll>(instances().sudoku9); }
inline Outcome sudoku16() { return completeGrids<findFirst>(instances().sudoku16); }
inline Outcome qwh() { return completeGrids<findFirst>(instances().qwh); }

// ----- Langford sequences: k copies of the numbers 1..n, v + 1 places between copies of v (counted from 0)

inline bool postLangford(Array &p, int k, int n) {
  for (int i = 0; i < n * (k - 1); ++i) {
    CSint *next = cs_Add(p[static_cast<std::size_t>(i)], CSINT(i % n + 2));
    if (!cs_LE(next, k * n - 1)) return false;
    p.push_back(next);
  }
  return allNeq(p);
}

template <int k, int n>
Outcome langford() {
  Lifetime lifetime;
  Outcome outcome;
  Array &p = lifetime.array(n, 0, k * n - 1);
  if (!postLangford(p, k, n)) return outcome;
  Array firstCopies(p.rend() - n, p.rend());
  findAll(outcome, firstCopies, cs_findFreeVar);
  return outcome;
}

// ----- propagation and posting alone

inline bool postChain(const Array &x) {
  for (std::size_t i = 1; i < x.size(); ++i)
    if (!cs_Lt(x[i - 1], x[i])) return false;
  return true;
}

// Variable i in i..i+slack, each less than the next; then the first is raised step by step and pushes all others.
template <int n, int slack>
Outcome chain() {
  Lifetime lifetime;
  Outcome outcome;
  Array &x = lifetime.array();
  for (int i = 0; i < n; ++i) x.push_back(cs_createCSint(i, i + slack));
  if (!postChain(x)) return outcome;
  for (int q = 1; q <= slack; ++q)
    if (!cs_GE(x[0], q)) return outcome;
  outcome.units = cs_getMin(x.back()) == n - 1 + slack ? static_cast<long long>(n) * slack : 0;
  return outcome;
}

// One sum after the other, each of the one before and a variable 0..1; then the first operand is raised step by step
// and pushes all sums.
template <int n, int steps>
Outcome ladder() {
  Lifetime lifetime;
  Outcome outcome;
  CSint *const first = cs_createCSint(0, steps);
  CSint *last = first;
  for (int i = 0; i < n && last != nullptr; ++i) last = cs_Add(last, cs_createCSint(0, 1));
  if (last == nullptr) return outcome;
  for (int q = 1; q <= steps; ++q)
    if (!cs_GE(first, q)) return outcome;
  outcome.units = cs_getMin(last) == steps ? static_cast<long long>(n) * steps : 0;
  return outcome;
}

inline Outcome postPairs(const Pairs &pairs) {
  Lifetime lifetime;
  Outcome outcome;
  const Array &x = lifetime.array(kPairVariables, 0, 9);
  for (const auto &[first, second] : pairs) {
    if (!cs_Neq(x[static_cast<std::size_t>(first)], x[static_cast<std::size_t>(second)])) return Outcome{};
    ++outcome.units;
  }
  return outcome;
}

inline Outcome postManyPairs() { return postPairs(instances().pairs); }

// What making them takes is not meant.
template <int n>
Outcome endVariables() {
  const double before = secondsInEnd;
  Outcome outcome;
  {
    Lifetime lifetime;
    outcome.units = static_cast<long long>(lifetime.array(n, 0, 9).size());
  }
  outcome.seconds = secondsInEnd - before;
  return outcome;
}

inline constexpr Model kModels[] = {
    {"queens_all 12", "node", queensAll<12>},
    {"queens_first 200", "node", queensFirst<200>},
    {"queens_neq 11", "node", queensNeq<11>},
    {"pigeon 10", "node", pigeon<10>},
    {"sudoku 9x9", "node", sudoku9},
    {"sudoku 16x16", "node", sudoku16},
    {"qwh 20/150", "node", qwh},
    {"langford 2,10", "node", langford<2, 10>},
    {"langford 3,11", "node", langford<3, 11>},
    {"magic_square 4", "node", magicSquare<4, findAll>},
    {"magic_square 5", "node", magicSquare<5, findFirst>},
    {"knapsack 25x3", "node", knapsackOf25},
    {"assign 14", "node", assignment<14>},
    {"magic_seq 200", "node", magicSequence<200>},
    {"send+more x 10^4", "node", sendMoreMoney<10000>},
    {"golomb 9", "node", golomb<9>},
    {"golomb 10", "node", golomb<10>},
    {"all_interval 11", "node", allInterval<11>},
    {"all_interval 12", "node", allInterval<12>},
    {"sum 10", "event", bindTerms<10, 5000, plainSum>},
    {"sum 100", "event", bindTerms<100, 500, plainSum>},
    {"sum 1000", "event", bindTerms<1000, 10, plainSum>},
    {"sum 10000", "event", bindTerms<10000, 1, plainSum>},
    {"scalprod 10", "event", bindTerms<10, 5000, weightedSum>},
    {"scalprod 100", "event", bindTerms<100, 500, weightedSum>},
    {"scalprod 1000", "event", bindTerms<1000, 10, weightedSum>},
    {"scalprod 10000", "event", bindTerms<10000, 1, weightedSum>},
    {"chain 10^4 x 200", "event", chain<10000, 200>},
    {"chain 10^6 x 5", "event", chain<1000000, 5>},
    {"ladder 10^4 x 200", "event", ladder<10000, 200>},
    {"ladder 10^6 x 5", "event", ladder<1000000, 5>},
    {"regular posting", "edge", postAutomaton<200, 500, 50>},
    {"regular cascade", "event", cascade<100, 60, 10, 20>},
    {"nonogram x 20", "node", nonograms<12, 20>},
    {"nonogram 25", "node", nonograms<25, 1>},
    {"roster 24x21", "node", roster},
    {"job shop 5x4", "node", jobShop<5, 4>},
    {"cumulative 10", "event", cumulative<10, 2000>},
    {"cumulative 60", "event", cumulative<60, 200>},
    {"cumulative 500", "event", cumulative<500, 10>},
    {"cardinality 40/8", "node", cardinalities<cs_Cardinality, kTightScopes, 5>},
    {"cardinality 60/10", "node", cardinalities<cs_Cardinality, kExactScopes, 3>},
    {"card_domain 40/8", "node", cardinalities<cs_CardinalityDomain, kTightScopes, 5>},
    {"card_domain 60/10", "node", cardinalities<cs_CardinalityDomain, kExactScopes, 3>},
    {"bin_packing 40/14", "node", binPacking<40, 14, 101, 3>},
    {"post 10^6", "constraint", postManyPairs},
    {"end 10^6", "variable", endVariables<1000000>},
};

}  // namespace koru::bench
