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
  std::sort(order, order + rows,
            [=](int a, int b) { return std::lexicographical_compare(at(a), at(a) + n, at(b), at(b) + n); });
  return static_cast<int>(
      std::unique(order, order + rows, [=](int a, int b) { return std::equal(at(a), at(a) + n, at(b)); }) - order);
}

namespace {

struct Cell {
  int value;
  int row;
};

// Calls `start` for each new value and `add` for each word with its bits.
template <class Start, class Add>
void visitBits(const Cell *cells, int count, Start start, Add add) {
  for (int i = 0; i < count;) {
    if (i == 0 || cells[i].value != cells[i - 1].value) start(cells[i].value);
    const int value = cells[i].value;
    RowBits bits{cells[i].row / kWordBits, 0};
    for (; i < count && cells[i].value == value && cells[i].row / kWordBits == bits.word; ++i)
      bits.bits |= std::uint64_t{1} << (cells[i].row % kWordBits);
    add(bits);
  }
}

}  // namespace

// Sorted by value, rows ascending; cells for all values come last.
struct RowSet::Sorted {
  Buffer<Cell> cells;
  int rows;
  bool hasAny;

  int load(const int *from, std::int64_t stride, const int *order) {
    int plain = 0;
    int any = rows;
    for (int r = 0; r < rows; ++r) {
      const int value = from[order[r] * stride];
      if (!hasAny || value != kAny) cells[plain++] = {value, r};
    }
    for (int r = rows - 1; r >= 0; --r)
      if (hasAny && from[order[r] * stride] == kAny) cells[--any] = {kAny, r};
    std::sort(cells.get(), cells.get() + plain,
              [](const Cell &a, const Cell &b) { return a.value != b.value ? a.value < b.value : a.row < b.row; });
    return plain;
  }
};

bool RowSet::buildColumns(const Given &given, const int *cells, const int *order, int rows) {
  Sorted sorted{Buffer<Cell>(rows), rows, given.hasAny};
  if (!sorted.cells) return false;
  std::uint64_t values = 0;
  std::uint64_t bits = 0;
  std::uint64_t anyBits = 0;
  for (int j = 0; j < columnCount_; ++j) {
    const int plain = sorted.load(cells + j, columnCount_, order);
    visitBits(
        sorted.cells.get(), plain, [&](int) { ++values; }, [&](const RowBits &) { ++bits; });
    visitBits(
        sorted.cells.get() + plain, rows - plain, [](int) {}, [&](const RowBits &) { ++anyBits; });
  }
  if (!make(values_, values) || !make(bitsAt_, values + 1) || !make(residue_, values) || !make(order_, values) ||
      !make(placeOf_, values) || !make(bits_, bits) || !make(anyBits_, anyBits))
    return false;
  int value = 0;
  int bit = 0;
  RowBits *any = anyBits_.get();
  for (int j = 0; j < columnCount_; ++j) {
    Column &column = columns_[j];
    const int plain = sorted.load(cells + j, columnCount_, order);
    column.begin = value;
    visitBits(
        sorted.cells.get(), plain,
        [&](int v) {
          values_[value] = v;
          order_[value] = placeOf_[value] = value;
          residue_[value] = 0;
          bitsAt_[value++] = bit;
        },
        [&](const RowBits &b) { bits_[bit++] = b; });
    column.end = value;
    column.size.init(static_cast<std::uint64_t>(value - column.begin));
    column.anyBegin = any;
    visitBits(
        sorted.cells.get() + plain, rows - plain, [](int) {}, [&](const RowBits &b) { *any++ = b; });
    column.anyEnd = any;
  }
  bitsAt_[value] = bit;
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

// Values that have left the domain go behind those that have not; returns the number of these.
int RowSet::partition(const Column &column) const {
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

bool RowSet::clearRowsOf(int place, const WordStamp &stamp) {
  for (const RowBits *b = bitsBegin(place); b != bitsEnd(place); ++b)
    if (!words_[b->word].set(words_[b->word].bits() & ~b->bits, stamp)) return false;
  return true;
}

bool RowSet::keepRowsOf(const Column &column, int inFront, const WordStamp &stamp) {
  for (int i = 0; i < used_.number(); ++i) mask_[index_[i]] = 0;
  const auto add = [&](const RowBits *begin, const RowBits *end) {
    for (; begin != end; ++begin) mask_[begin->word] |= begin->bits;
  };
  add(column.anyBegin, column.anyEnd);
  for (int place = column.begin; place < column.begin + inFront; ++place) add(bitsBegin(place), bitsEnd(place));
  for (int i = 0; i < used_.number(); ++i) {
    ReversibleWord &word = words_[index_[i]];
    if (!word.set(word.bits() & mask_[index_[i]], stamp)) return false;
  }
  return true;
}

// The size comes last: where memory ends before it, the next update does all of it again.
bool RowSet::updateColumn(Column &column, const WordStamp &stamp) {
  const int before = column.size.number();
  const int inFront = partition(column);
  const int gone = before - inFront;
  if (gone == 0) return true;
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
  if (!seen_.kept() && !reset()) return false;
  const WordStamp stamp = WordStamp::now();
  for (int j = 0; j < columnCount_; ++j)
    if (!updateColumn(columns_[j], stamp)) return false;
  return sweepEmpty(stamp);
}

// ----- questions

bool RowSet::meets(const RowBits *begin, const RowBits *end) const {
  for (; begin != end; ++begin)
    if ((words_[begin->word].bits() & begin->bits) != 0) return true;
  return false;
}

bool RowSet::isSupported(int place) {
  int &residue = residue_[order_[place]];
  const RowBits *begin = bitsBegin(place);
  if ((words_[begin[residue].word].bits() & begin[residue].bits) != 0) return true;
  for (const RowBits *b = begin; b != bitsEnd(place); ++b) {
    if ((words_[b->word].bits() & b->bits) == 0) continue;
    residue = static_cast<int>(b - begin);
    return true;
  }
  return false;
}

int RowSet::countRows(int place) const {
  int rows = 0;
  for (const RowBits *b = bitsBegin(place); b != bitsEnd(place); ++b)
    rows += std::popcount(words_[b->word].bits() & b->bits);
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

bool RowSet::isInFront(const Column &column, int value) const {
  const int *begin = values_.get() + column.begin;
  const int *end = values_.get() + column.end;
  const int *found = std::lower_bound(begin, end, value);
  if (found == end || *found != value) return false;
  return placeOf_[static_cast<int>(found - values_.get())] < column.begin + column.size.number();
}

}  // namespace koru
