// SPDX-License-Identifier: MIT
// Benchmark problems for the constraints of koru_extras.h, as programs for Koru.
#pragma once

#include <cstddef>

#include "instances_strong.h"
#include "koru_extras.h"
#include "models.h"

namespace koru::bench {

inline int sizeOf(const Array &x) { return static_cast<int>(x.size()); }
inline bool allNeqDomain(Array &x) { return cs_AllNeqDomain(x.data(), sizeOf(x)); }
inline bool allNeqBounds(Array &x) { return cs_AllNeqBounds(x.data(), sizeOf(x)); }
inline bool allNeqBoth(Array &x) { return allNeq(x) && allNeqBounds(x); }

// ----- all-different

// More exams than slots: refused at once.
template <int times>
Outcome tooFewSlots() {
  Lifetime lifetime;
  Outcome outcome;
  for (int i = 0; i < times; ++i) {
    Array &exams = lifetime.array(11, 1, 10);
    if (allNeqDomain(exams)) return Outcome{};
    ++outcome.units;
  }
  return outcome;
}

inline const std::vector<Grid> &squares30() {
  static const std::vector<Grid> grids = {squareWithHoles(1, 30, 302), squareWithHoles(2, 30, 302),
                                          squareWithHoles(3, 30, 302), squareWithHoles(4, 30, 302),
                                          squareWithHoles(5, 30, 302)};
  return grids;
}

template <int order, int holes>
const std::vector<Grid> &mixedSquares() {
  static const std::vector<Grid> grids = [] {
    std::vector<Grid> made;
    for (int seed = 1; seed <= 5; ++seed) made.push_back(mixedSquareWithHoles(seed, order, holes));
    return made;
  }();
  return grids;
}

// The squares' clues come last: until then nothing runs.
inline Outcome strongGrids(const std::vector<Grid> &grids) {
  Outcome outcome;
  for (const Grid &grid : grids) {
    Lifetime lifetime;
    Array &cells = lifetime.array(grid.order * grid.order, 1, grid.order);
    if (cs_beginPosting() && postGrid<allNeqDomain>(lifetime, grid, cells) && cs_endPosting())
      findFirst(outcome, cells, cs_findFreeVarNbElements);
  }
  return outcome;
}

template <const std::vector<Grid> &(*grids)()>
Outcome strongSquares() {
  return strongGrids(grids());
}
inline Outcome sudoku16Strong() { return strongGrids(instances().sudoku16); }

// ----- clauses

template <int n, int m, int seeds>
Outcome threeSat() {
  Outcome outcome;
  for (int seed = 1; seed <= seeds; ++seed) {
    Lifetime lifetime;
    Array &x = lifetime.array(n, 0, 1);
    bool posted = true;
    for (const ThreeClause &clause : threeClauses(seed, n, m)) {
      Array positive;
      Array negative;
      for (const int literal : clause)
        (literal > 0 ? positive : negative).push_back(x[static_cast<std::size_t>(std::abs(literal) - 1)]);
      posted = posted && cs_Clause(positive.data(), sizeOf(positive), negative.data(), sizeOf(negative));
    }
    if (posted) findFirst(outcome, x, cs_findFreeVar);
  }
  return outcome;
}

// ----- block designs: rows and columns in descending lexicographic order

inline bool sumIs(Array &x, int total) {
  const std::vector<long long> ones(x.size(), 1);
  return cs_Linear(x.data(), ones.data(), sizeOf(x), CS_METHOD_EQ, total);
}

inline bool descending(std::vector<Array> &lines) {
  for (std::size_t i = 1; i < lines.size(); ++i)
    if (!cs_LexLe(lines[i].data(), lines[i - 1].data(), sizeOf(lines[i]))) return false;
  return true;
}

inline bool pairIn(Array &a, Array &b, int lambda) {
  Array both;
  for (std::size_t i = 0; i < a.size(); ++i) {
    CSint *factors[] = {a[i], b[i]};
    CSint *product = cs_createCSint(0, 1);
    both.push_back(product);
    if (!cs_Clause(&product, 1, factors, 2)) return false;
    for (CSint *&factor : factors)
      if (!cs_Clause(&factor, 1, &product, 1)) return false;
  }
  return sumIs(both, lambda);
}

template <int v, int k, int lambda>
Outcome blockDesign() {
  constexpr Design design{v, k, lambda};
  Lifetime lifetime;
  Outcome outcome;
  Array &x = lifetime.array(v * design.blocks(), 0, 1);
  std::vector<Array> rows(v);
  std::vector<Array> columns(static_cast<std::size_t>(design.blocks()));
  for (std::size_t i = 0; i < x.size(); ++i) {
    rows[i / columns.size()].push_back(x[i]);
    columns[i % columns.size()].push_back(x[i]);
  }
  bool posted = cs_beginPosting();
  for (Array &row : rows) posted = posted && sumIs(row, design.perPoint());
  for (Array &column : columns) posted = posted && sumIs(column, k);
  for (std::size_t i = 0; i < rows.size(); ++i)
    for (std::size_t j = i + 1; j < rows.size(); ++j) posted = posted && pairIn(rows[i], rows[j], lambda);
  if (posted && descending(rows) && descending(columns) && cs_endPosting()) findFirst(outcome, x, cs_findFreeVar);
  return outcome;
}

// ----- tables

inline Outcome solveTables(const TableProblem &problem) {
  Lifetime lifetime;
  Outcome outcome;
  Array &x = lifetime.array(problem.variables, 0, problem.values - 1);
  for (const TableOfRows &table : problem.tables) {
    Array scope;
    for (const std::size_t i : table.scope) scope.push_back(x[i]);
    if (!cs_Table(scope.data(), sizeOf(scope), table.cells.data(), table.rows())) return outcome;
  }
  findFirst(outcome, x, cs_findFreeVarNbElements);
  return outcome;
}

template <unsigned seed, int n, int d, int count, std::size_t arity, int rows>
const TableProblem &tableProblem() {
  static const TableProblem problem(seed, n, d, count, arity, rows);
  return problem;
}

template <unsigned seed, int side, int words>
const TableProblem &crosswordProblem() {
  static const TableProblem problem = crosswords(seed, side, words);
  return problem;
}

template <const TableProblem &(*problem)()>
Outcome tables() {
  return solveTables(problem());
}

// ----- tours

template <int width, int height>
Outcome knightsTours() {
  Lifetime lifetime;
  Outcome outcome;
  Array &next = lifetime.array();
  for (int from = 0; from < width * height; ++from) {
    const std::vector<int> moves = knightMoves(width, height, from);
    next.push_back(cs_createCSintFromDomain(moves.data(), static_cast<int>(moves.size())));
  }
  if (cs_Circuit(next.data(), sizeOf(next))) findAll(outcome, next, cs_findFreeVarNbElements);
  return outcome;
}

template <int n>
Outcome shortestTour() {
  const CostMatrix matrix(n);
  Lifetime lifetime;
  Outcome outcome;
  Array &next = lifetime.array(n, 0, n - 1);
  Array &terms = lifetime.array();
  bool posted = cs_Circuit(next.data(), n);
  for (int i = 0; i < n; ++i) {
    terms.push_back(cs_createCSint(1, 99));
    const std::vector<int> &row = matrix.rows[static_cast<std::size_t>(i)];
    posted = posted && cs_ElementOf(next[static_cast<std::size_t>(i)], row.data(), n, terms.back());
  }
  CSint *const total = cs_createCSint(0, 99 * n);
  terms.push_back(total);
  std::vector<long long> coefficients(terms.size(), 1);
  coefficients.back() = -1;
  posted = posted && cs_Linear(terms.data(), coefficients.data(), sizeOf(terms), CS_METHOD_EQ, 0);
  if (posted) minimize(outcome, next, cs_findFreeVar, total);
  return outcome;
}

// ----- squares of sides n, n - 1, ... 1 in a rectangle, a number of times

template <int n, int width, int height, int times>
Outcome squares() {
  Outcome outcome;
  for (int i = 0; i < times; ++i) {
    Lifetime lifetime;
    Array &corners = lifetime.array();
    Array &x = lifetime.array();
    Array &y = lifetime.array();
    Array &sides = lifetime.array();
    for (int side = n; side > 0; --side) {
      x.push_back(cs_createCSint(0, width - side));
      y.push_back(cs_createCSint(0, height - side));
      sides.push_back(CSINT(side));
      corners.insert(corners.end(), {x.back(), y.back()});
    }
    if (cs_NoOverlap(x.data(), sides.data(), y.data(), sides.data(), n)) findFirst(outcome, corners, cs_findFreeVar);
  }
  return outcome;
}

inline constexpr Model kStrongModels[] = {
    {"exams 11/10 x 10^3", "model", tooFewSlots<1000>},
    {"qwh strong", "node", strongSquares<squares30>},
    {"qwh 30/360", "node", strongSquares<mixedSquares<30, 360>>},
    {"qwh 33/450", "node", strongSquares<mixedSquares<33, 450>>},
    {"sudoku strong", "node", sudoku16Strong},
    {"golomb bounds", "node", golomb<10, allNeqBounds>},
    {"golomb both", "node", golomb<10, allNeqBoth>},
    {"3-sat 80/340", "node", threeSat<80, 340, 5>},
    {"3-sat 100/425", "node", threeSat<100, 425, 3>},
    {"bibd 13,3,1", "node", blockDesign<13, 3, 1>},
    {"bibd 9,3,4", "node", blockDesign<9, 3, 4>},
    {"table sparse", "node", tables<tableProblem<1, 30, 6, 27, 5, 1000>>},
    {"table dense", "node", tables<tableProblem<3, 20, 10, 38, 3, 300>>},
    {"table 20000", "node", tables<tableProblem<2, 20, 8, 11, 6, 20000>>},
    {"table 20000 long", "node", tables<tableProblem<1, 22, 8, 14, 6, 20000>>},
    {"table 20000 dense", "node", tables<tableProblem<1, 12, 8, 30, 5, 20000>>},
    {"crossword 4", "node", tables<crosswordProblem<1, 4, 2000>>},
    {"knight 6x5", "node", knightsTours<6, 5>},
    {"tour 14", "node", shortestTour<14>},
    {"squares 9 x 100", "node", squares<9, 15, 20, 100>},
};

}  // namespace koru::bench
