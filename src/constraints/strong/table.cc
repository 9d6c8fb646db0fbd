// SPDX-License-Identifier: MIT
// cs_Table, cs_ShortTable: the variables take the values of one of the rows of a table. In a short table a cell CS_ANY
// stands for all values.
// Consistency: domain, a variable that stands several times included.
// Cost: a run of O(words with rows of the values that have gone, or of those left) and a look per value, O(words) where
// the row that supported it has gone.
// State: the rows that are left, trailed words; RowSet.
// Wakes: at every change.
#include "constraints/strong/table.h"

#include <algorithm>

#include "core/domain_walk.h"
#include "koru_extras.h"

namespace koru::table {

// ----- rules

// Values without a row go behind those in front.
static bool dropUnsupported(RowSet &rows, RowSet::Column &column) {
  for (int place = column.begin; place < column.begin + column.size.number();) {
    if (rows.isSupported(place))
      ++place;
    else if (!rows.dropValue(column, place, WordStamp::now()))
      return false;
  }
  return true;
}

// Bounds first, so that they move once.
static bool narrowToFront(const RowSet &rows, const RowSet::Column &column) {
  int min = kIntMax;
  int max = kIntMin;
  for (int place = column.begin; place < column.begin + column.size.number(); ++place) {
    min = std::min(min, rows.valueAt(place));
    max = std::max(max, rows.valueAt(place));
  }
  return min <= max && narrowMin(column.v, min) && narrowMax(column.v, max);
}

// What the table does not have at all goes at the first time; later just what has been dropped.
static bool filterColumn(RowSet &rows, RowSet::Column &column) {
  CSint *v = column.v;
  if (rows.anySupported(column) || (isBound(v) && column.size.number() == 1)) return true;
  const int before = column.size.number();
  if (!dropUnsupported(rows, column)) return false;
  const int left = column.size.number();
  if (v->count == left && left == before) return true;
  if (!narrowToFront(rows, column)) return false;
  for (int place = column.begin + left; place < column.begin + before; ++place)
    if (!removeValue(v, rows.valueAt(place))) return false;
  if (v->count == left) return true;
  return forEachValue(v, [&](int value) { return rows.isInFront(column, value) || removeValue(v, value); });
}

bool filter(Table &c) {
  if (!c.rows.update() || c.rows.empty()) return false;
  for (int j = 0; j < c.rows.columns() && !c.rows.unchanged(); ++j)
    if (!c.rows.isOnlyChange(c.rows.column(j)) && !filterColumn(c.rows, c.rows.column(j))) return false;
  c.rows.noteSeen(true);
  return true;
}

// ----- posting

static bool post(const Poster &poster, const RowSet::Given &given) {
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
  return koru::door(koru::table::post("cs_Table", {vars, n, rows, count, false}));
}

bool cs_ShortTable(CSint **vars, int n, const int *rows, int count) {
  return koru::door(koru::table::post("cs_ShortTable", {vars, n, rows, count, true}));
}
