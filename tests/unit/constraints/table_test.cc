// SPDX-License-Identifier: MIT
// cs_Table, cs_ShortTable, cs_NotTable beyond what enumeration of small ones reaches: several words of rows, restores,
// accepts, bad input.
#include <algorithm>
#include <random>

#include "koru_extras.h"
#include "support/kit/instrumented.h"
#include "support/kit/solver_test.h"

namespace {

using namespace koru::test;

constexpr int kMin = -2147483647 - 1;
constexpr int kMax = 2147483647;

using PostTable = bool (*)(CSint **, int, const int *, int);
using Rows = std::vector<std::vector<int>>;

std::vector<int> flat(const Rows &rows) {
  std::vector<int> cells;
  for (const auto &row : rows) cells.insert(cells.end(), row.begin(), row.end());
  return cells;
}

class TableTest : public SolverTest {
 protected:
  static bool post(PostTable poster, std::vector<CSint *> vars, const Rows &rows) {
    const std::vector<int> cells = flat(rows);
    return poster(vars.data(), static_cast<int>(vars.size()), cells.data(), static_cast<int>(rows.size()));
  }
};

TEST_F(TableTest, OnlyValuesOfRowsAreLeft) {
  CSint *x = cs_createCSint(0, 9);
  CSint *y = cs_createCSint(0, 9);
  ASSERT_TRUE(post(cs_Table, {x, y}, {{1, 5}, {3, 5}, {7, 8}, {12, 5}}));
  EXPECT_EQ(values(x), (std::vector<int>{1, 3, 7}));
  EXPECT_EQ(values(y), (std::vector<int>{5, 8}));
  EXPECT_TRUE(cs_NEQ(x, 7));
  EXPECT_EQ(cs_getMax(y), 5);
}

TEST_F(TableTest, AVariableThatStandsTwiceIsOneColumn) {
  CSint *x = cs_createCSint(0, 9);
  ASSERT_TRUE(post(cs_Table, {x, x}, {{1, 2}, {2, 3}, {1, 3}, {3, 1}, {4, 4}, {5, 5}}));
  EXPECT_EQ(values(x), (std::vector<int>{4, 5}));
  EXPECT_FALSE(post(cs_Table, {x, x}, {{4, 5}}));
}

TEST_F(TableTest, ACellForAllSupportsValuesThatNoRowNames) {
  CSint *x = cs_createCSint(0, 9);
  CSint *y = cs_createCSint(0, 9);
  ASSERT_TRUE(post(cs_ShortTable, {x, y}, {{CS_ANY, 2}, {4, 3}}));
  EXPECT_EQ(cs_getNbElements(x), 10);
  EXPECT_TRUE(cs_NEQ(y, 2));
  EXPECT_EQ(values(x), (std::vector<int>{4}));
}

TEST_F(TableTest, ForbiddenRowsLeaveTheirLastCombination) {
  CSint *x = cs_createCSint(0, 1);
  CSint *y = cs_createCSint(0, 1);
  ASSERT_TRUE(post(cs_NotTable, {x, y}, {{0, 0}, {0, 1}, {1, 1}, {0, 0}}));
  EXPECT_EQ(values(x), (std::vector<int>{1}));
  EXPECT_EQ(values(y), (std::vector<int>{0}));
  EXPECT_FALSE(post(cs_NotTable, {x, y}, {{1, 0}}));
}

TEST_F(TableTest, TheEndsOfTheIntsAreOrdinaryValues) {
  CSint *x = cs_createCSint(kMin, kMin + 2);
  CSint *y = cs_createCSint(kMax - 2, kMax);
  CSint *any = cs_createCSint(kMin, kMax);
  ASSERT_TRUE(post(cs_Table, {x, y}, {{kMin, kMax}, {kMin + 1, kMax}, {kMax, kMin}}));
  EXPECT_EQ(cs_getMax(x), kMin + 1);
  EXPECT_EQ(cs_getMin(y), kMax);
  ASSERT_TRUE(post(cs_NotTable, {x, any}, {{kMin, kMax}, {kMin, kMin}, {kMin + 1, kMin}}));
  EXPECT_TRUE(cs_EQ(any, kMax));
  EXPECT_EQ(cs_getMin(x), kMin + 1);
}

TEST_F(TableTest, ATableWithoutRowsHasNoSolutionAndForbidsNothing) {
  CSint *x = cs_createCSint(0, 9);
  EXPECT_FALSE(cs_Table(&x, 1, nullptr, 0));
  EXPECT_FALSE(cs_ShortTable(&x, 1, nullptr, 0));
  EXPECT_TRUE(cs_NotTable(&x, 1, nullptr, 0));
  EXPECT_EQ(cs_getNbElements(x), 10);
}

TEST_F(TableTest, BadInputIsRefused) {
  CSint *x = cs_createCSint(0, 9);
  CSint *null = nullptr;
  const int rows[] = {1, 2, 3};
  for (const PostTable poster : {cs_Table, cs_NotTable, cs_ShortTable}) {
    EXPECT_FALSE(poster(nullptr, 1, rows, 3));
    EXPECT_FALSE(poster(&null, 1, rows, 3));
    EXPECT_FALSE(poster(&x, 0, rows, 3));
    EXPECT_FALSE(poster(&x, -1, rows, 3));
    EXPECT_FALSE(poster(&x, 1, rows, -1));
    EXPECT_FALSE(poster(&x, 1, nullptr, 3));
    EXPECT_FALSE(poster(&x, 65536, rows, 65536));
  }
  EXPECT_EQ(cs_getNbElements(x), 10);
  cs_end();
  EXPECT_FALSE(cs_Table(&x, 1, rows, 3));
  cs_init();
}

// An accept inside a context that is then restored: the words of rows have been left behind by the domains.
TEST_F(TableTest, RowsThatComeBackBehindAnAcceptAreSeen) {
  for (const bool postedInside : {false, true}) {
    CSint *x = cs_createCSint(0, 9);
    CSint *y = cs_createCSint(0, 9);
    const Rows rows{{1, 1}, {2, 2}, {3, 3}, {4, 4}};
    ASSERT_TRUE(postedInside || post(cs_Table, {x, y}, rows));
    cs_saveContext();
    ASSERT_TRUE(cs_LE(x, 4) && cs_LE(x, 3));
    cs_saveContext();
    ASSERT_TRUE(cs_LE(x, 1));
    ASSERT_TRUE(!postedInside || post(cs_Table, {x, y}, rows));
    cs_acceptContext();
    cs_restoreContext();
    ASSERT_GE(cs_getMax(x), 4);
    if (postedInside) {
      EXPECT_FALSE(cs_GE(x, 2)) << "y is 1 for good";
    } else {
      EXPECT_TRUE(cs_NEQ(x, 1) && cs_NEQ(x, 2));
      EXPECT_FALSE(cs_LE(x, 2)) << "1 and 2 are gone";
    }
  }
}

// What a callback of an undo posts finds all values that the undo has brought back so far, and their rows.
std::vector<CSint *> undone;
void narrowWhileUndoing(CSint *, int) {
  EXPECT_TRUE(cs_GE(undone[0], 2));
  EXPECT_EQ(cs_getMin(undone[1]), 2);
}

TEST_F(TableTest, ACallbackOfAnUndoFindsTheRowsThatAreBack) {
  undone = {cs_createCSint(0, 9), cs_createCSint(0, 9)};
  ASSERT_TRUE(post(cs_Table, undone, {{1, 1}, {2, 2}, {3, 3}, {4, 4}}));
  cs_saveContext();
  ASSERT_TRUE(cs_LE(undone[0], 3));
  cs_backtrack(nullptr, 0, narrowWhileUndoing);
  ASSERT_TRUE(cs_LE(undone[0], 1));
  cs_restoreContext();
  EXPECT_EQ(values(undone[1]), (std::vector<int>{1, 2, 3, 4}));
  EXPECT_TRUE(cs_NEQ(undone[1], 2));
  EXPECT_EQ(values(undone[0]), (std::vector<int>{1, 3, 4}));
}

// What enumeration leaves of domains.
std::vector<std::vector<int>> supported(const std::vector<CSint *> &vars, const Rows &rows, bool forbidden) {
  std::vector<std::vector<bool>> has(vars.size(), std::vector<bool>(6));
  std::vector<int> t(vars.size());
  const auto visit = [&](auto &&self, std::size_t i) -> void {
    if (i < vars.size()) {
      for (const int value : values(vars[i])) {
        t[i] = value;
        self(self, i + 1);
      }
      return;
    }
    const bool listed = std::any_of(rows.begin(), rows.end(), [&](const std::vector<int> &row) {
      return std::equal(row.begin(), row.end(), t.begin(), [](int cell, int v) { return cell == CS_ANY || cell == v; });
    });
    if (listed == forbidden) return;
    for (std::size_t k = 0; k < t.size(); ++k) has[k][static_cast<std::size_t>(t[k])] = true;
  };
  visit(visit, 0);
  std::vector<std::vector<int>> left(vars.size());
  for (std::size_t k = 0; k < vars.size(); ++k)
    for (int value = 0; value < 6; ++value)
      if (has[k][static_cast<std::size_t>(value)]) left[k].push_back(value);
  return left;
}

// 7 stands in the first and the last of a thousand rows, so its rows are a list; every other value has few words.
Rows sparseRows() {
  Rows rows;
  for (int i = 0; i < 1000; ++i) rows.push_back({i, i == 0 || i == 999 ? 7 : i + 10});
  return rows;
}

TEST_F(TableTest, AValueInFewFarRowsKeepsAListOfThem) {
  CSint *x = cs_createCSint(0, 2000);
  CSint *y = cs_createCSint(0, 2000);
  ASSERT_TRUE(post(cs_Table, {x, y}, sparseRows()));
  EXPECT_EQ(cs_getMin(y), 7);
  cs_saveContext();
  EXPECT_TRUE(cs_EQ(y, 7));
  EXPECT_EQ(values(x), (std::vector<int>{0, 999}));
  EXPECT_TRUE(cs_NEQ(x, 0));
  EXPECT_EQ(cs_getValue(x), 999);
  cs_restoreContext();
  EXPECT_TRUE(cs_NEQ(y, 7));
  EXPECT_FALSE(cs_isIn(x, 0));
  EXPECT_EQ(cs_getMax(x), 998);
  EXPECT_TRUE(cs_LE(x, 500));
  EXPECT_EQ(cs_getMax(y), 510);
}

TEST_F(TableTest, AForbiddenValueInFewFarRowsIsCounted) {
  CSint *x = fromValues({0, 999});
  CSint *y = cs_createCSint(7, 8);
  ASSERT_TRUE(post(cs_NotTable, {x, y}, sparseRows()));
  EXPECT_EQ(cs_getValue(y), 8);
}

// There are more combinations than 64 bits count.
TEST_F(TableTest, OneForbiddenRowAmongAllIntsTakesNothing) {
  std::vector<CSint *> vars;
  for (int i = 0; i < 3; ++i) vars.push_back(cs_createCSint(kMin, kMax));
  ASSERT_TRUE(post(cs_NotTable, vars, {{1, 2, 3}}));
  EXPECT_TRUE(cs_EQ(vars[0], 1));
  EXPECT_EQ(cs_getMin(vars[2]), kMin);
  EXPECT_TRUE(cs_EQ(vars[1], 2));
  EXPECT_FALSE(cs_EQ(vars[2], 3));
}

struct LongTable {
  PostTable post;
  int rows;
  unsigned anyOneIn;
  bool forbidden;
};

class LongTableTest : public SolverTest, public ::testing::WithParamInterface<LongTable> {};

INSTANTIATE_TEST_SUITE_P(All, LongTableTest,
                         ::testing::Values(LongTable{cs_Table, 200, 0, false}, LongTable{cs_ShortTable, 130, 9, false},
                                           LongTable{cs_NotTable, 1100, 0, true}));

TEST_P(LongTableTest, DomainsAreThoseOfEnumerationAfterEveryStep) {
  std::mt19937 random(17);
  for (int round = 0; round < rounds(8); ++round) {
    std::vector<CSint *> vars;
    for (int i = 0; i < 4; ++i) vars.push_back(cs_createCSint(0, 5));
    Rows rows;
    for (int r = 0; r < GetParam().rows; ++r) {
      rows.emplace_back();
      for (int i = 0; i < 4; ++i) {
        const bool any = GetParam().anyOneIn > 0 && random() % GetParam().anyOneIn == 0;
        rows.back().push_back(any ? CS_ANY : static_cast<int>(random() % 6));
      }
    }
    const std::vector<int> cells = flat(rows);
    ASSERT_TRUE(GetParam().post(vars.data(), 4, cells.data(), GetParam().rows));
    for (int step = 0; step < 60; ++step) {
      const bool consistent = random() % 3 != 0
                                  ? (cs_saveContext(), cs_NEQ(vars[random() % 4], static_cast<int>(random() % 6)))
                                  : (cs_restoreContext(), true);
      if (!consistent) {
        cs_restoreContext();
        continue;
      }
      const auto left = supported(vars, rows, GetParam().forbidden);
      for (std::size_t i = 0; i < 4; ++i) ASSERT_EQ(values(vars[i]), left[i]) << "round " << round << " step " << step;
    }
    cs_restoreAll();
  }
}

// Rows in order, so that a value of the second column lies in two or three words of 80: what is left, in one of them,
// is walked over instead.
TEST_F(TableTest, FewRowsThatAreLeftAreWalkedOver) {
  CSint *vars[] = {cs_createCSint(0, 499), cs_createCSint(0, 49), cs_createCSint(0, 9)};
  std::vector<int> cells;
  for (int r = 0; r < 5000; ++r) cells.insert(cells.end(), {r / 10, r / 100, r % 10});
  ASSERT_TRUE(cs_Table(vars, 3, cells.data(), 5000));
  ASSERT_TRUE(cs_InInterval(vars[0], 9, 10));
  EXPECT_EQ(values(vars[1]), (std::vector{0, 1}));
  ASSERT_TRUE(cs_NEQ(vars[1], 0));
  EXPECT_EQ(values(vars[0]), (std::vector{10}));
}

}  // namespace
