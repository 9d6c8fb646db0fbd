// SPDX-License-Identifier: MIT
#include "core/branch_set.h"

#include <random>
#include <set>
#include <vector>

#include "core/solver.h"
#include "support/kit/solver_test.h"
#include "unit/core/allocation_rule.h"

namespace koru {
namespace {

std::vector<int> positions(BranchSet &set) {
  std::vector<int> result;
  set.refresh();
  set.forEach([&](int i) {
    result.push_back(i);
    return true;
  });
  return result;
}

class BranchSetTest : public test::SolverTest {};

TEST_F(BranchSetTest, HoldsAllPositionsInOrderAtFirst) {
  for (const int size : {1, 63, 64, 65, 200}) {
    BranchSet set(size);
    const std::vector<int> all = positions(set);
    ASSERT_EQ(static_cast<int>(all.size()), size);
    for (int i = 0; i < size; ++i) EXPECT_EQ(all[static_cast<std::size_t>(i)], i);
  }
}

TEST_F(BranchSetTest, StopsAtTheFirstVisitThatFails) {
  const BranchSet set(9);
  int visits = 0;
  EXPECT_FALSE(set.forEach([&](int i) {
    ++visits;
    return i < 3;
  }));
  EXPECT_EQ(visits, 4);
}

TEST_F(BranchSetTest, VisitsFromAPositionOn) {
  BranchSet set(200);
  set.takeOut(130);
  for (const int first : {0, 1, 63, 64, 65, 129, 130, 131, 199, 200}) {
    std::vector<int> visited;
    EXPECT_TRUE(set.forEachFrom(first, [&](int i) {
      visited.push_back(i);
      return true;
    }));
    std::vector<int> expected;
    for (int i = first; i < 200; ++i)
      if (i != 130) expected.push_back(i);
    EXPECT_EQ(visited, expected) << first;
  }
  EXPECT_FALSE(set.forEachFrom(70, [](int) { return false; }));
}

TEST_F(BranchSetTest, TellsTheFirstPositionThatIsBack) {
  BranchSet set(10);
  set.refresh();
  int first = 7;
  EXPECT_FALSE(set.refresh(first)) << "nothing was closed since";
  set.takeOut(1);
  cs_saveContext();
  for (const int position : {5, 3, 8}) set.takeOut(position);
  EXPECT_FALSE(set.refresh(first));
  cs_restoreContext();
  EXPECT_TRUE(set.refresh(first));
  EXPECT_EQ(first, 3);
  cs_saveContext();
  cs_restoreContext();
  EXPECT_TRUE(set.refresh(first));
  EXPECT_EQ(first, 3) << "none is back";
}

TEST_F(BranchSetTest, WhatIsTakenOutWithNoContextOpenStaysOut) {
  BranchSet set(3);
  set.takeOut(1);
  cs_saveContext();
  cs_restoreContext();
  EXPECT_EQ(positions(set), (std::vector<int>{0, 2}));
}

TEST_F(BranchSetTest, APositionIsBackWhenItsContextIsClosedInWhateverWay) {
  for (void (*const close)() : {cs_restoreContext, cs_acceptContext, cs_forgetSaveContext}) {
    BranchSet set(3);
    cs_saveContext();
    set.takeOut(1);
    EXPECT_EQ(positions(set), (std::vector<int>{0, 2}));
    close();
    EXPECT_EQ(positions(set), (std::vector<int>{0, 1, 2}));
  }
}

TEST_F(BranchSetTest, AnotherContextOnTheSameLevelIsAnotherBranch) {
  BranchSet set(3);
  cs_saveContext();
  set.takeOut(0);
  cs_restoreAndSaveContext();
  EXPECT_EQ(positions(set), (std::vector<int>{0, 1, 2}));
}

TEST_F(BranchSetTest, APositionTakenOutByACallbackOfAnUndoIsBackAtOnce) {
  static BranchSet *set = nullptr;
  BranchSet owner(3);
  set = &owner;
  for (const int open : {0, 1}) {
    while (solver::contexts.count() < open) cs_saveContext();
    cs_saveContext();
    cs_backtrack(nullptr, 1, [](CSint *, int position) { set->takeOut(position); });
    cs_restoreContext();
    EXPECT_EQ(positions(owner), (std::vector<int>{0, 1, 2})) << open << " contexts stay open";
  }
  set = nullptr;
}

TEST_F(BranchSetTest, TakingAPositionOutTwiceIsTakingItOutOnce) {
  BranchSet set(1);
  set.takeOut(0);
  cs_saveContext();
  set.takeOut(0);
  set.takeOut(0);
  cs_restoreContext();
  EXPECT_TRUE(positions(set).empty());
}

TEST_F(BranchSetTest, ExhaustedMemoryIsReportedOnceAndShows) {
  for (int k = 0; k < 2; ++k) {
    memoryReports = 0;
    const test::AllocationRule rule(test::refuseOnly(k));
    EXPECT_FALSE(BranchSet(5));
    EXPECT_EQ(memoryReports, 1);
  }
}

// Against a model that keeps the set per open context, over contexts in more than one block of their stack.
TEST_F(BranchSetTest, AgreesWithCopiesKeptPerContext) {
  std::mt19937 random(1);
  constexpr int kSize = 100;
  BranchSet set(kSize);
  std::vector<std::set<int>> taken(1);
  for (int step = 0; step < 20000; ++step) {
    const auto choice = static_cast<unsigned>(random() % 10);
    if (choice < 4) {
      set.refresh();
      const int position = static_cast<int>(random() % kSize);
      set.takeOut(position);
      taken.back().insert(position);
    } else if (choice < (step % 4000 < 2000 ? 9U : 6U)) {
      cs_saveContext();
      taken.push_back(taken.back());
    } else if (taken.size() > 1) {
      cs_restoreContext();
      taken.pop_back();
    }
    std::vector<int> expected;
    for (int i = 0; i < kSize; ++i)
      if (taken.back().count(i) == 0) expected.push_back(i);
    ASSERT_EQ(positions(set), expected) << "step " << step;
  }
}

}  // namespace
}  // namespace koru
