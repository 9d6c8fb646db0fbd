// SPDX-License-Identifier: MIT
// Searches try values where the host can't look at what a refused one leaves (core/trial.h), and only there.
#include <vector>

#include "core/solver.h"
#include "search/observer.h"
#include "support/kit/solver_test.h"

namespace {

using namespace koru;
using namespace koru::test;

// Three variables of two values, no two of them the same: a propagation fails for each value of the first one.
class BranchingTest : public SolverTest {
 protected:
  void SetUp() override {
    SolverTest::SetUp();
    for (CSint *&v : all) v = cs_createCSint(0, 1);
    ASSERT_TRUE(cs_Neq(all[0], all[1]) && cs_Neq(all[0], all[2]) && cs_Neq(all[1], all[2]));
    solver::failureRecorder = {[](void *argument, const Constraint *) {
                                 static_cast<BranchingTest *>(argument)->tried.push_back(solver::queue.trying);
                               },
                               this};
  }
  void TearDown() override {
    solver::failureRecorder = {};
    EXPECT_FALSE(solver::queue.trying);
    SolverTest::TearDown();
  }

  CSint *all[3];
  std::vector<bool> tried;
};

TEST_F(BranchingTest, AllSearchesTry) {
  EXPECT_FALSE(cs_search(all, 3, cs_findFreeVar));
  EXPECT_FALSE(cs_findAll(all, 3, cs_findFreeVar, nullptr));
  EXPECT_FALSE(cs_searchCriteria(
      all, 3, [](CSint **array, int) { return cs_isFree(array[0]) ? 0 : -1; }, [](int, int value) { return value; }));
  EXPECT_EQ(tried, std::vector<bool>(6, true));
}

TEST_F(BranchingTest, TheFailThatEndsASearchIsSeenByTheHost) {
  EXPECT_FALSE(cs_searchFail(all, 3, cs_findFreeVar, 2));
  EXPECT_EQ(tried, (std::vector{true, false}));
  cs_restoreAll();
  tried.clear();
  EXPECT_FALSE(cs_searchFail(all, 3, cs_findFreeVar, 3));
  EXPECT_EQ(tried, (std::vector{true, true}));
}

TEST_F(BranchingTest, AnObserverSeesRefusedValues) {
  const SearchObserver observer{[](void *, Engine) {},
                                [](void *, RunKind) {},
                                [](void *, const CSint *) {},
                                [](void *, const CSvalueSelection &, Tried, bool) {},
                                [](void *) {},
                                [](void *, bool, const CSint *) {},
                                [](void *, CSstatus) {},
                                nullptr};
  searchObserver = &observer;
  EXPECT_FALSE(cs_findAll(all, 3, cs_findFreeVar, nullptr));
  searchObserver = nullptr;
  EXPECT_EQ(tried, std::vector<bool>(2, false));
}

// Their callbacks may do no more than query.
TEST_F(BranchingTest, SearchObjectsTry) {
  CSsearch *search = cs_createSearch(all, 3);
  EXPECT_EQ(cs_nextSolution(search), CS_STATUS_EXHAUSTED);
  cs_freeSearch(search);
  EXPECT_EQ(tried, std::vector<bool>(2, true));
}

}  // namespace
