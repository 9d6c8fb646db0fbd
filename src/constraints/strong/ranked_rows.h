// SPDX-License-Identifier: MIT
// The rows of a table, made ready for a RowSet: each value as its rank among those of its column.
//
// A variable that stands in several columns is made one column, rows that contradict themselves or have a value that
// their variable was not created with then go, and rows are in lexicographic order, each once.
#pragma once

#include <cstddef>
#include <cstdint>
#include <utility>

#include "core/alloc.h"
#include "core/variable.h"

namespace koru {

// As given: `count` rows of `n` cells. A cell that equals kAny, if that counts, stands for all values.
struct GivenRows {
  CSint *const *vars;
  int n;
  const int *cells;
  int count;
  bool hasAny;

  static constexpr std::int64_t kMostCells = 1 << 30;
  static constexpr int kAny = kIntMin;

  // What posters refuse: no columns, null arrays or variables, too many cells.
  bool isSound() const;
};

class RankedRows {
 public:
  struct Column {
    CSint *v;
    int begin;  // of its values
    int ranks;
    bool isRange;  // ranks are distances from the least value: some may be of values without rows
  };
  static constexpr int kAnyRank = -1;

  // False when memory is exhausted (reported).
  [[nodiscard]] bool build(const GivenRows &given);

  int rows() const { return rows_; }
  int columns() const { return columnCount_; }
  const Column &column(int j) const { return columns_[j]; }
  // By row.
  const int *ranks(int j) const { return ordered_.get() + static_cast<std::ptrdiff_t>(j) * rows_; }
  // The values of all columns, ascending in each, which the caller takes over.
  Buffer<int> takeValues() { return std::move(values_); }
  int valueCount() const { return valueCount_; }

 private:
  int mergeColumns(const GivenRows &given, int *columnOf);
  int takeRows(const GivenRows &given, const int *columnOf);
  [[nodiscard]] bool takeRow(const GivenRows &given, const int *columnOf, const int *from, int row);
  int *cells(int j) const { return cells_.get() + static_cast<std::ptrdiff_t>(j) * room_; }
  bool isAny(int value) const { return hasAny_ && value == GivenRows::kAny; }
  [[nodiscard]] bool rank(int j);
  [[nodiscard]] bool rankNear(int j, int least, int span);
  [[nodiscard]] bool rankFar(int j, int plain);
  [[nodiscard]] bool addColumn(Column &column, int ranks);
  [[nodiscard]] bool sortRows();
  bool isRepeated(const int *order, int k) const;

  bool hasAny_ = false;
  int columnCount_ = 0;
  int rows_ = 0;
  std::int64_t room_ = 0;  // rows that cells_ has room for
  int valueCount_ = 0;
  int valueRoom_ = 0;
  Buffer<Column> columns_;
  Buffer<int> cells_;  // column by column: values, then ranks
  Buffer<int> ordered_;
  Buffer<int> values_;
};

}  // namespace koru
