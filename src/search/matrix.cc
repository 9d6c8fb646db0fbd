// SPDX-License-Identifier: MIT
// cs_searchMatrix, cs_searchMatrixFail: the criteria search over rows of variables; a row is chosen first, then a
// column in it.
//
// Cost and state: as the criteria search.
// Deliberate: a chosen row that has no free column is left for another one, as often as the finder offers one, which so
// need not look into rows; the row of the next level is asked for as soon as a value was accepted, before that level
// begins.
#include "search/criteria.h"

namespace koru {

namespace {

struct MatrixSearch {
  CSint ***matrix;
  int rows;
  int extra;
  CSfindFreeRow selectRow;
  CSfindFreeVarInRow selectColumn;
  CSmatrixCriteria criteria;
  int failLimit;

  int nextRow() const { return selectRow(matrix, rows, extra); }
  CSint **rowAt(int row) const { return matrix != nullptr ? matrix[row] : nullptr; }

  bool label(int row) const {
    int column = -1;
    while (row >= 0 && (column = selectColumn(row, rowAt(row), extra)) < 0) row = nextRow();
    if (row < 0) return solved();
    CSint *v = rowAt(row) != nullptr ? rowAt(row)[column] : nullptr;
    return tryInScoreOrder(
        v, failLimit, [&](int value) { return criteria(row, column, value); }, [&] { return label(nextRow()); });
  }
};

}  // namespace
}  // namespace koru

bool cs_searchMatrix(CSint ***matrix, int nbRows, int extra, CSfindFreeRow findFreeRow,
                     CSfindFreeVarInRow findFreeVarInRow, CSmatrixCriteria criteria) {
  return cs_searchMatrixFail(matrix, nbRows, extra, findFreeRow, findFreeVarInRow, criteria, 0);
}

bool cs_searchMatrixFail(CSint ***matrix, int nbRows, int extra, CSfindFreeRow findFreeRow,
                         CSfindFreeVarInRow findFreeVarInRow, CSmatrixCriteria criteria, int nbFailsMax) {
  const koru::SearchRun run;
  if (findFreeRow == nullptr || findFreeVarInRow == nullptr || criteria == nullptr) return run.refused();
  const koru::MatrixSearch search{matrix, nbRows, extra, findFreeRow, findFreeVarInRow, criteria, nbFailsMax};
  const bool found = search.label(search.nextRow());
  return run.ended(found, koru::failLimitReached(nbFailsMax));
}
