// SPDX-License-Identifier: MIT
#include "constraints/strong/row_set.h"

#include <algorithm>
#include <bit>
#include <functional>
#include <numeric>

#include "core/domain_words.h"
#include "core/post.h"

namespace koru {

// ----- building

bool RowSet::Given::isSound() const {
  if (n < 1 || count < 0 || std::int64_t{n} * count > kMostCells) return false;
  return vars != nullptr && allPresent(vars, n) && (cells != nullptr || count == 0);
}

// Equal variables get the same column, in the order of their first positions.
int RowSet::mergeColumns(const Given &given, int *columnOf) {
  const Buffer<int> sorted(given.n);
  if (!sorted) return -1;
  std::iota(sorted.get(), sorted.get() + given.n, 0);
  CSint *const *vars = given.vars;
  std::sort(sorted.get(), sorted.get() + given.n,
            [=](int a, int b) { return vars[a] == vars[b] ? a < b : std::less<>()(vars[a], vars[b]); });
  for (int k = 0; k < given.n; ++k)
    columnOf[sorted[k]] = k > 0 && vars[sorted[k]] == vars[sorted[k - 1]] ? columnOf[sorted[k - 1]] : sorted[k];
  int merged = 0;
  for (int i = 0; i < given.n; ++i) {
    if (columnOf[i] != i) {
      columnOf[i] = columnOf[columnOf[i]];
      continue;
    }
    columns_[merged].v = vars[i];
    columnOf[i] = merged++;
  }
  return merged;
}

// The rows that do not contradict themselves, and whose values the variables were created with.
int RowSet::mergeRows(const Given &given, const int *columnOf, int *cells) const {
  int kept = 0;
  for (int r = 0; r < given.count; ++r) {
    const int *from = given.cells + std::int64_t{r} * given.n;
    int *to = cells + std::int64_t{kept} * columnCount_;
    int filled = 0;
    bool possible = true;
    for (int i = 0; possible && i < given.n; ++i) {
      const int j = columnOf[i];
      const int cell = from[i];
      const bool any = given.hasAny && cell == kAny;
      if (!any) possible = cell >= columns_[j].v->initialMin && cell <= columns_[j].v->initialMax;
      if (j == filled) {  // the variable's first place
        to[filled++] = cell;
      } else if (given.hasAny && to[j] == kAny) {
        to[j] = cell;
      } else {
        possible = possible && (any || to[j] == cell);
      }
    }
    if (possible) ++kept;
  }
  return kept;
}

int RowSet::sortRows(int rows, const int *cells, int *order) const {
  const std::int64_t n = columnCount_;
  const auto at = [=](int r) { return cells + r * n; };
  std::iota(order, order + rows, 0);
  const auto before = [=](int a, int b) { return std::lexicographical_compare(at(a), at(a) + n, at(b), at(b) + n); };
  if (!std::is_sorted(order, order + rows, before)) std::sort(order, order + rows, before);
  return static_cast<int>(
      std::unique(order, order + rows, [=](int a, int b) { return std::equal(at(a), at(a) + n, at(b)); }) - order);
}

namespace {

// A value and a row as one number, which sorts quickly: by value, then by row.
class Cell {
 public:
  Cell() = default;  // cppcheck-suppress uninitMemberVar; arrays of cells are filled later
  Cell(int value, int row) : key_(std::uint64_t{distance(kIntMin, value)} << 32 | static_cast<std::uint32_t>(row)) {}

  int value() const { return wrap(std::int64_t{kIntMin} + static_cast<std::int64_t>(key_ >> 32)); }
  int row() const { return static_cast<int>(static_cast<std::uint32_t>(key_)); }
  bool operator<(const Cell &other) const { return key_ < other.key_; }

 private:
  std::uint64_t key_;
};

// The cells of one value, rows ascending.
struct Group {
  const Cell *begin;
  const Cell *end;

  int firstWord() const { return begin->row() / kWordBits; }
  int words() const { return (end - 1)->row() / kWordBits - firstWord() + 1; }

  // Calls add(word, bits) for each word with rows.
  template <class Add>
  void visitBits(Add add) const {
    for (const Cell *cell = begin; cell != end;) {
      const int word = cell->row() / kWordBits;
      std::uint64_t bits = 0;
      for (; cell != end && cell->row() / kWordBits == word; ++cell)
        bits |= std::uint64_t{1} << (cell->row() % kWordBits);
      add(word, bits);
    }
  }
  int wordsWithRows() const {
    int count = 0;
    visitBits([&](int, std::uint64_t) { ++count; });
    return count;
  }
};

template <class Visit>
void visitGroups(const Cell *cells, int count, Visit visit) {
  for (int begin = 0, end = 0; begin < count; begin = end) {
    while (end < count && cells[end].value() == cells[begin].value()) ++end;
    visit(Group{cells + begin, cells + end});
  }
}

}  // namespace

// The cells of all columns, those of each one sorted; its cells for all values come last.
struct RowSet::Sorted {
  Buffer<Cell> cells;
  Buffer<int> plain;  // by column: how many of its cells have a value
  int rows;

  Sorted(int columns, int rowCount) : plain(columns), rows(rowCount) {
    if (plain) cells = Buffer<Cell>(std::uint64_t{static_cast<unsigned>(columns)} * static_cast<unsigned>(rows));
  }

  Cell *column(int j) const { return &cells.get()[std::int64_t{j} * rows]; }
  void load(int j, const int *from, std::int64_t stride, const int *order, bool hasAny) const {
    Cell *to = column(j);
    int last = rows;
    plain[j] = 0;
    for (int r = 0; r < rows; ++r) {
      const int value = from[order[r] * stride];
      to[hasAny && value == kAny ? --last : plain[j]++] = {value, r};
    }
    std::sort(to, to + plain[j]);
    std::reverse(to + plain[j], to + rows);
  }
  template <class Visit>
  void visitValues(int j, Visit visit) const {
    visitGroups(column(j), plain[j], visit);
  }
  template <class Visit>
  void visitAny(int j, Visit visit) const {
    visitGroups(column(j) + plain[j], rows - plain[j], visit);
  }
};

static bool isDense(const Group &group) { return group.words() <= RowSet::kRoom * group.wordsWithRows(); }

bool RowSet::makeColumns(const Sorted &sorted) {
  std::uint64_t values = 0;
  std::uint64_t dense = 0;
  std::uint64_t sparse = 0;
  std::uint64_t any = 0;
  for (int j = 0; j < columnCount_; ++j) {
    sorted.visitValues(j, [&](const Group &group) {
      ++values;
      (isDense(group) ? dense : sparse) +=
          static_cast<unsigned>(isDense(group) ? group.words() : group.wordsWithRows());
    });
    sorted.visitAny(j, [&](const Group &group) { any += static_cast<unsigned>(group.wordsWithRows()); });
  }
  if (dense > kIntMax || !make(values_, values) || !make(places_, values) || !make(residues_, values) ||
      !make(order_, values) || !make(placeOf_, values) || !make(dense_, dense) || !make(sparse_, sparse) ||
      !make(anyBits_, any))
    return false;
  std::fill_n(dense_.get(), dense, 0);
  return true;
}

bool RowSet::buildColumns(const Given &given, const int *cells, const int *order, int rows) {
  const Sorted sorted(columnCount_, rows);
  if (!sorted.cells) return false;
  for (int j = 0; j < columnCount_; ++j) sorted.load(j, cells + j, columnCount_, order, given.hasAny);
  if (!makeColumns(sorted)) return false;
  int value = 0;
  int denseAt = 0;
  int sparseAt = 0;
  RowBits *anyAt = anyBits_.get();
  for (int j = 0; j < columnCount_; ++j) {
    Column &column = columns_[j];
    column.begin = value;
    sorted.visitValues(j, [&](const Group &group) {
      const int first = group.firstWord();
      values_[value] = group.begin->value();
      order_[value] = placeOf_[value] = value;
      residues_[value] = {first, 0};
      if (isDense(group)) {
        places_[value++] = {denseAt, first, group.words()};
        group.visitBits([&](int word, std::uint64_t bits) { dense_[denseAt + word - first] = bits; });
        denseAt += group.words();
      } else {
        places_[value++] = {sparseAt, kSparse, group.wordsWithRows()};
        group.visitBits([&](int word, std::uint64_t bits) { sparse_[sparseAt++] = {word, bits}; });
      }
    });
    column.end = value;
    column.size.init(static_cast<std::uint64_t>(value - column.begin));
    column.anyBegin = anyAt;
    sorted.visitAny(j, [&](const Group &group) {
      group.visitBits([&](int word, std::uint64_t bits) { *anyAt++ = {word, bits}; });
    });
    column.anyEnd = anyAt;
  }
  return true;
}

bool RowSet::start(int rows) {
  rowCount_ = rows;
  wordCount_ = wordsFor(rows);
  const auto words = static_cast<unsigned>(wordCount_);
  if (!make(words_, words) || !make(index_, words) || !make(mask_, words)) return false;
  for (int k = 0; k < wordCount_; ++k) {
    words_[k].init(fullWord(k));
    index_[k] = k;
  }
  used_.init(static_cast<std::uint64_t>(wordCount_));
  return true;
}

std::uint64_t RowSet::fullWord(int k) const {
  const int left = rowCount_ - k * kWordBits;
  return left >= kWordBits ? ~std::uint64_t{0} : (std::uint64_t{1} << left) - 1;
}

bool RowSet::build(const Given &given) {
  const auto n = static_cast<unsigned>(given.n);
  const auto count = static_cast<unsigned>(given.count);
  Buffer<int> columnOf;
  Buffer<int> cells;
  Buffer<int> order;
  if (!make(columns_, n) || !make(columnOf, n) || !make(cells, std::uint64_t{n} * count) || !make(order, count))
    return false;
  columnCount_ = mergeColumns(given, columnOf.get());
  if (columnCount_ < 0) return false;
  const int rows = sortRows(mergeRows(given, columnOf.get(), cells.get()), cells.get(), order.get());
  return buildColumns(given, cells.get(), order.get(), rows) && start(rows);
}

// ----- updates

void RowSet::swap(int place, int other) const {
  std::swap(order_[place], order_[other]);
  placeOf_[order_[place]] = place;
  placeOf_[order_[other]] = other;
}

// -1 when the column does not have the value.
int RowSet::rankOf(const Column &column, int value) const {
  const int *begin = values_.get() + column.begin;
  const int *end = values_.get() + column.end;
  const int *found = std::lower_bound(begin, end, value);
  return found == end || *found != value ? -1 : static_cast<int>(found - values_.get());
}

// Values that have left the domain go behind those that have not; returns the number of these.
int RowSet::partition(const Column &column) const {
  if (isBound(column.v)) return partitionBound(column);
  int end = column.begin + column.size.number();
  for (int place = column.begin; place < end;) {
    if (contains(column.v, valueAt(place))) {
      ++place;
    } else {
      swap(place, --end);
    }
  }
  return end - column.begin;
}

int RowSet::partitionBound(const Column &column) const {
  const int rank = rankOf(column, valueOf(column.v));
  if (rank < 0 || placeOf_[rank] >= column.begin + column.size.number()) return 0;
  swap(column.begin, placeOf_[rank]);
  return 1;
}

template <class Visit>
bool RowSet::visitRows(int place, Visit visit) const {
  const Place &p = places_[order_[place]];
  const int used = used_.number();
  if (p.first == kSparse) {
    for (int i = p.at; i < p.at + p.words; ++i)
      if (!visit(sparse_[i].word, sparse_[i].bits)) return false;
  } else if (used < p.words) {
    for (int i = 0; i < used; ++i) {
      const int word = index_[i];
      if (word >= p.first && word - p.first < p.words && !visit(word, dense_[p.at + word - p.first])) return false;
    }
  } else {
    for (int i = 0; i < p.words; ++i)
      if (!visit(p.first + i, dense_[p.at + i])) return false;
  }
  return true;
}

bool RowSet::clearRowsOf(int place, const WordStamp &stamp) {
  return visitRows(place,
                   [&](int word, std::uint64_t bits) { return words_[word].set(words_[word].bits() & ~bits, stamp); });
}

template <class Bits>
bool RowSet::keepBits(const WordStamp &stamp, Bits bits) {
  const int used = used_.number();
  for (int i = 0; i < used; ++i) {
    ReversibleWord &word = words_[index_[i]];
    if (!word.set(word.bits() & bits(index_[i]), stamp)) return false;
  }
  return true;
}

bool RowSet::keepRowsOf(const Column &column, int inFront, const WordStamp &stamp) {
  if (inFront == 1 && column.anyBegin == column.anyEnd && places_[order_[column.begin]].first != kSparse)
    return keepRowsOfOne(places_[order_[column.begin]], stamp);
  for (int i = 0; i < used_.number(); ++i) mask_[index_[i]] = 0;
  for (const RowBits *b = column.anyBegin; b != column.anyEnd; ++b) mask_[b->word] |= b->bits;
  for (int place = column.begin; place < column.begin + inFront; ++place)
    visitRows(place, [&](int word, std::uint64_t bits) {
      mask_[word] |= bits;
      return true;
    });
  return keepBits(stamp, [this](int word) { return mask_[word]; });
}

// Without a mask: that of a variable that has been bound is the value's.
bool RowSet::keepRowsOfOne(const Place &p, const WordStamp &stamp) {
  const std::uint64_t *bits = dense_.get() + p.at;
  return keepBits(stamp, [&](int word) {
    const auto i = static_cast<unsigned>(word) - static_cast<unsigned>(p.first);
    return i < static_cast<unsigned>(p.words) ? bits[i] : 0;
  });
}

// A run that has failed leaves domains as they are. By the counts of values, which follow the domains unless a context
// has been accepted inside another one.
bool RowSet::lostNothing(const Column &column) const {
  return settled_ && column.anyBegin == column.anyEnd && column.v->count == column.size.number() &&
         !solver::acceptedInside;
}

// The size comes last: where memory ends before it, the next update does all of it again.
bool RowSet::updateColumn(Column &column, const WordStamp &stamp) {
  if (lostNothing(column)) return true;
  const int before = column.size.number();
  const int inFront = partition(column);
  const int gone = before - inFront;
  if (gone == 0) return true;
  ++changed_;
  lastChanged_ = &column;
  if (gone < inFront) {
    for (int place = column.begin + inFront; place < column.begin + before; ++place)
      if (!clearRowsOf(place, stamp)) return false;
  } else if (!keepRowsOf(column, inFront, stamp)) {
    return false;
  }
  return column.size.setNumber(inFront, stamp);
}

bool RowSet::sweepEmpty(const WordStamp &stamp) {
  int used = used_.number();
  for (int i = used - 1; i >= 0; --i)
    if (words_[index_[i]].bits() == 0) std::swap(index_[i], index_[--used]);
  return used_.setNumber(used, stamp);
}

bool RowSet::reset() {
  const WordStamp stamp = WordStamp::now();
  for (int k = 0; k < wordCount_; ++k)
    if (!words_[k].set(fullWord(k), stamp)) return false;
  for (int j = 0; j < columnCount_; ++j)
    if (!columns_[j].size.setNumber(columns_[j].end - columns_[j].begin, stamp)) return false;
  return used_.setNumber(wordCount_, stamp);
}

bool RowSet::update() {
  const bool anew = fresh_ || !seen_.kept();
  if (anew && !fresh_ && !reset()) return false;
  changed_ = anew ? columnCount_ + 1 : 0;
  const WordStamp stamp = WordStamp::now();
  for (int j = 0; j < columnCount_; ++j)
    if (!updateColumn(columns_[j], stamp)) return false;
  settled_ = false;  // until the run is through
  return changed_ == 0 || sweepEmpty(stamp);
}

// ----- questions

bool RowSet::anySupported(const Column &column) const {
  for (const RowBits *b = column.anyBegin; b != column.anyEnd; ++b)
    if ((words_[b->word].bits() & b->bits) != 0) return true;
  return false;
}

bool RowSet::findSupport(int place) {
  return !visitRows(place, [&](int word, std::uint64_t bits) {
    if ((words_[word].bits() & bits) == 0) return true;
    residues_[order_[place]] = {word, bits};
    return false;
  });
}

int RowSet::countRows(int place) const {
  int rows = 0;
  visitRows(place, [&](int word, std::uint64_t bits) {
    rows += std::popcount(words_[word].bits() & bits);
    return true;
  });
  return rows;
}

int RowSet::countRows() const {
  int rows = 0;
  for (int i = 0; i < used_.number(); ++i) rows += std::popcount(words_[index_[i]].bits());
  return rows;
}

bool RowSet::dropValue(Column &column, int place, const WordStamp &stamp) {
  const int size = column.size.number() - 1;
  swap(place, column.begin + size);
  return column.size.setNumber(size, stamp);
}

}  // namespace koru
