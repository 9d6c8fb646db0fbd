// SPDX-License-Identifier: MIT
// RankedRows and RowSet by themselves: ranks, the order of rows, what an update keeps.
#include "constraints/strong/row_set.h"

#include <algorithm>
#include <random>
#include <set>

#include "support/kit/solver_test.h"
#include "unit/core/allocation_rule.h"

namespace {

using namespace koru;
using namespace koru::test;

using Rows = std::vector<std::vector<int>>;

std::vector<int> flat(const Rows &rows) {
  std::vector<int> cells;
  for (const auto &row : rows) cells.insert(cells.end(), row.begin(), row.end());
  return cells;
}

class RankedRowsTest : public SolverTest {
 protected:
  void build(const std::vector<CSint *> &vars, const Rows &table, bool hasAny = false) {
    const std::vector<int> cells = flat(table);
    rows = RankedRows();
    ASSERT_TRUE(
        rows.build({vars.data(), static_cast<int>(vars.size()), cells.data(), static_cast<int>(table.size()), hasAny}));
    ranks.clear();
    for (int r = 0; r < rows.rows(); ++r) {
      ranks.emplace_back();
      for (int j = 0; j < rows.columns(); ++j) ranks.back().push_back(rows.ranks(j)[r]);
    }
    columns.clear();
    const Buffer<int> all = rows.takeValues();
    for (int j = 0; j < rows.columns(); ++j) {
      const RankedRows::Column &column = rows.column(j);
      columns.emplace_back(all.get() + column.begin, all.get() + column.begin + column.ranks);
    }
  }

  RankedRows rows;
  Rows ranks;
  Rows columns;  // their values
};

TEST_F(RankedRowsTest, ValuesCloseToOneAnotherAreARangeWithGaps) {
  CSint *x = cs_createCSint(0, 99);
  CSint *y = cs_createCSint(-9, 99);
  build({x, y}, {{7, -2}, {5, 0}, {9, -1}, {5, -2}});
  EXPECT_TRUE(rows.column(0).isRange && rows.column(1).isRange);
  EXPECT_EQ(columns, (Rows{{5, 6, 7, 8, 9}, {-2, -1, 0}}));
  EXPECT_EQ(ranks, (Rows{{0, 0}, {0, 2}, {2, 0}, {4, 1}}));
}

TEST_F(RankedRowsTest, ValuesFarFromOneAnotherAreCounted) {
  CSint *x = cs_createCSint(0, 1000000);
  CSint *y = cs_createCSint(0, 99);
  build({x, y}, {{1000000, 60}, {0, 0}, {400, 60}, {400, 0}});
  EXPECT_FALSE(rows.column(0).isRange) << "too far for an array over the span";
  EXPECT_FALSE(rows.column(1).isRange) << "mostly gaps";
  EXPECT_EQ(columns, (Rows{{0, 400, 1000000}, {0, 60}}));
  EXPECT_EQ(ranks, (Rows{{0, 0}, {1, 0}, {1, 1}, {2, 1}}));
}

TEST_F(RankedRowsTest, TheEndsOfTheIntsHaveRanks) {
  CSint *x = cs_createCSint(kIntMin, kIntMax);
  build({x}, {{kIntMax}, {kIntMin}, {0}});
  EXPECT_EQ(columns, (Rows{{kIntMin, 0, kIntMax}}));
}

TEST_F(RankedRowsTest, RowsAreOrderedOnceEachAndWithoutThoseThatCannotHold) {
  CSint *x = cs_createCSint(1, 3);
  CSint *y = cs_createCSint(1, 3);
  build({x, y, x}, {{3, 1, 3}, {1, 2, 2}, {2, 4, 2}, {1, 1, 1}, {3, 1, 3}, {0, 1, 0}});
  EXPECT_EQ(rows.columns(), 2);
  EXPECT_EQ(ranks, (Rows{{0, 0}, {2, 0}}));
}

TEST_F(RankedRowsTest, CellsForAllValuesComeFirst) {
  CSint *x = cs_createCSint(0, 9);
  CSint *y = cs_createCSint(0, 9);
  constexpr int any = GivenRows::kAny;
  constexpr int all = RankedRows::kAnyRank;
  build({x, y, y}, {{4, any, 3}, {any, 3, any}, {5, any, any}, {4, 2, 3}}, true);
  EXPECT_EQ(ranks, (Rows{{all, 0}, {0, 0}, {1, all}}));
  build({x, y}, {{any, 300}, {any, any}}, true);
  EXPECT_EQ(columns, (Rows{{}, {}})) << "300 cannot be";
  build({x, fromValues({0, 5000})}, {{any, 0}, {2, any}, {2, 5000}}, true);
  EXPECT_EQ(columns, (Rows{{2}, {0, 5000}}));
  EXPECT_EQ(ranks, (Rows{{all, 0}, {0, all}, {0, 1}}));
}

TEST_F(RankedRowsTest, ManyRowsAreInLexicographicOrder) {
  std::mt19937 random(3);
  std::vector<CSint *> vars;
  for (int i = 0; i < 4; ++i) vars.push_back(cs_createCSint(0, 20000));
  Rows table;
  for (int r = 0; r < 3000; ++r) {
    table.emplace_back();
    for (const unsigned values : {3U, 9U, 300U, 20000U}) table.back().push_back(static_cast<int>(random() % values));
  }
  build(vars, table);
  const std::set<std::vector<int>> once(table.begin(), table.end());
  EXPECT_EQ(once.size(), ranks.size());
  EXPECT_TRUE(std::is_sorted(ranks.begin(), ranks.end()));
  for (auto [row, r] = std::pair{once.begin(), std::size_t{0}}; r < ranks.size(); ++row, ++r)
    for (std::size_t j = 0; j < 4; ++j) ASSERT_EQ(columns[j][static_cast<std::size_t>(ranks[r][j])], (*row)[j]);
}

// ----- updates

// How the bits of values are kept depends on how many words of rows there are, and how they lie.
struct Shape {
  int rows;
  int values;    // of the second column; the first has one for each ten rows
  bool aScalar;  // the third column is 0 but for the first and the last row
};

class RowSetTest : public SolverTest, public ::testing::WithParamInterface<Shape> {
 protected:
  void SetUp() override {
    SolverTest::SetUp();
    const Shape &shape = GetParam();
    for (int r = 0; r < shape.rows; ++r)
      table.push_back({r / 10, r % shape.values, shape.aScalar && r > 0 && r + 1 < shape.rows ? 0 : 1});
    std::sort(table.begin(), table.end());
    table.erase(std::unique(table.begin(), table.end()), table.end());
    vars = {cs_createCSint(0, shape.rows / 10), cs_createCSint(0, shape.values), cs_createCSint(0, 1)};
    const std::vector<int> cells = flat(table);
    ASSERT_TRUE(set.build({vars.data(), 3, cells.data(), static_cast<int>(table.size()), false}));
  }
  int allowed() const {
    return static_cast<int>(std::count_if(table.begin(), table.end(), [this](const std::vector<int> &row) {
      for (std::size_t j = 0; j < 3; ++j)
        if (!cs_isIn(vars[j], row[j])) return false;
      return true;
    }));
  }
  void update() {
    ASSERT_TRUE(set.update());
    set.noteSeen(false);
    ASSERT_EQ(set.countRows(), allowed());
    ASSERT_EQ(set.empty(), allowed() == 0);
  }

  Rows table;
  std::vector<CSint *> vars;
  RowSet set;
};

INSTANTIATE_TEST_SUITE_P(All, RowSetTest,
                         ::testing::Values(Shape{7, 3, true}, Shape{500, 4, false}, Shape{1000, 150, true},
                                           Shape{5000, 7, true}, Shape{5000, 40, false}, Shape{5000, 900, false}));

TEST_P(RowSetTest, RowsThatTheDomainsAllowAreLeftAfterEveryStep) {
  std::mt19937 random(11);
  update();
  for (int step = 0; step < 400; ++step) {
    if (random() % 4 == 0) {
      cs_restoreContext();
    } else {
      cs_saveContext();
      CSint *v = vars[random() % 3];
      const int value =
          cs_getMin(v) + static_cast<int>(random() % (1U + static_cast<unsigned>(cs_getMax(v) - cs_getMin(v))));
      const unsigned choice = random() % 8;
      if (!(choice == 0 ? cs_EQ(v, value) : choice == 1 ? cs_LE(v, value) : cs_NEQ(v, value))) cs_restoreContext();
    }
    update();
  }
}

TEST_P(RowSetTest, ValuesWithoutRowsAreDropped) {
  update();
  for (const std::size_t bound : {0U, 1U}) {
    cs_saveContext();
    ASSERT_TRUE(cs_EQ(vars[bound], 0));
    ASSERT_TRUE(set.update());
    const std::size_t other = 1 - bound;
    const RowSet::Column &column = set.column(static_cast<int>(other));
    ASSERT_TRUE(set.dropUnsupported(column));
    const auto has = [&](int value) {
      return std::any_of(table.begin(), table.end(),
                         [&](const auto &row) { return row[other] == value && row[bound] == 0; });
    };
    int size = 0;
    for (int value = 0; value <= cs_getMax(vars[other]); ++value) {
      EXPECT_EQ(set.isInFront(column, value), has(value)) << value;
      size += has(value);
    }
    EXPECT_EQ(set.size(column), size);
    EXPECT_TRUE(has(set.lowestInFront(column)) && has(set.highestInFront(column)));
    cs_restoreContext();
  }
}

// More columns than a word has bits.
TEST_F(RankedRowsTest, ManyColumnsAreClosedAsTheyAreBound) {
  std::vector<CSint *> vars;
  for (int j = 0; j < 70; ++j) vars.push_back(cs_createCSint(0, 1));
  const Rows table = {std::vector<int>(70, 0), std::vector<int>(70, 1)};
  const std::vector<int> cells = flat(table);
  RowSet set;
  ASSERT_TRUE(set.build({vars.data(), 70, cells.data(), 2, false}));
  const auto countOpen = [&set] {
    int open = 0;
    set.forEachOpen([&open](const RowSet::Column &) {
      ++open;
      return true;
    });
    return open;
  };
  EXPECT_EQ(countOpen(), 70);
  cs_saveContext();
  ASSERT_TRUE(cs_EQ(vars[69], 1) && cs_EQ(vars[3], 1));
  ASSERT_TRUE(set.update());
  EXPECT_EQ(countOpen(), 68);
  EXPECT_EQ(set.countRows(), 1);
  cs_restoreContext();
  ASSERT_TRUE(set.update());
  EXPECT_EQ(countOpen(), 70);
  EXPECT_EQ(set.countRows(), 2);
}

// ----- memory

TEST_F(RankedRowsTest, EachAllocationOfARowSetCanFail) {
  constexpr int any = GivenRows::kAny;
  std::vector<CSint *> vars = {cs_createCSint(0, 1000000), cs_createCSint(0, 9), cs_createCSint(0, 9)};
  const std::vector<int> cells = flat({{0, 1, any}, {1000000, 2, 3}, {5, any, 4}, {5, 1, 4}});
  int failures = 0;
  for (bool built = false; !built; ++failures) {
    const AllocationRule rule(refuseOnly(failures));
    RowSet set;
    built = set.build({vars.data(), 3, cells.data(), 4, true});
    ASSERT_EQ(memoryReports, built ? failures : failures + 1);
  }
  EXPECT_GT(failures, 20);
}

TEST_P(RowSetTest, ARunWithoutMemoryIsMadeUpForLater) {
  update();
  cs_saveContext();
  ASSERT_TRUE(cs_EQ(vars[1], 0));
  fillTrail();
  {
    const AllocationRule none(refuseAll());
    EXPECT_FALSE(set.update()) << "the log's length cannot be noted";
  }
  update();
  cs_saveContext();
  fillTrail();
  {
    const AllocationRule none(refuseAll());
    EXPECT_TRUE(set.update()) << "nothing is to be noted";
    const bool allHaveRows = GetParam().values <= 10;
    EXPECT_EQ(set.dropUnsupported(set.column(0)), allHaveRows);
  }
  cs_restoreContext();
  cs_restoreContext();
  update();
}

TEST_P(RowSetTest, AResetWithoutMemoryIsMadeUpForLater) {
  update();
  cs_saveContext();
  ASSERT_TRUE(cs_NEQ(vars[1], 1));
  cs_saveContext();
  ASSERT_TRUE(cs_EQ(vars[1], 0));
  update();
  cs_acceptContext();
  cs_restoreContext();
  cs_saveContext();
  fillTrail();
  {
    const AllocationRule none(refuseAll());
    EXPECT_FALSE(set.update());
  }
  update();
}

}  // namespace
