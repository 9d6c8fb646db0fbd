// SPDX-License-Identifier: MIT
// cs_NotTable: the variables take the values of none of the rows of a table (Verhaeghe, Lecoutre, Schaus, Extending
// compact-table to negative and short tables, 2017).
// Consistency: domain, a variable that stands several times included: a value goes when the rows with it are as many as
// there are values for the other variables.
// Cost: a run of O(n), and O(words) per value of a variable once the others have no more combinations than rows are
// left. State: the rows that are left, trailed words; RowSet. Wakes: at every change.
#include <algorithm>

#include "constraints/strong/row_set.h"
#include "core/post.h"
#include "koru_extras.h"

namespace koru::not_table {

constexpr std::int64_t kMany = std::int64_t{1} << 62;

struct NotTable : Deferred {
  RowSet rows;
};

// Never less than there are: a count may have been written back too high, or have wrapped.
static std::int64_t sizeOf(const CSint *v) {
  const std::int64_t width = std::int64_t{v->max} - v->min + 1;
  return v->bits == nullptr || v->count <= 0 ? width : std::min<std::int64_t>(width, v->count);
}

// Of all variables; kMany stands for that and more.
static std::int64_t combinations(const RowSet &rows) {
  std::int64_t product = 1;
  for (int j = 0; j < rows.columns(); ++j) {
    const std::int64_t size = sizeOf(rows.column(j).v);
    if (product > kMany / size) return kMany;
    product *= size;
  }
  return product;
}

// Removes the values of which every combination with the others is forbidden.
static bool filterColumn(const RowSet &rows, const RowSet::Column &column, std::int64_t others, bool &changed) {
  const auto keeps = [&](int rank) {
    if (rows.countRows(column, rank) != others) return true;
    changed = true;
    return removeValue(column.v, rows.valueAt(column, rank));
  };
  for (int k = 0; k < column.frontWords(); ++k)
    if (!forEachBit(k * 64, rows.front(column, k), keeps)) return false;
  return true;
}

// What one column loses, the rows and the combinations of the others lose too.
static bool filterOnce(RowSet &rows, bool &changed) {
  if (!rows.update()) return false;
  const std::int64_t left = rows.countRows();
  if (left == 0) return true;
  for (int j = 0; j < rows.columns() && !changed; ++j) {
    const std::int64_t all = combinations(rows);
    const std::int64_t size = sizeOf(rows.column(j).v);
    if (all >= kMany || all / size > left) continue;
    if (!filterColumn(rows, rows.column(j), all / size, changed)) return false;
  }
  return true;
}

static bool filter(NotTable &c) {
  for (bool changed = true; changed;) {
    changed = false;
    if (!filterOnce(c.rows, changed)) return false;
  }
  c.rows.noteSeen(false);
  return true;
}

constexpr auto kTable = deferred<filter>(Rank::kQuadratic);

static bool post(const Poster &poster, const GivenRows &given) {
  if (!given.isSound()) return false;
  Posting posting{poster};
  if (!posting || given.count == 0) return posting && given.count == 0;
  RowSet rows;
  if (!rows.build(given)) return false;
  auto c = posting.add(kTable, NotTable{{}, std::move(rows)});
  for (int j = 0; posting && j < c->rows.columns(); ++j) c.attach(c->rows.column(j).v, j);
  return posting && runSoon(*c);
}

}  // namespace koru::not_table

bool cs_NotTable(CSint **vars, int n, const int *rows, int count) {
  return koru::leftOut("cs_NotTable") ||
         koru::door(koru::not_table::post("cs_NotTable", {vars, n, rows, count, false}));
}
