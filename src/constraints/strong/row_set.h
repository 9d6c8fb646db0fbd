// SPDX-License-Identifier: MIT
// The rows of a table that the domains of its variables still allow: a compact table (Demeulenaere et al.,
// Compact-table: efficiently filtering table constraints with reversible sparse bit-sets, 2016).
//
// Rows are bits of words that backtracking restores. For each value of a column stand, in order, the words that hold
// rows with it and their bits there: never more of them than rows. A column keeps its values that are in the domain in
// front, as many as a trailed size says: by comparing these with the domain an update finds what has gone.
//
// A variable that stands in several columns is made one column, rows that contradict themselves then go, and rows are
// in lexicographic order, each once.
#pragma once

#include "core/alloc.h"
#include "core/reversible.h"
#include "core/variable.h"

namespace koru {

struct RowBits {
  int word;
  std::uint64_t bits;
};

class RowSet {
 public:
  // As given: `count` rows of `n` cells. A cell that equals `any`, if that counts, stands for all values.
  struct Given {
    CSint *const *vars;
    int n;
    const int *cells;
    int count;
    bool hasAny;

    // What posters refuse: no columns, null arrays or variables, too many cells.
    bool isSound() const;
  };
  static constexpr std::int64_t kMostCells = 1 << 30;
  static constexpr int kAny = kIntMin;

  struct Column {
    CSint *v;
    int begin;  // of its values
    int end;
    RowBits *anyBegin;  // rows with a cell for all values
    RowBits *anyEnd;
    ReversibleWord size;  // values in front, all in the domain at the last update
  };

  RowSet() = default;
  RowSet(RowSet &&) = default;
  RowSet &operator=(RowSet &&) = default;
  // False when memory is exhausted (reported).
  bool build(const Given &given);

  int columns() const { return columnCount_; }
  Column &column(int j) const { return columns_[j]; }
  bool empty() const { return used_.number() == 0; }

  // Drops the rows that the domains no longer allow. False when memory is exhausted (reported).
  bool update();
  // To be called when a run is through: what update saw then it need not see again.
  void noteSeen() { seen_.note(); }

  // By place among the column's values, those in front first.
  int valueAt(int place) const { return values_[order_[place]]; }
  bool isSupported(int place);
  bool anySupported(const Column &column) const { return meets(column.anyBegin, column.anyEnd); }
  int countRows(int place) const;
  int countRows() const;
  // Moves a value that has left the domain behind those in front.
  bool dropValue(Column &column, int place, const WordStamp &stamp);
  bool isInFront(const Column &column, int value) const;

 private:
  struct Sorted;

  int mergeColumns(const Given &given, int *columnOf);
  int mergeRows(const Given &given, const int *columnOf, int *cells) const;
  int sortRows(int rows, const int *cells, int *order) const;
  bool buildColumns(const Given &given, const int *cells, const int *order, int rows);
  bool start(int rows);
  std::uint64_t fullWord(int k) const;

  bool reset();
  bool updateColumn(Column &column, const WordStamp &stamp);
  int partition(const Column &column) const;
  bool clearRowsOf(int place, const WordStamp &stamp);
  bool keepRowsOf(const Column &column, int inFront, const WordStamp &stamp);
  bool sweepEmpty(const WordStamp &stamp);
  bool meets(const RowBits *begin, const RowBits *end) const;
  void swap(int place, int other) const;
  RowBits *bitsBegin(int place) const { return bits_.get() + bitsAt_[order_[place]]; }
  RowBits *bitsEnd(int place) const { return bits_.get() + bitsAt_[order_[place] + 1]; }

  int columnCount_ = 0;
  int wordCount_ = 0;
  int rowCount_ = 0;
  Buffer<Column> columns_;
  Buffer<int> values_;   // of each column in turn, ascending
  Buffer<int> bitsAt_;   // by value: where its bits begin; one more at the end
  Buffer<int> residue_;  // by value: which of its bits met a row last
  Buffer<int> order_;    // by place: the value
  Buffer<int> placeOf_;  // by value
  Buffer<RowBits> bits_;
  Buffer<RowBits> anyBits_;
  Buffer<ReversibleWord> words_;
  Buffer<int> index_;  // words that hold rows in front
  Buffer<std::uint64_t> mask_;
  ReversibleWord used_{};  // words in front
  Lockstep seen_;
};

}  // namespace koru
