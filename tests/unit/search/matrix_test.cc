// SPDX-License-Identifier: MIT
// cs_searchMatrix and cs_searchMatrixFail: which rows and columns are asked for, and when.
#include <climits>

#include "support/kit/probe.h"
#include "support/kit/search_trace.h"
#include "unit/search/search_test.h"

namespace {

using namespace koru;
using namespace koru::test;

constexpr int kColumns = 2;

class MatrixTest : public SearchTest {
 protected:
  void SetUp() override {
    SearchTest::SetUp();
    lines.clear();
    score = [](int, int, int value) { return value; };
    for (int row = 0; row < 2; ++row) {
      for (int column = 0; column < kColumns; ++column) cells[row][column] = cs_createCSint(0, 1);
      matrix[row] = cells[row];
    }
  }

  // The first row with a free variable, and the first such variable in it.
  static int freeRow(CSint ***rows, int count, int extra) {
    int row = 0;
    while (row < count && firstFree(rows[row], extra) < 0) ++row;
    lines.push_back(lineOf("row", row < count ? row : -1));
    return row < count ? row : -1;
  }
  static int freeColumn(int row, CSint **cellsOfRow, int extra) {
    lines.push_back(lineOf("column", row, firstFree(cellsOfRow, extra)));
    return firstFree(cellsOfRow, extra);
  }
  static int criteria(int row, int column, int value) {
    lines.push_back(lineOf("score", row, column, value));
    return score(row, column, value);
  }
  bool search(int limit = 0) { return cs_searchMatrixFail(matrix, 2, kColumns, freeRow, freeColumn, criteria, limit); }
  void refuseLast() {
    accepts = never;
    ASSERT_TRUE(postRefuser(cells[1][1], accepts));
  }

  static inline std::vector<std::string> lines;
  static inline std::function<int(int, int, int)> score;
  CSint *cells[2][kColumns] = {};
  CSint **matrix[2] = {};
};

TEST_F(MatrixTest, TheNextRowIsAskedForOnceAValueIsAccepted) {
  ASSERT_TRUE(cs_EQ(cells[0][1], 1) && cs_EQ(cells[1][0], 1));
  score = [](int row, int, int value) { return row == 0 ? -value : value; };
  EXPECT_TRUE(cs_searchMatrix(matrix, 2, kColumns, freeRow, freeColumn, criteria));
  EXPECT_EQ(lines, linesOf("row 0\ncolumn 0 0\nscore 0 0 0\nscore 0 0 1\n"
                           "row 1\ncolumn 1 1\nscore 1 1 0\nscore 1 1 1\n"
                           "row -1"));
  EXPECT_EQ(cs_getValue(cells[0][0]), 1);
  EXPECT_EQ(cs_getValue(cells[1][1]), 0);
  expectCounters(2, 0);
  EXPECT_EQ(openContexts(), 2);
}

TEST_F(MatrixTest, NoRowAtTheStartIsASolution) {
  const auto none = [](CSint ***, int, int) { return -1; };
  EXPECT_TRUE(cs_searchMatrix(matrix, 2, kColumns, none, freeColumn, criteria));
  EXPECT_TRUE(lines.empty());
  expectCounters(0, 0);
  EXPECT_EQ(openContexts(), 0);
}

TEST_F(MatrixTest, ARowWithoutAFreeColumnIsLeftForTheNextOne) {
  static int next;
  next = 0;
  const auto eachRowOnce = [](CSint ***, int count, int) {
    lines.push_back(lineOf("row", next < count ? next : -1));
    return next < count ? next++ : -1;
  };
  for (auto &row : cells) ASSERT_TRUE(cs_EQ(row[0], 0) && cs_EQ(row[1], 0));
  EXPECT_TRUE(cs_searchMatrix(matrix, 2, kColumns, eachRowOnce, freeColumn, criteria));
  EXPECT_EQ(lines, linesOf("row 0\ncolumn 0 -1\nrow 1\ncolumn 1 -1\nrow -1"));
  expectCounters(0, 0);
}

TEST_F(MatrixTest, TheFindersGetTheMatrixTheRowsAndExtra) {
  static CSint ***givenMatrix;
  static CSint **givenRow;
  static int givenCount;
  static int givenExtra[2];
  givenRow = nullptr;
  const auto row = [](CSint ***rows, int count, int extra) {
    givenMatrix = rows;
    givenCount = count;
    givenExtra[0] = extra;
    return givenRow == nullptr ? 1 : -1;
  };
  const auto column = [](int, CSint **array, int extra) {
    givenRow = array;
    givenExtra[1] = extra;
    return -1;
  };
  EXPECT_TRUE(cs_searchMatrix(matrix, 2, -7, row, column, criteria));
  EXPECT_EQ(givenMatrix, matrix);
  EXPECT_EQ(givenCount, 2);
  EXPECT_EQ(givenRow, cells[1]);
  EXPECT_EQ(givenExtra[0], -7);
  EXPECT_EQ(givenExtra[1], -7);
}

TEST_F(MatrixTest, AnExhaustedTreeLeavesEverythingAsBefore) {
  refuseLast();
  EXPECT_FALSE(search());
  expectCounters(2 + 4 + 8 + 16, 16);
  EXPECT_EQ(openContexts(), 0);
  for (auto &row : cells)
    for (CSint *cell : row) EXPECT_EQ(values(cell), (std::vector{0, 1}));
}

TEST_F(MatrixTest, TheFailLimitLeavesTheFailingBranch) {
  refuseLast();
  EXPECT_FALSE(search(3));
  expectCounters(4 + 1 + 1 + 1, 3);
  EXPECT_EQ(openContexts(), 4);
  EXPECT_EQ(values(cells[1][0]), std::vector{1});
  cs_restoreAll();
  for (const int limit : {0, -1, INT_MIN}) {
    EXPECT_FALSE(search(limit));
    expectCounters(30, 16);
  }
}

TEST_F(MatrixTest, ACancelIsNoticedBeforeTheChoiceThatWasScored) {
  score = [](int, int, int) {
    cs_cancelSearch();
    return 0;
  };
  EXPECT_FALSE(search());
  expectCounters(1, 0);
  EXPECT_EQ(openContexts(), 1);
}

TEST_F(MatrixTest, AValueOfTheLargestScoreIsNeverTriedAndItsTurnIsAFail) {
  score = [](int, int, int value) { return value == 0 ? INT_MAX : 5; };
  ASSERT_TRUE(cs_EQ(cells[0][0], 0) && cs_EQ(cells[0][1], 0) && cs_EQ(cells[1][0], 0));
  refuseLast();
  EXPECT_FALSE(search());
  expectCounters(2, 2);
}

TEST_F(MatrixTest, ALevelWhoseBitArrayCannotBeHadFailsBeforeItOpensAContext) {
  {
    const FailingAllocation failing(0);
    EXPECT_FALSE(search());
    EXPECT_TRUE(FailingAllocation::failed());
  }
  EXPECT_EQ(memoryReports, 1);
  expectCounters(0, 0);
  EXPECT_EQ(openContexts(), 0);
}

TEST_F(MatrixTest, NullArgumentsFindNothing) {
  EXPECT_FALSE(cs_searchMatrix(matrix, 2, kColumns, nullptr, freeColumn, criteria));
  EXPECT_FALSE(cs_searchMatrix(matrix, 2, kColumns, freeRow, nullptr, criteria));
  EXPECT_FALSE(cs_searchMatrixFail(matrix, 2, kColumns, freeRow, freeColumn, nullptr, 2));
  EXPECT_TRUE(lines.empty());
  const auto row = [](CSint ***, int, int) { return 0; };
  const auto column = [](int, CSint **, int) { return 0; };
  EXPECT_FALSE(cs_searchMatrix(nullptr, 2, kColumns, row, column, criteria));
  matrix[0] = nullptr;
  EXPECT_FALSE(cs_searchMatrix(matrix, 2, kColumns, row, column, criteria));
  cells[0][0] = nullptr;
  matrix[0] = cells[0];
  EXPECT_FALSE(cs_searchMatrix(matrix, 2, kColumns, row, column, criteria));
  EXPECT_EQ(openContexts(), 0);
}

}  // namespace
