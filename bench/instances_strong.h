// SPDX-License-Identifier: MIT
// The data of the benchmark problems with tables, clauses and tours, the same for every solver and machine.
#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <numeric>
#include <utility>
#include <vector>

#include "instances.h"
#include "instances_counting.h"

namespace koru::bench {

// Order n, without `holes` of its cells: a cyclic square whose rows, columns and symbols have changed places.
inline Grid squareWithHoles(unsigned seed, int order, int holes) {
  Random random(seed);
  Grid grid(order, 0);
  const std::vector<int> rows = random.permutation(order);
  const std::vector<int> columns = random.permutation(order);
  const std::vector<int> symbols = random.permutation(order);
  for (int r = 0; r < order; ++r)
    for (int c = 0; c < order; ++c) {
      const int sum = rows[static_cast<std::size_t>(r)] + columns[static_cast<std::size_t>(c)];
      grid.at(r, c) = symbols[static_cast<std::size_t>(sum % order)] + 1;
    }
  removeCells(random, grid, holes);
  return grid;
}

// The same, made less regular: wherever two rows and two columns cross in only two symbols, these may change places.
inline Grid mixedSquareWithHoles(int seed, int order, int holes) {
  Mixer random(static_cast<std::uint64_t>(seed * 104729 + order));
  const auto shuffled = [&](int n) {
    std::vector<int> values(static_cast<std::size_t>(n));
    std::iota(values.begin(), values.end(), 0);
    random.shuffle(values);
    return values;
  };
  const std::vector<int> rows = shuffled(order);
  const std::vector<int> columns = shuffled(order);
  const std::vector<int> symbols = shuffled(order);
  Grid grid(order, 0);
  for (int r = 0; r < order; ++r)
    for (int c = 0; c < order; ++c) {
      const int sum = rows[static_cast<std::size_t>(r)] + columns[static_cast<std::size_t>(c)];
      grid.at(r, c) = symbols[static_cast<std::size_t>(sum % order)] + 1;
    }
  for (int i = 0; i < 200 * order * order; ++i) {
    const int a = random.below(order), b = random.below(order), x = random.below(order), y = random.below(order);
    if (a == b || x == y || grid.at(a, x) != grid.at(b, y) || grid.at(a, y) != grid.at(b, x)) continue;
    std::swap(grid.at(a, x), grid.at(a, y));
    std::swap(grid.at(b, x), grid.at(b, y));
  }
  const std::vector<int> cells = shuffled(order * order);
  for (int i = 0; i < holes; ++i)
    grid.at(cells[static_cast<std::size_t>(i)] / order, cells[static_cast<std::size_t>(i)] % order) = 0;
  return grid;
}

// Literals are 1 to n, negative when negated.
using ThreeClause = std::array<int, 3>;

inline std::vector<ThreeClause> threeClauses(int seed, int variables, int count) {
  Mixer random(static_cast<std::uint64_t>(seed * 92003 + variables));
  std::vector<ThreeClause> clauses(static_cast<std::size_t>(count));
  for (ThreeClause &clause : clauses) {
    do
      for (int &literal : clause) literal = random.below(variables) + 1;
    while (clause[0] == clause[1] || clause[0] == clause[2] || clause[1] == clause[2]);
    for (int &literal : clause) literal = random.below(2) != 0 ? -literal : literal;
  }
  return clauses;
}

struct TableOfRows {
  std::vector<std::size_t> scope;  // positions of the variables
  std::vector<int> cells;          // row by row

  int rows() const { return static_cast<int>(cells.size() / scope.size()); }
};

// Tables of `rows` rows drawn at random, one of which belongs to a hidden solution.
struct TableProblem {
  int variables;
  int values;
  std::vector<TableOfRows> tables;

  TableProblem(unsigned seed, int n, int d, int count, std::size_t arity, int rows) : variables(n), values(d) {
    Random random(seed);
    const std::vector<int> hidden = randomValues(random, n, 0, d - 1);
    for (int k = 0; k < count; ++k) {
      TableOfRows table;
      const std::vector<int> order = random.permutation(n);
      for (std::size_t i = 0; i < arity; ++i) table.scope.push_back(static_cast<std::size_t>(order[i]));
      for (const std::size_t i : table.scope) table.cells.push_back(hidden[i]);
      for (int row = 1; row < rows; ++row)
        for (std::size_t i = 0; i < arity; ++i) table.cells.push_back(random.below(d));
      tables.push_back(std::move(table));
    }
  }
};

// A grid without black cells: each row and column is one of the words, which are drawn with some letters more frequent
// than others and include those of a hidden grid.
inline TableProblem crosswords(unsigned seed, int side, int words) {
  Random random(seed);
  const auto n = static_cast<std::size_t>(side);
  const auto letter = [&random] { return std::min(random.below(26), random.below(26)); };
  TableProblem result(seed, side * side, 26, 0, 0, 0);
  std::vector<int> list;
  std::vector<int> grid;
  for (std::size_t i = 0; i < n * n; ++i) grid.push_back(letter());
  list = grid;
  for (std::size_t c = 0; c < n; ++c)
    for (std::size_t r = 0; r < n; ++r) list.push_back(grid[r * n + c]);
  while (list.size() < static_cast<std::size_t>(words) * n) list.push_back(letter());
  for (std::size_t line = 0; line < 2 * n; ++line) {
    TableOfRows table{{}, list};
    for (std::size_t k = 0; k < n; ++k) table.scope.push_back(line < n ? line * n + k : k * n + line - n);
    result.tables.push_back(std::move(table));
  }
  return result;
}

inline std::vector<int> knightMoves(int width, int height, int from) {
  std::vector<int> moves;
  for (int to = 0; to < width * height; ++to)
    if (std::abs(from % width - to % width) * std::abs(from / width - to / width) == 2) moves.push_back(to);
  return moves;
}

// Balanced incomplete block designs: v points in blocks of k, each pair in lambda of them.
struct Design {
  int points;
  int size;
  int lambda;

  int perPoint() const { return lambda * (points - 1) / (size - 1); }
  int blocks() const { return points * perPoint() / size; }
};

}  // namespace koru::bench
