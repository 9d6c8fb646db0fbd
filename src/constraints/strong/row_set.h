// SPDX-License-Identifier: MIT
// The rows of a table that the domains of its variables still allow: a compact table (Demeulenaere et al.,
// Compact-table: efficiently filtering table constraints with reversible sparse bit-sets, 2016).
//
// Rows are bits of words that backtracking restores; the words that hold rows still are kept in front of an index. The
// rows with a value are bits of all words from its first to its last one, so that a look at them may follow the index
// where fewer words are left; but where these are many and mostly empty, they are a list of the others. A column keeps
// its values that are in the domain in front, as many as a trailed size says: by comparing these with the domain an
// update finds what has gone.
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
  static constexpr int kRoom = 4;  // words for each one that is not empty: no more, and a value's bits are no list

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
  // Nothing has changed since the last run that came to its end.
  bool unchanged() const { return changed_ == 0; }
  // Nothing has changed but this column: its values in front have their rows.
  bool isOnlyChange(const Column &column) const { return changed_ == 1 && lastChanged_ == &column; }

  // Drops the rows that the domains no longer allow. False when memory is exhausted (reported).
  bool update();
  // To be called when a run is through: what update saw then it need not see again. `left`: the domain of a column
  // without cells for all values is what stands in front.
  void noteSeen(bool left) {
    seen_.note();
    fresh_ = false;
    settled_ = left;
  }

  // By place among the column's values, those in front first.
  int valueAt(int place) const { return values_[order_[place]]; }
  bool isSupported(int place) {
    const RowBits &residue = residues_[order_[place]];
    return (words_[residue.word].bits() & residue.bits) != 0 || findSupport(place);
  }
  bool anySupported(const Column &column) const;
  int countRows(int place) const;
  int countRows() const;
  // Moves a value that has left the domain behind those in front.
  bool dropValue(Column &column, int place, const WordStamp &stamp);
  bool isInFront(const Column &column, int value) const {
    const int rank = rankOf(column, value);
    return rank >= 0 && placeOf_[rank] < column.begin + column.size.number();
  }

 private:
  struct Sorted;

  // Where the bits of a value are.
  struct Place {
    int at;     // in dense_, or in sparse_
    int first;  // word; kSparse: there is a list
    int words;  // as many as there are
  };
  static constexpr int kSparse = -1;

  int mergeColumns(const Given &given, int *columnOf);
  int mergeRows(const Given &given, const int *columnOf, int *cells) const;
  int sortRows(int rows, const int *cells, int *order) const;
  bool makeColumns(const Sorted &sorted);
  bool buildColumns(const Given &given, const int *cells, const int *order, int rows);
  bool start(int rows);
  std::uint64_t fullWord(int k) const;

  bool findSupport(int place);
  bool reset();
  bool updateColumn(Column &column, const WordStamp &stamp);
  bool lostNothing(const Column &column) const;
  int partition(const Column &column) const;
  int partitionBound(const Column &column) const;
  int rankOf(const Column &column, int value) const;
  bool clearRowsOf(int place, const WordStamp &stamp);
  bool keepRowsOf(const Column &column, int inFront, const WordStamp &stamp);
  bool keepRowsOfOne(const Place &place, const WordStamp &stamp);
  template <class Bits>
  bool keepBits(const WordStamp &stamp, Bits bits);  // bits(word): of those that stay
  bool sweepEmpty(const WordStamp &stamp);
  void swap(int place, int other) const;
  // Calls visit(word, bits) for the words in front that may have rows with the value, while it returns true; false when
  // it has returned false.
  template <class Visit>
  bool visitRows(int place, Visit visit) const;

  int columnCount_ = 0;
  int wordCount_ = 0;
  int rowCount_ = 0;
  Buffer<Column> columns_;
  Buffer<int> values_;        // of each column in turn, ascending
  Buffer<Place> places_;      // by value
  Buffer<RowBits> residues_;  // by value: those that met a row last
  Buffer<int> order_;         // by place: the value
  Buffer<int> placeOf_;       // by value
  Buffer<std::uint64_t> dense_;
  Buffer<RowBits> sparse_;
  Buffer<RowBits> anyBits_;
  Buffer<ReversibleWord> words_;
  Buffer<int> index_;  // words that hold rows in front
  Buffer<std::uint64_t> mask_;
  ReversibleWord used_{};  // words in front
  Lockstep seen_;
  bool fresh_ = true;     // no run has come to its end
  bool settled_ = false;  // the last one has, and domains were what stood in front
  int changed_ = 0;       // columns, at the last update
  const Column *lastChanged_ = nullptr;
};

}  // namespace koru
