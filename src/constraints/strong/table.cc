// SPDX-License-Identifier: MIT
// cs_Table, cs_ShortTable: the variables take the values of one of the rows of a table. In a short table a cell CS_ANY
// stands for all values.
// Consistency: domain, a variable that stands several times included.
// Cost: a run of O(words with rows of the values that have gone, or of those left) and a look per value, O(words) where
// the row that supported it has gone.
// State: the rows that are left, trailed words; RowSet.
// Wakes: at every change.
#include "constraints/strong/table.h"

#include "core/domain_walk.h"
#include "koru_extras.h"

namespace koru::table {

// ----- rules

// The domain becomes the front. Bounds first, so that they move once; what the table does not have at all goes at the
// first time, later just what has been dropped.
static bool keepFront(RowSet &rows, const RowSet::Column &column) {
  CSint *v = column.v;
  const int left = rows.size(column);
  if (left == 1) return (isBound(v) || bindValue(v, rows.lowestInFront(column))) && rows.close(column);
  if (!narrowMin(v, rows.lowestInFront(column)) || !narrowMax(v, rows.highestInFront(column))) return false;
  const auto remove = [&](int rank) { return removeValue(v, rows.valueAt(column, rank)); };
  for (int k = 0; v->count != left && k < column.frontWords(); ++k)
    if (!forEachBit(k * 64, rows.dropped(k), remove)) return false;
  if (v->count == left) return true;
  return forEachValue(v, [&](int value) { return rows.isInFront(column, value) || removeValue(v, value); });
}

static bool filterColumn(RowSet &rows, const RowSet::Column &column) {
  if (rows.isOnlyChange(column) || rows.anySupported(column)) return true;
  const int before = rows.size(column);
  if (!rows.dropUnsupported(column)) return false;
  const int left = rows.size(column);
  return (left == before && column.v->count == left) || keepFront(rows, column);
}

bool filter(Table &c) {
  if (!c.rows.update() || c.rows.empty()) return false;
  if (!c.rows.unchanged() &&
      !c.rows.forEachOpen([&c](const RowSet::Column &column) { return filterColumn(c.rows, column); }))
    return false;
  c.rows.noteSeen(true);
  return true;
}

// ----- posting

static bool post(const Poster &poster, const GivenRows &given) {
  if (!given.isSound()) return false;
  Posting posting{poster};
  if (!posting || given.count == 0) return posting && given.count > 0;
  RowSet rows;
  if (!rows.build(given)) return false;
  auto c = posting.add(kTable, Table{{}, std::move(rows)});
  for (int j = 0; posting && j < c->rows.columns(); ++j) c.attach(c->rows.column(j).v, j);
  return posting && runSoon(*c);
}

}  // namespace koru::table

bool cs_Table(CSint **vars, int n, const int *rows, int count) {
  return koru::leftOut("cs_Table") || koru::door(koru::table::post("cs_Table", {vars, n, rows, count, false}));
}

bool cs_ShortTable(CSint **vars, int n, const int *rows, int count) {
  return koru::leftOut("cs_ShortTable") || koru::door(koru::table::post("cs_ShortTable", {vars, n, rows, count, true}));
}
