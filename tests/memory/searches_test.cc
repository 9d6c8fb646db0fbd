// SPDX-License-Identifier: MIT
// Searches in which every allocation fails in turn: nothing is lost or left open that a restore does not bring back.
#include "core/solver.h"
#include "support/model_failure.h"
#include "support/search_trace.h"

namespace koru::test {
namespace {

// x in 0..5 each. Every value of one variable takes an inner value from the next, which then needs a bit array.
struct Searched {
  CSint *x[3] = {cs_createCSint(0, 5), cs_createCSint(0, 5), cs_createCSint(0, 5)};
  bool posted = true;

  Searched() {
    for (int value = 0; value <= 5; ++value)
      posted = posted && cs_IfNeq(x[0], x[1], value, 2) && cs_IfNeq(x[1], x[2], value, 3);
  }
};

int middleFirst(int, int value) { return value < 3 ? 3 - value : value - 3; }
int cellMiddleFirst(int, int, int value) { return middleFirst(0, value); }

bool search(Searched &s) { return cs_search(s.x, 3, cs_findFreeVar); }
bool findAll(Searched &s) { return cs_findAll(s.x, 3, cs_findFreeVarNbElements, nullptr); }
bool minimize(Searched &s) { return cs_minimize(s.x, 3, cs_findFreeVar, s.x[2], nullptr); }
bool criteria(Searched &s) { return cs_searchCriteria(s.x, 3, firstFree, middleFirst); }
bool matrix(Searched &s) {
  CSint **rows[] = {s.x};
  const auto row = [](CSint ***m, int, int) { return firstFree(m[0], 3) < 0 ? -1 : 0; };
  const auto column = [](int, CSint **cells, int) { return firstFree(cells, 3); };
  return cs_searchMatrix(rows, 1, 3, row, column, cellMiddleFirst);
}
bool selectors(Searched &s) {
  CSvalueSelector *median = cs_getValueSelector(CS_SELECT_MEDIAN);
  CSvalueSelector *each[] = {median, median, median};
  return cs_searchValueSelectorFail(s.x, each, 3, firstFree, 0, nullptr);
}

class SearchMemoryTest : public SolverTest, public ::testing::WithParamInterface<Failing> {
 protected:
  // A run from a fresh solver, with a context of the caller open. The number of failed allocations is returned.
  int runFailing(bool (*run)(Searched &), int k) {
    cs_end();
    SetUp();
    memoryReports = 0;
    Searched s;
    EXPECT_TRUE(s.posted);
    const int label = cs_saveContext();
    int failures = 0;
    {
      const FailingAllocator failing(k, GetParam());
      run(s);
      failures = FailingAllocator::failures();
    }
    EXPECT_EQ(memoryReports, failures);
    EXPECT_GE(solver.contexts.count(), label) << "the caller's context is open";
    cs_restoreContextUntil(label);
    for (CSint *v : s.x) EXPECT_EQ(values(v), (std::vector{0, 1, 2, 3, 4, 5}));
    expectSolverUsable();
    EXPECT_TRUE(run(s));
    return failures;
  }
};

TEST_P(SearchMemoryTest, EveryFailedAllocationIsReportedOnceAndLeavesEverythingRestorable) {
  for (bool (*const run)(Searched &) : {search, findAll, minimize, criteria, matrix, selectors}) {
    int k = 0;
    while (runFailing(run, k) > 0 && !HasFailure()) ++k;
    EXPECT_GT(k, 0) << "the search needs bit arrays";
  }
}

INSTANTIATE_TEST_SUITE_P(, SearchMemoryTest, ::testing::Values(Failing::kOnce, Failing::kForEver),
                         [](const auto &each) { return each.param == Failing::kOnce ? "Once" : "ForEver"; });

}  // namespace
}  // namespace koru::test
