// SPDX-License-Identifier: MIT
// cs_searchStatus: why each of the searches has ended.
#include "search/state.h"
#include "support/kit/failing_allocations.h"
#include "support/kit/solver_test.h"

namespace koru::test {
namespace {

class SearchStatusTest : public SolverTest {
 protected:
  static constexpr int kSize = 3;
  CSint **x = nullptr;
  CSint *cost = nullptr;

  void SetUp() override {
    SolverTest::SetUp();
    searchState.status = CS_STATUS_READY;
    x = cs_createCSintArray(kSize, 0, 2);
    cost = cs_Sigma(x, kSize);
  }
  void forbidAll() {
    CSint *pair[] = {x[0], x[1], x[2], cs_createCSint(0, 2)};
    for (CSint *a : pair)
      for (CSint *b : pair)
        if (a < b) {
          ASSERT_TRUE(cs_Neq(a, b));
        }
  }
  static void cancel(CSint **, int) { cs_cancelSearch(); }
  static void cancelCost(CSint **, int, CSint *) { cs_cancelSearch(); }
  static int firstFree(CSint **array, int size) {
    for (int i = 0; i < size; ++i)
      if (cs_isFree(array[i])) return i;
    return -1;
  }
  static int anyScore(int, int value) { return value; }
  static int firstRow(CSint ***, int, int) { return -1; }
  static int freeInRow(int, CSint **row, int size) { return firstFree(row, size); }
  static int anyMatrixScore(int, int, int value) { return value; }
  static int oneFail(void *) { return 1; }
  static int noLimit(void *) { return 0; }
};

TEST_F(SearchStatusTest, IsReadyBeforeAnySearch) { EXPECT_EQ(cs_searchStatus(), CS_STATUS_READY); }

TEST_F(SearchStatusTest, OfASearchForOneSolution) {
  cs_saveContext();
  EXPECT_TRUE(cs_search(x, kSize, cs_findFreeVar));
  EXPECT_EQ(cs_searchStatus(), CS_STATUS_SOLUTION);
  cs_restoreAll();
  forbidAll();
  EXPECT_FALSE(cs_searchFail(x, kSize, cs_findFreeVar, 2));
  EXPECT_EQ(cs_searchStatus(), CS_STATUS_FAILS);
  cs_restoreAll();
  EXPECT_FALSE(cs_search(x, kSize, cs_findFreeVar));
  EXPECT_EQ(cs_searchStatus(), CS_STATUS_EXHAUSTED);
  EXPECT_FALSE(cs_Vsearch(2, x[0], x[1], nullptr));
  EXPECT_EQ(cs_searchStatus(), CS_STATUS_REFUSED);
}

TEST_F(SearchStatusTest, OfASearchForAllSolutions) {
  EXPECT_TRUE(cs_findAll(x, kSize, cs_findFreeVar, nullptr));
  EXPECT_EQ(cs_searchStatus(), CS_STATUS_EXHAUSTED);
  cs_saveContext();
  EXPECT_TRUE(cs_findAll(x, kSize, cs_findFreeVar, cancel));
  EXPECT_EQ(cs_searchStatus(), CS_STATUS_STOPPED);
  cs_restoreAll();
  forbidAll();
  EXPECT_FALSE(cs_findAll(x, kSize, cs_findFreeVar, nullptr));
  EXPECT_EQ(cs_searchStatus(), CS_STATUS_EXHAUSTED);
  EXPECT_FALSE(cs_findAll(nullptr, kSize, cs_findFreeVar, nullptr));
  EXPECT_EQ(cs_searchStatus(), CS_STATUS_REFUSED);
}

TEST_F(SearchStatusTest, OfAMinimisation) {
  cs_saveContext();
  EXPECT_TRUE(cs_minimize(x, kSize, cs_findFreeVar, cost, nullptr));
  EXPECT_EQ(cs_searchStatus(), CS_STATUS_OPTIMAL);
  cs_restoreAll();
  cs_saveContext();
  EXPECT_TRUE(cs_GE(cost, 1));
  EXPECT_TRUE(cs_minimize(x, kSize, cs_findFreeVar, cost, cancelCost));
  EXPECT_EQ(cs_searchStatus(), CS_STATUS_STOPPED);
  cs_restoreAll();
  EXPECT_FALSE(cs_minimize(x, kSize, cs_findFreeVar, nullptr, nullptr));
  EXPECT_EQ(cs_searchStatus(), CS_STATUS_REFUSED);
  forbidAll();
  EXPECT_FALSE(cs_minimize(x, kSize, cs_findFreeVar, cost, nullptr));
  EXPECT_EQ(cs_searchStatus(), CS_STATUS_EXHAUSTED);
}

TEST_F(SearchStatusTest, OfASearchByScores) {
  forbidAll();
  EXPECT_FALSE(cs_searchCriteriaFail(x, kSize, firstFree, anyScore, 1));
  EXPECT_EQ(cs_searchStatus(), CS_STATUS_FAILS);
  cs_restoreAll();
  EXPECT_FALSE(cs_searchCriteria(x, kSize, firstFree, anyScore));
  EXPECT_EQ(cs_searchStatus(), CS_STATUS_EXHAUSTED);
  EXPECT_FALSE(cs_searchCriteria(x, kSize, nullptr, anyScore));
  EXPECT_EQ(cs_searchStatus(), CS_STATUS_REFUSED);
  CSint **rows[] = {x};
  EXPECT_TRUE(cs_searchMatrix(rows, 1, kSize, firstRow, freeInRow, anyMatrixScore));
  EXPECT_EQ(cs_searchStatus(), CS_STATUS_SOLUTION);
  EXPECT_FALSE(cs_searchMatrix(rows, 1, kSize, nullptr, freeInRow, anyMatrixScore));
  EXPECT_EQ(cs_searchStatus(), CS_STATUS_REFUSED);
}

TEST_F(SearchStatusTest, OfASearchBySelectors) {
  CSvalueSelector *selectors[kSize];
  for (auto &each : selectors) each = cs_getValueSelector(CS_SELECT_ASCENDING);
  cs_saveContext();
  EXPECT_TRUE(cs_searchValueSelectorFail(x, selectors, kSize, firstFree, 0, nullptr));
  EXPECT_EQ(cs_searchStatus(), CS_STATUS_SOLUTION);
  cs_restoreAll();
  forbidAll();
  EXPECT_FALSE(cs_searchValueSelectorFail(x, selectors, kSize, firstFree, 1, nullptr));
  EXPECT_EQ(cs_searchStatus(), CS_STATUS_FAILS);
  cs_restoreAll();
  EXPECT_FALSE(cs_searchValueSelectorFail(x, selectors, kSize, firstFree, 0, nullptr));
  EXPECT_EQ(cs_searchStatus(), CS_STATUS_EXHAUSTED);
  EXPECT_FALSE(cs_searchValueSelectorFail(x, selectors, kSize, nullptr, 0, nullptr));
  EXPECT_EQ(cs_searchStatus(), CS_STATUS_REFUSED);
  EXPECT_FALSE(cs_searchValueSelectorRestartNG(x, selectors, kSize, firstFree, oneFail, nullptr, 3, nullptr, nullptr));
  EXPECT_EQ(cs_searchStatus(), CS_STATUS_FAILS);
  cs_restoreAll();
  EXPECT_FALSE(cs_searchValueSelectorRestartNG(x, selectors, kSize, firstFree, noLimit, nullptr, 0, nullptr, nullptr));
  EXPECT_EQ(cs_searchStatus(), CS_STATUS_EXHAUSTED);
  cs_restoreAll();
  EXPECT_FALSE(cs_searchValueSelectorRestartNG(x, selectors, kSize, firstFree, nullptr, nullptr, 0, nullptr, nullptr));
  EXPECT_EQ(cs_searchStatus(), CS_STATUS_REFUSED);
}

TEST_F(SearchStatusTest, SaysWhenMemoryWasExhausted) {
  {
    const FailingAllocator failing(0, Failing::kForEver);
    EXPECT_FALSE(cs_searchCriteria(x, kSize, firstFree, anyScore));
    EXPECT_EQ(cs_searchStatus(), CS_STATUS_MEMORY);
    EXPECT_FALSE(cs_Vsearch(2, x[0], x[1], cs_findFreeVar));
  }
  EXPECT_EQ(cs_searchStatus(), CS_STATUS_MEMORY);
}

// Of a search inside another one, the outer one has the last word.
TEST_F(SearchStatusTest, TheOuterSearchEndsLast) {
  static CSstatus inside;
  const auto searchInside = [](CSint **array, int) {
    cs_saveContext();
    cs_search(array, kSize, cs_findFreeVar);
    inside = cs_searchStatus();
    cs_restoreContext();
  };
  EXPECT_TRUE(cs_findAll(x, kSize, cs_findFreeVar, searchInside));
  EXPECT_EQ(inside, CS_STATUS_SOLUTION);
  EXPECT_EQ(cs_searchStatus(), CS_STATUS_EXHAUSTED);
}

}  // namespace
}  // namespace koru::test
