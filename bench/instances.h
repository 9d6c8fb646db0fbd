// SPDX-License-Identifier: MIT
// The data of the benchmark problems: grids to complete and pairs to relate, the same for every solver and machine.
// Generators are seeded and use no distribution or shuffle of the standard library, whose results may differ.
#pragma once

#include <bit>
#include <cstddef>
#include <numeric>
#include <random>
#include <utility>
#include <vector>

namespace koru::bench {

class Random {
 public:
  explicit Random(unsigned seed) : engine_(seed) {}

  int below(int n) { return static_cast<int>(engine_() % static_cast<unsigned>(n)); }

  std::vector<int> permutation(int n) {
    std::vector<int> result(static_cast<std::size_t>(n));
    std::iota(result.begin(), result.end(), 0);
    for (int i = n - 1; i > 0; --i)
      std::swap(result[static_cast<std::size_t>(i)], result[static_cast<std::size_t>(below(i + 1))]);
    return result;
  }

 private:
  std::mt19937 engine_;
};

inline std::vector<int> randomValues(Random &random, int size, int min, int max) {
  std::vector<int> result;
  while (static_cast<int>(result.size()) < size) result.push_back(min + random.below(max - min + 1));
  return result;
}

// A square of cells in row-major order, each a clue from 1 to order or 0 when it is to be found. Rows and columns, and
// the blocks of block x block cells when block is not 0, hold different values.
struct Grid {
  int order;
  int block;
  std::vector<int> cells;

  Grid(int gridOrder, int blockSize)
      : order(gridOrder), block(blockSize), cells(static_cast<std::size_t>(gridOrder * gridOrder)) {}
  int &at(int row, int column) { return cells[static_cast<std::size_t>(row * order + column)]; }
};

// Lines that stay within their band: bands in random order, and the lines of each.
inline std::vector<int> permutedLines(Random &random, int block) {
  std::vector<int> lines;
  for (const int band : random.permutation(block))
    for (const int line : random.permutation(block)) lines.push_back(band * block + line);
  return lines;
}

inline Grid solvedSudoku(Random &random, int block) {
  Grid grid(block * block, block);
  const std::vector<int> rows = permutedLines(random, block);
  const std::vector<int> columns = permutedLines(random, block);
  const std::vector<int> symbols = random.permutation(grid.order);
  for (int r = 0; r < grid.order; ++r)
    for (int c = 0; c < grid.order; ++c) {
      const int row = rows[static_cast<std::size_t>(r)];
      const int base = (block * (row % block) + row / block + columns[static_cast<std::size_t>(c)]) % grid.order;
      grid.at(r, c) = symbols[static_cast<std::size_t>(base)] + 1;
    }
  return grid;
}

// Counts the solutions of a 9x9 sudoku, up to two: masks of the values used, fewest candidates first.
class SudokuCounter {
 public:
  explicit SudokuCounter(const Grid &grid) {
    for (int cell = 0; cell < 81; ++cell) {
      const int value = grid.cells[static_cast<std::size_t>(cell)];
      if (value == 0)
        free_[freeCount_++] = cell;
      else
        flip(cell, 1U << value);
    }
  }

  int count() {
    if (freeCount_ == 0) return 1;
    const int chosen = pickFree();
    const int cell = free_[chosen];
    free_[chosen] = free_[--freeCount_];
    int solutions = 0;
    for (unsigned left = candidates(cell); left != 0 && solutions < 2; left &= left - 1) {
      const unsigned value = left & (~left + 1);
      flip(cell, value);
      solutions += count();
      flip(cell, value);
    }
    free_[freeCount_++] = free_[chosen];
    free_[chosen] = cell;
    return solutions < 2 ? solutions : 2;
  }

 private:
  static int blockOf(int cell) { return cell / 27 * 3 + cell % 9 / 3; }
  unsigned candidates(int cell) const {
    return 0x3feU & ~(rows_[cell / 9] | columns_[cell % 9] | blocks_[blockOf(cell)]);
  }
  void flip(int cell, unsigned value) {
    rows_[cell / 9] ^= value;
    columns_[cell % 9] ^= value;
    blocks_[blockOf(cell)] ^= value;
  }
  int pickFree() const {
    int best = 0;
    for (int i = 1; i < freeCount_; ++i)
      if (std::popcount(candidates(free_[i])) < std::popcount(candidates(free_[best]))) best = i;
    return best;
  }

  unsigned rows_[9] = {};
  unsigned columns_[9] = {};
  unsigned blocks_[9] = {};
  int free_[81] = {};
  int freeCount_ = 0;
};

// Takes clues away from a 9x9 grid in random order as long as its solution stays the only one.
inline void removeWhileUnique(Random &random, Grid &grid) {
  for (const int cell : random.permutation(81)) {
    int &clue = grid.cells[static_cast<std::size_t>(cell)];
    const int value = std::exchange(clue, 0);
    if (SudokuCounter(grid).count() != 1) clue = value;
  }
}

inline void removeCells(Random &random, Grid &grid, int holes) {
  const std::vector<int> cells = random.permutation(grid.order * grid.order);
  for (int i = 0; i < holes; ++i) grid.cells[static_cast<std::size_t>(cells[static_cast<std::size_t>(i)])] = 0;
}

// A Latin square, row by row: each row a matching of columns and values still free in them, found by augmenting paths
// from a random start. It always exists.
class LatinSquare {
 public:
  LatinSquare(Random &random, int order) : random_(random), grid_(order, 0) {
    for (int row = 0; row < order; ++row) addRow(row);
  }
  Grid take() { return std::move(grid_); }

 private:
  void addRow(int row) {
    values_ = random_.permutation(grid_.order);
    owner_.assign(static_cast<std::size_t>(grid_.order), -1);
    for (int column = 0; column < grid_.order; ++column) {
      visited_.assign(static_cast<std::size_t>(grid_.order), false);
      assign(row, column);
    }
    for (int value = 0; value < grid_.order; ++value)
      grid_.at(row, owner_[static_cast<std::size_t>(value)]) = value + 1;
  }

  bool assign(int row, int column) {
    for (const int value : values_) {
      const auto v = static_cast<std::size_t>(value);
      if (visited_[v] || usedAbove(row, column, value + 1)) continue;
      visited_[v] = true;
      if (owner_[v] >= 0 && !assign(row, owner_[v])) continue;
      owner_[v] = column;
      return true;
    }
    return false;
  }

  bool usedAbove(int row, int column, int value) {
    for (int r = 0; r < row; ++r)
      if (grid_.at(r, column) == value) return true;
    return false;
  }

  Random &random_;
  Grid grid_;
  std::vector<int> values_;
  std::vector<int> owner_;  // the column that took a value
  std::vector<bool> visited_;
};

// What there is to pack: the loss of leaving an item out, and a row of weights for each capacity, which is half their
// sum. Weights are negative because what is left out lightens the load.
struct Items {
  std::vector<int> profits;
  std::vector<std::vector<int>> negatedWeights;

  Items(int count, int rows) {
    Random random(3);
    profits = randomValues(random, count, 50, 99);
    for (int row = 0; row < rows; ++row) negatedWeights.push_back(randomValues(random, count, -99, -10));
  }
};

// A weighted sum of 0/1 variables, and the values that they are bound to one by one.
struct Sum {
  std::vector<int> coefficients;
  std::vector<int> values;

  explicit Sum(int terms) {
    Random random(1);
    coefficients = randomValues(random, terms, -9, 9);
    values = randomValues(random, terms, 0, 1);
  }
};

// What each of n workers costs in each of n jobs.
struct CostMatrix {
  std::vector<std::vector<int>> rows;

  explicit CostMatrix(int n) {
    Random random(4);
    for (int i = 0; i < n; ++i) rows.push_back(randomValues(random, n, 1, 99));
  }
};

// 9x9 grids with one solution and no clue to spare.
inline std::vector<Grid> uniqueSudokus(Random &random, std::size_t count) {
  std::vector<Grid> result;
  while (result.size() < count) removeWhileUnique(random, result.emplace_back(solvedSudoku(random, 3)));
  return result;
}

// 16x16 grids with 140 cells removed at random.
inline std::vector<Grid> largeSudokus(Random &random, std::size_t count) {
  std::vector<Grid> result;
  while (result.size() < count) removeCells(random, result.emplace_back(solvedSudoku(random, 4)), 140);
  return result;
}

// Latin squares of order 20 with 150 holes.
inline std::vector<Grid> latinSquares(Random &random, std::size_t count) {
  std::vector<Grid> result;
  while (result.size() < count) removeCells(random, result.emplace_back(LatinSquare(random, 20).take()), 150);
  return result;
}

using Pairs = std::vector<std::pair<int, int>>;

// Pairs of different numbers below `below`.
inline Pairs differentPairs(Random &random, int below, std::size_t count) {
  Pairs result;
  while (result.size() < count) {
    const int first = random.below(below);
    const int second = random.below(below);
    if (first != second) result.emplace_back(first, second);
  }
  return result;
}

inline constexpr int kPairVariables = 2000;

struct Instances {
  Random random{20240229};
  std::vector<Grid> sudoku9 = uniqueSudokus(random, 200);
  std::vector<Grid> sudoku16 = largeSudokus(random, 20);
  std::vector<Grid> qwh = latinSquares(random, 20);
  Pairs pairs = differentPairs(random, kPairVariables, 1000000);
  Items items{25, 3};
};

// Made at the first call.
inline const Instances &instances() {
  static const Instances made;
  return made;
}

}  // namespace koru::bench
