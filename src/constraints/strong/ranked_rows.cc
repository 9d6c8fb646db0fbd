// SPDX-License-Identifier: MIT
#include "constraints/strong/ranked_rows.h"

#include <algorithm>
#include <functional>
#include <numeric>

#include "core/post.h"

namespace koru {

bool GivenRows::isSound() const {
  if (n < 1 || count < 0 || std::int64_t{n} * count > kMostCells) return false;
  return vars != nullptr && allPresent(vars, n) && (cells != nullptr || count == 0);
}

// ----- columns and rows

// Equal variables get the same column, in the order of their first positions.
int RankedRows::mergeColumns(const GivenRows &given, int *columnOf) {
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
    columns_[merged] = {vars[i], 0, 0, true};
    columnOf[i] = merged++;
  }
  return merged;
}

// False when the row can never hold.
bool RankedRows::takeRow(const GivenRows &given, const int *columnOf, const int *from, int row) {
  for (int i = 0, filled = 0; i < given.n; ++i) {
    const int value = from[i];
    const int j = columnOf[i];
    const bool any = isAny(value);
    if (!any && (value < columns_[j].v->initialMin || value > columns_[j].v->initialMax)) return false;
    int &cell = cells(j)[row];
    if (j == filled) {  // the variable's first place
      cell = value;
      ++filled;
    } else if (isAny(cell)) {
      cell = value;
    } else if (!any && cell != value) {
      return false;
    }
  }
  return true;
}

int RankedRows::takeRows(const GivenRows &given, const int *columnOf) {
  int taken = 0;
  for (int r = 0; r < given.count; ++r)
    if (takeRow(given, columnOf, given.cells + std::int64_t{r} * given.n, taken)) ++taken;
  return taken;
}

// ----- ranks

// Makes room for the values of a column. False when memory is exhausted (reported), or there are too many.
bool RankedRows::addColumn(Column &column, int ranks) {
  if (std::int64_t{valueCount_} + ranks > kIntMax) return false;  // GCOVR_EXCL_BR_LINE: more than tests have memory for
  column.begin = valueCount_;
  column.ranks = ranks;
  valueCount_ += ranks;
  if (valueCount_ <= valueRoom_) return true;
  valueRoom_ = static_cast<int>(std::clamp<std::int64_t>(2 * std::int64_t{valueRoom_}, valueCount_, kIntMax));
  Buffer<int> larger(valueRoom_);
  if (!larger) return false;
  std::copy_n(values_.get(), column.begin, larger.get());
  values_ = std::move(larger);
  return true;
}

// Values become ranks, in place.
bool RankedRows::rank(int j) {
  const int *const cells = this->cells(j);
  int least = kIntMax;
  int greatest = kIntMin;
  int plain = 0;
  for (int r = 0; r < rows_; ++r) {
    if (isAny(cells[r])) continue;
    ++plain;
    least = std::min(least, cells[r]);
    greatest = std::max(greatest, cells[r]);
  }
  if (plain == 0) return rankNear(j, 0, 0);
  const std::int64_t span = std::int64_t{greatest} - least + 1;
  if (span > 4 * std::int64_t{rows_} + 64) return rankFar(j, plain);
  return rankNear(j, least, static_cast<int>(span));
}

// By an array over the span, where values lie close to one another.
bool RankedRows::rankNear(int j, int least, int span) {
  Column &column = columns_[j];
  int *const cells = this->cells(j);
  const Buffer<int> rankOf(span);
  if (!rankOf) return false;
  std::fill_n(rankOf.get(), span, kAnyRank);
  for (int r = 0; r < rows_; ++r)
    if (!isAny(cells[r])) rankOf[cells[r] - least] = 0;
  const int present = span - static_cast<int>(std::count(rankOf.get(), rankOf.get() + span, kAnyRank));
  column.isRange = span <= 2 * std::int64_t{present} + 16;
  if (!addColumn(column, column.isRange ? span : present)) return false;
  for (int offset = 0, rank = 0; offset < span; ++offset) {
    if (rankOf[offset] == kAnyRank && !column.isRange) continue;
    values_[column.begin + rank] = least + offset;
    rankOf[offset] = rank++;
  }
  for (int r = 0; r < rows_; ++r) cells[r] = isAny(cells[r]) ? kAnyRank : rankOf[cells[r] - least];
  return true;
}

// By a search among the values in order.
bool RankedRows::rankFar(int j, int plain) {
  Column &column = columns_[j];
  int *const cells = this->cells(j);
  const Buffer<int> sorted(plain);
  if (!sorted) return false;
  int *const begin = sorted.get();
  std::remove_copy_if(cells, cells + rows_, begin, [this](int value) { return isAny(value); });
  std::sort(begin, begin + plain);
  const int *const end = std::unique(begin, begin + plain);
  column.isRange = false;
  if (!addColumn(column, static_cast<int>(end - begin))) return false;
  std::copy(static_cast<const int *>(begin), end, values_.get() + column.begin);
  for (int r = 0; r < rows_; ++r)
    cells[r] = isAny(cells[r])
                   ? kAnyRank
                   : static_cast<int>(std::lower_bound(static_cast<const int *>(begin), end, cells[r]) - begin);
  return true;
}

// ----- order

// The k-th row is the one before it once more.
bool RankedRows::isRepeated(const int *order, int k) const {
  for (int j = 0; j < columnCount_; ++j)
    if (cells(j)[order[k]] != cells(j)[order[k - 1]]) return false;
  return true;
}

// By columns, the last one first, each time keeping the order of equal ranks.
bool RankedRows::sortRows() {
  int most = 0;
  for (int j = 0; j < columnCount_; ++j) most = std::max(most, columns_[j].ranks);
  Buffer<int> order(rows_);
  Buffer<int> sorted;
  Buffer<int> starts;
  if (!order || !make(sorted, static_cast<unsigned>(rows_)) || !make(starts, static_cast<unsigned>(most) + 2))
    return false;
  std::iota(order.get(), order.get() + rows_, 0);
  for (int j = columnCount_ - 1; j >= 0; --j) {
    const int *const ranks = cells(j);
    std::fill_n(starts.get(), columns_[j].ranks + 2, 0);
    for (int r = 0; r < rows_; ++r) ++starts[ranks[r] + 2];
    for (int rank = 0; rank < columns_[j].ranks; ++rank) starts[rank + 1] += starts[rank];
    for (int k = 0; k < rows_; ++k) sorted[starts[ranks[order[k]] + 1]++] = order[k];
    std::swap(order, sorted);
  }
  int kept = 0;
  for (int k = 0; k < rows_; ++k)
    if (k == 0 || !isRepeated(order.get(), k)) sorted[kept++] = order[k];
  if (!make(ordered_, static_cast<unsigned>(columnCount_) * std::uint64_t{static_cast<unsigned>(kept)})) return false;
  rows_ = kept;
  for (int j = 0; j < columnCount_; ++j) {
    int *const to = ordered_.get() + std::int64_t{j} * kept;
    for (int k = 0; k < kept; ++k) to[k] = cells(j)[sorted[k]];
  }
  return true;
}

bool RankedRows::build(const GivenRows &given) {
  const auto n = static_cast<unsigned>(given.n);
  Buffer<int> columnOf;
  room_ = given.count;
  hasAny_ = given.hasAny;
  if (!make(columns_, n) || !make(columnOf, n) || !make(cells_, std::uint64_t{n} * static_cast<unsigned>(given.count)))
    return false;
  columnCount_ = mergeColumns(given, columnOf.get());
  if (columnCount_ < 0) return false;
  rows_ = takeRows(given, columnOf.get());
  for (int j = 0; j < columnCount_; ++j)
    if (!rank(j)) return false;
  if (!sortRows()) return false;
  cells_ = {};
  return true;
}

}  // namespace koru
