// SPDX-License-Identifier: MIT
// The rows of a table that the domains of its variables still allow: a compact table (Demeulenaere et al.,
// Compact-table: efficiently filtering table constraints with reversible sparse bit-sets, 2016).
//
// Rows are bits of words; the words that hold rows still are kept in front of an index. The rows with a value are the
// bits of all words, or from its first to its last one, or, where these are many and mostly empty, a list of the
// others. Each column has a bit for each of its values that is in the domain and has rows, its front: by comparing it
// with the domain an update finds what has gone. All these words are reversible.
#pragma once

#include "constraints/strong/ranked_rows.h"
#include "core/bit_scan.h"
#include "core/reversible.h"

namespace koru {

struct RowBits {
  int word;
  std::uint64_t bits;
};

class RowSet {
 public:
  static constexpr int kRoom = 8;  // words for each one that is not empty: no more
  static constexpr int kFew = 32;  // words that are looked at in order, empty or not

  struct Column {
    CSint *v;
    int begin;  // of its values
    int ranks;
    bool isRange;       // consecutive ranks stand for consecutive ints
    bool isPlain;       // the bits of each value are those of all words, and no cell stands for all values
    int size;           // the word that says how many values are in front; those of the front follow it
    RowBits *anyBegin;  // rows with a cell for all values
    RowBits *anyEnd;

    int frontWords() const { return (ranks + 63) / 64; }
    bool hasAny() const { return anyBegin != anyEnd; }
  };

  RowSet() = default;
  RowSet(RowSet &&) = default;
  RowSet &operator=(RowSet &&) = default;
  // False when memory is exhausted (reported).
  [[nodiscard]] bool build(const GivenRows &given);

  int columns() const { return columnCount_; }
  const Column &column(int j) const { return columns_[j]; }
  bool empty() const { return used() == 0; }
  // Nothing has changed since the last run that came to its end.
  bool unchanged() const { return changed_ == 0; }
  // Nothing has changed but this column: its values in front have their rows.
  bool isOnlyChange(const Column &column) const { return changed_ == 1 && lastChanged_ == &column; }

  // Drops the rows that the domains no longer allow. False when memory is exhausted (reported).
  [[nodiscard]] bool update();
  // To be called when a run is through: what update saw then it need not see again. `left`: the domain of a column
  // without cells for all values is its front.
  void noteSeen(bool left) {
    seen_.note();
    fresh_ = false;
    settled_ = left;
  }

  // Visits the columns whose variable was not bound at the last update that changed anything, while `visit` returns
  // true. False when it has returned false.
  template <class Visit>
  bool forEachOpen(Visit visit) {
    for (int k = 0; k < openWords_; ++k)
      if (!forEachBit(k * 64, words_[open_ + k], [&](int j) { return visit(columns_[j]); })) return false;
    return true;
  }

  int size(const Column &column) const { return static_cast<int>(words_[column.size]); }
  std::uint64_t front(const Column &column, int k) const { return words_[column.size + 1 + k]; }
  // By rank among the column's values.
  int valueAt(const Column &column, int rank) const { return values_[column.begin + rank]; }
  bool isInFront(const Column &column, int value) const;
  int lowestInFront(const Column &column) const;
  int highestInFront(const Column &column) const;

  bool anySupported(const Column &column) const;
  int countRows(const Column &column, int rank) const;
  int countRows() const;

  // The variable is bound, and its front is its value or empty. False when memory is exhausted (reported).
  [[nodiscard]] bool close(const Column &column);
  // Takes the values without rows out of the front. False when memory is exhausted (reported).
  [[nodiscard]] bool dropUnsupported(const Column &column);
  // What that has dropped.
  std::uint64_t dropped(int k) const { return scratch_[k]; }

 private:
  // Where the bits of a value are.
  struct Place {
    int at;     // in dense_, or in sparse_
    int first;  // word; kSparse: there is a list
    int words;  // as many as there are
  };
  static constexpr int kSparse = -1;
  class Layout;

  [[nodiscard]] bool buildColumns(RankedRows &rows);
  void fillColumn(const RankedRows &rows, int j, RowBits *&anyAt);
  [[nodiscard]] bool start();
  template <class Set>
  void fill(Set set);
  std::uint64_t fullWord(int k) const;
  std::uint64_t fullFront(const Column &column, int k) const;
  int used() const { return static_cast<int>(words_[used_]); }

  [[nodiscard]] bool reset();
  [[nodiscard]] bool updateColumn(const Column &column);
  bool lostNothing(const Column &column) const;
  int findGone(const Column &column);
  bool areFew() const { return wordCount_ <= kFew; }
  int collectRows(const Column &column);
  void makeMask(const Column &column, bool keeps);
  void cutFew(const Column &column, bool keeps);
  template <class Keep>
  void sweep(Keep keep);
  void cut(const Column &column, bool keeps);
  [[nodiscard]] bool findSupport(const Column &column, int at);
  // Calls visit(word, bits) for the words in front that may have rows with the value, while it returns true; false when
  // it has returned false.
  template <class Visit>
  bool visitRows(const Place &place, Visit visit) const;

  int columnCount_ = 0;
  int wordCount_ = 0;
  int rowCount_ = 0;
  int used_ = 0;  // the word that says how many words of rows are in front
  int open_ = 0;  // and the first of those with a bit for each column that is not known to be bound
  int openWords_ = 0;
  int wordsInAll_ = 0;
  ReversibleWords words_;  // those of rows, and what is said above
  Buffer<Column> columns_;
  Buffer<int> values_;        // of each column in turn, ascending
  Buffer<Place> places_;      // by value
  Buffer<RowBits> residues_;  // by value: those that met a row last
  Buffer<std::uint64_t> dense_;
  Buffer<RowBits> sparse_;
  Buffer<RowBits> anyBits_;
  Buffer<int> index_;  // words that hold rows in front
  Buffer<std::uint64_t> mask_;
  Buffer<std::uint64_t> scratch_;       // of a front
  Buffer<const std::uint64_t *> rows_;  // of values that a cut is by
  Lockstep seen_;
  bool fresh_ = true;     // no run has come to its end
  bool settled_ = false;  // the last one has, and domains were fronts
  int changed_ = 0;       // columns, at the last update
  const Column *lastChanged_ = nullptr;
};

}  // namespace koru
