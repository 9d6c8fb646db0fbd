// SPDX-License-Identifier: MIT
// The set as a constraint and as a list: creation, insertion, subsumption, eviction, filters, the end of its life.
#include "nogood/no_good_set.h"

#include <climits>

#include "support/no_goods/no_goods.h"

namespace {

using namespace koru;
using namespace koru::test;
using namespace koru::test::nogood;

class NoGoodSetTest : public NoGoodTest {};

// ----- creation

TEST_F(NoGoodSetTest, IsAttachedToEveryVariableWithItsPositionAndHearsAllEvents) {
  CSint *y[3] = {cs_createCSint(0, 3), cs_createCSint(0, 3), cs_createCSint(0, 3)};
  const int mark = solver::trail.count();
  ASSERT_NE(cs_createNoGoodSet(y, 3, nullptr, 0, nullptr, nullptr), nullptr);
  EXPECT_EQ(attachOrder(mark), (std::vector<const CSint *>{y[0], y[1], y[2]}));
  for (int i = 0; i < 3; ++i) {
    EXPECT_EQ(attachments(y[i]), (std::vector<std::pair<std::string, int>>{{"cs_createNoGoodSet", i}}));
    EXPECT_EQ(busySlots(y[i]), "012345");
    EXPECT_EQ(y[i]->constraints->constraint, y[0]->constraints->constraint);
    EXPECT_EQ(values(y[i]), range(0, 3));
  }
}

TEST_F(NoGoodSetTest, AVariableThatStandsTwiceIsAttachedTwice) {
  CSint *y[2] = {x[0], x[0]};
  ASSERT_NE(cs_createNoGoodSet(y, 2, nullptr, 0, nullptr, nullptr), nullptr);
  const auto all = attachments(x[0]);
  ASSERT_EQ(all.size(), 3U);
  EXPECT_EQ(all[0].second, 1);
  EXPECT_EQ(all[1].second, 0);
}

TEST_F(NoGoodSetTest, NoVariableOrANullOneIsNullWithoutAReport) {
  CSint *withNull[2] = {x[0], nullptr};
  for (const int size : {0, -1, INT_MIN}) EXPECT_EQ(cs_createNoGoodSet(x, size, nullptr, 0, nullptr, nullptr), nullptr);
  EXPECT_EQ(cs_createNoGoodSet(nullptr, 2, nullptr, 0, nullptr, nullptr), nullptr);
  EXPECT_EQ(cs_createNoGoodSet(withNull, 2, nullptr, 0, nullptr, nullptr), nullptr);
  EXPECT_EQ(cs_getErr(), CS_ERR_NONE);
  EXPECT_EQ(cs_getNbConstraints(x[0]), 1);
}

TEST_F(NoGoodSetTest, IsNullWhenNoSolverRuns) {
  cs_end();
  EXPECT_EQ(cs_createNoGoodSet(x, kSize, nullptr, 0, nullptr, nullptr), nullptr);
}

TEST_F(NoGoodSetTest, ANewSetIsEmpty) {
  EXPECT_EQ(cs_getNbNoGoods(set), 0);
  EXPECT_EQ(contents(set), std::vector<Literals>{});
}

// ----- insertion and reading

TEST_F(NoGoodSetTest, NoGoodsAreKeptInTheOrderOfTheirInsertion) {
  add(set, {eq(0, 1), neq(1, 2)});
  add(set, {le(2, 3), lt(0, 4), ge(1, 5)});
  add(set, {gt(0, 6)});
  EXPECT_EQ(contents(set), (std::vector<Literals>{{eq(0, 1), neq(1, 2)}, {le(2, 3), lt(0, 4), ge(1, 5)}, {gt(0, 6)}}));
}

TEST_F(NoGoodSetTest, AnElementThatIsNotThereHasIndexMinusOneAndLeavesTheDecisionAlone) {
  add(set, {eq(0, 1), eq(1, 2)});
  for (const int i : {INT_MIN, -1, 2, 3, INT_MAX}) {
    int index = 7;
    CSvalueSelection decision{4, 44};
    cs_getNoGoodElementAt(&index, &decision, newest(set), i);
    EXPECT_EQ(index, -1);
    EXPECT_EQ(decision.method, 4);
    EXPECT_EQ(decision.value, 44);
  }
}

TEST_F(NoGoodSetTest, NullPointersAreSkipped) {
  add(set, {eq(0, 1)});
  int index = 7;
  CSvalueSelection decision{4, 44};
  cs_getNoGoodElementAt(nullptr, &decision, newest(set), 0);
  EXPECT_EQ(decision.value, 1);
  cs_getNoGoodElementAt(&index, nullptr, newest(set), 0);
  EXPECT_EQ(index, 0);
  cs_getNoGoodElementAt(&index, &decision, nullptr, 0);
  EXPECT_EQ(index, -1);
  EXPECT_EQ(cs_getNbNoGoodElements(nullptr), 0);
  EXPECT_EQ(cs_getNbNoGoods(nullptr), 0);
  cs_filterNoGood(nullptr, callKeep);
  cs_filterNoGood(set, nullptr);
  cs_setMaxNbNoGoods(nullptr, 1);
  cs_addNoGood(nullptr, &index, &decision, 1);
  cs_addNoGood(set, nullptr, &decision, 1);
  cs_addNoGood(set, &index, nullptr, 1);
  EXPECT_EQ(contents(set), (std::vector<Literals>{{eq(0, 1)}}));
}

TEST_F(NoGoodSetTest, AnIndexThatIsNotBelowTheNumberOfElementsDiscardsTheNoGood) {
  add(set, {eq(1, 1)});
  add(set, {eq(0, 1), eq(2, 1)});
  add(set, {eq(0, 1), eq(-1, 1)});
  EXPECT_EQ(cs_getNbNoGoods(set), 0);
  add(set, {eq(0, 1), eq(1, 1)});
  EXPECT_EQ(cs_getNbNoGoods(set), 1);
  EXPECT_EQ(cs_getErr(), CS_ERR_NONE);
}

TEST_F(NoGoodSetTest, AnIndexOutsideTheArrayDiscardsTheNoGood) {
  add(set, {eq(0, 1), eq(1, 1), eq(2, 1), eq(3, 1), eq(4, 1)});
  addFreely(set, {eq(4, 1)});
  addFreely(set, {eq(-1, 1)});
  EXPECT_EQ(cs_getNbNoGoods(set), 0);
}

TEST_F(NoGoodSetTest, NoElementsOrAnUnknownMethodDiscardsTheNoGood) {
  const int index = 0;
  const CSvalueSelection decision{0, 1};
  for (const int n : {0, -1, INT_MIN}) cs_addNoGood(set, &index, &decision, n);
  for (const int method : {-1, 6, INT_MIN, INT_MAX}) add(set, {{0, method, 1}});
  EXPECT_EQ(cs_getNbNoGoods(set), 0);
}

// ----- subsumption

TEST_F(NoGoodSetTest, TheSameNoGoodTwiceIsKeptOnce) {
  add(set, {eq(0, 1), eq(1, 2)});
  add(set, {eq(0, 3)});
  add(set, {eq(0, 1), eq(1, 2)});
  EXPECT_EQ(contents(set), (std::vector<Literals>{{eq(0, 1), eq(1, 2)}, {eq(0, 3)}}));
}

TEST_F(NoGoodSetTest, APrefixReplacesEveryLongerOne) {
  add(set, {eq(0, 1), eq(1, 2)});
  add(set, {eq(0, 3), eq(1, 2)});
  add(set, {eq(0, 1), eq(1, 3), eq(2, 4)});
  add(set, {eq(0, 1)});
  EXPECT_EQ(contents(set), (std::vector<Literals>{{eq(0, 3), eq(1, 2)}, {eq(0, 1)}}));
}

TEST_F(NoGoodSetTest, ANoGoodThatAnOlderOneBeginsIsDiscarded) {
  add(set, {eq(0, 1)});
  add(set, {eq(0, 1), eq(1, 2)});
  EXPECT_EQ(contents(set), (std::vector<Literals>{{eq(0, 1)}}));
}

TEST_F(NoGoodSetTest, TheSameElementsInAnotherOrderAreAnotherNoGood) {
  add(set, {eq(0, 1), eq(1, 2)});
  add(set, {eq(1, 2), eq(0, 1)});
  EXPECT_EQ(cs_getNbNoGoods(set), 2);
}

// ----- the maximum

TEST_F(NoGoodSetTest, AThirdNoGoodOfTwoAllowedDeletesTheOldest) {
  cs_setMaxNbNoGoods(set, 2);
  for (int value = 0; value < 3; ++value) add(set, {eq(0, value)});
  EXPECT_EQ(contents(set), (std::vector<Literals>{{eq(0, 1)}, {eq(0, 2)}}));
}

TEST_F(NoGoodSetTest, TheMaximumGivenAtCreationHoldsToo) {
  CSnoGoodSet *small = cs_createNoGoodSet(x, kSize, nullptr, 1, nullptr, nullptr);
  add(small, {eq(0, 1)});
  add(small, {eq(0, 2)});
  EXPECT_EQ(contents(small), (std::vector<Literals>{{eq(0, 2)}}));
}

TEST_F(NoGoodSetTest, ZeroOrANegativeMaximumAtCreationIsNoLimit) {
  for (const int most : {0, -1, INT_MIN})
    EXPECT_EQ(cs_createNoGoodSet(x, kSize, nullptr, most, nullptr, nullptr)->maximum, INT_MAX);
}

TEST_F(NoGoodSetTest, ASmallerMaximumDeletesTheOldestAtOnce) {
  for (int value = 0; value < 5; ++value) add(set, {eq(0, value)});
  cs_setMaxNbNoGoods(set, 2);
  EXPECT_EQ(contents(set), (std::vector<Literals>{{eq(0, 3)}, {eq(0, 4)}}));
  cs_setMaxNbNoGoods(set, 9);
  EXPECT_EQ(cs_getNbNoGoods(set), 2);
  EXPECT_EQ(set->maximum, 9);
}

TEST_F(NoGoodSetTest, AMaximumOfZeroRemovesTheLimitAndANegativeOneIsIgnored) {
  cs_setMaxNbNoGoods(set, 2);
  for (const int ignored : {-1, INT_MIN}) cs_setMaxNbNoGoods(set, ignored);
  for (int value = 0; value < 3; ++value) add(set, {eq(0, value)});
  EXPECT_EQ(cs_getNbNoGoods(set), 2);
  cs_setMaxNbNoGoods(set, 0);
  EXPECT_EQ(cs_getNbNoGoods(set), 2);
  for (int value = 3; value < 9; ++value) add(set, {eq(0, value)});
  EXPECT_EQ(cs_getNbNoGoods(set), 8);
}

TEST_F(NoGoodSetTest, SubsumptionMakesRoomBeforeTheOldestIsDeleted) {
  cs_setMaxNbNoGoods(set, 2);
  add(set, {eq(0, 1)});
  add(set, {eq(0, 2), eq(1, 2)});
  add(set, {eq(0, 2)});
  EXPECT_EQ(contents(set), (std::vector<Literals>{{eq(0, 1)}, {eq(0, 2)}}));
}

TEST_F(NoGoodSetTest, ASubsumedNoGoodDeletesNobody) {
  cs_setMaxNbNoGoods(set, 2);
  add(set, {eq(0, 1)});
  add(set, {eq(0, 2)});
  add(set, {eq(0, 2), eq(1, 1)});
  EXPECT_EQ(contents(set), (std::vector<Literals>{{eq(0, 1)}, {eq(0, 2)}}));
}

// ----- the add filter and cs_filterNoGood

TEST_F(NoGoodSetTest, TheFilterSeesEachNewNoGoodFirstAndMayRefuseIt) {
  std::vector<Literals> asked;
  filter = [&](CSnoGood *noGood) {
    asked.push_back(literalsOf(noGood));
    return cs_getNbNoGoodElements(noGood) > 1;
  };
  add(set, {eq(0, 1)});
  add(set, {eq(0, 1), eq(1, 2)});
  add(set, {eq(0, 1), eq(1, 2)});
  add(set, {eq(5, 1)});
  EXPECT_EQ(asked, (std::vector<Literals>{{eq(0, 1)}, {eq(0, 1), eq(1, 2)}, {eq(0, 1), eq(1, 2)}}));
  EXPECT_EQ(contents(set), (std::vector<Literals>{{eq(0, 1), eq(1, 2)}}));
}

TEST_F(NoGoodSetTest, ARefusedNoGoodReplacesAndEvictsNobody) {
  cs_setMaxNbNoGoods(set, 1);
  add(set, {eq(0, 1), eq(1, 2)});
  filter = [](CSnoGood *) { return false; };
  add(set, {eq(0, 1)});
  EXPECT_EQ(contents(set), (std::vector<Literals>{{eq(0, 1), eq(1, 2)}}));
}

TEST_F(NoGoodSetTest, CallbacksAreHandedTheSetItsArrayAndItsArgument) {
  struct Seen {
    CSnoGoodSet *set;
    CSint **array;
    int size;
  } seen[2] = {};
  const auto note = [](CSnoGoodSet *s, CSnoGood *, CSint **array, int size, void *extra) {
    auto *at = static_cast<Seen *>(extra);
    if (at->set != nullptr) ++at;
    *at = {s, array, size};
    return true;
  };
  CSnoGoodSet *other = cs_createNoGoodSet(x, kSize, note, 0, nullptr, seen);
  add(other, {eq(0, 1)});
  cs_filterNoGood(other, note);
  for (const Seen &call : seen) {
    EXPECT_EQ(call.set, other);
    EXPECT_EQ(call.array, x);
    EXPECT_EQ(call.size, kSize);
  }
}

TEST_F(NoGoodSetTest, FilteringVisitsFromTheOldestAndDeletesWhatIsNotKept) {
  for (int value = 0; value < 5; ++value) add(set, {eq(0, value)});
  std::vector<int> visited;
  filterBy([&](CSnoGood *noGood) {
    visited.push_back(literalsOf(noGood)[0].value);
    return visited.back() % 2 == 1;
  });
  EXPECT_EQ(visited, range(0, 4));
  EXPECT_EQ(contents(set), (std::vector<Literals>{{eq(0, 1)}, {eq(0, 3)}}));
}

TEST_F(NoGoodSetTest, ADeletedNoGoodPropagatesNoMore) {
  add(set, {eq(0, 1), eq(1, 2)});
  filterBy([](CSnoGood *) { return false; });
  ASSERT_TRUE(cs_EQ(x[0], 1));
  EXPECT_EQ(values(x[1]), range(0, 9));
  EXPECT_EQ(contents(set), std::vector<Literals>{});
}

// ----- the end

TEST_F(NoGoodSetTest, BacktrackingKeepsTheNoGoodsOfASetThatIsOlder) {
  cs_saveContext();
  add(set, {eq(0, 1), eq(1, 2)});
  cs_restoreContext();
  EXPECT_EQ(contents(set), (std::vector<Literals>{{eq(0, 1), eq(1, 2)}}));
  ASSERT_TRUE(cs_EQ(x[0], 1));
  EXPECT_EQ(values(x[1]), without(range(0, 9), 2));
}

TEST_F(NoGoodSetTest, TheEndOfTheSolverReleasesTheSetOnceWhileItIsWhole) {
  int released = 0;
  release = [&](CSnoGoodSet *s) {
    ++released;
    EXPECT_EQ(s, set);
    EXPECT_EQ(contents(s), (std::vector<Literals>{{eq(0, 1), eq(1, 2)}}));
  };
  add(set, {eq(0, 1), eq(1, 2)});
  cs_end();
  EXPECT_EQ(released, 1);
}

TEST_F(NoGoodSetTest, RestoringTheContextOfItsCreationReleasesTheSet) {
  int released = 0;
  release = [&](CSnoGoodSet *s) { released += s == set ? 0 : 1; };
  cs_saveContext();
  CSnoGoodSet *inner = cs_createNoGoodSet(x, kSize, nullptr, 0, callRelease, this);
  add(inner, {eq(0, 1), eq(1, 2)});
  EXPECT_EQ(released, 0);
  cs_restoreContext();
  EXPECT_EQ(released, 1);
  ASSERT_TRUE(cs_EQ(x[0], 1));
  EXPECT_EQ(values(x[1]), range(0, 9));
}

TEST_F(NoGoodSetTest, ReleaseMayAddAndDeleteNoGoodsForTheLastTime) {
  release = [&](CSnoGoodSet *s) {
    cs_filterNoGood(s, [](CSnoGoodSet *, CSnoGood *, CSint **, int, void *) { return false; });
    add(s, {eq(1, 1), eq(0, 1)});
    EXPECT_EQ(cs_getNbNoGoods(s), 1);
  };
  add(set, {eq(0, 1), eq(1, 2)});
  cs_end();
}

// ----- memory

TEST_F(NoGoodSetTest, EachFailingAllocationOfTheCreationIsNullAndReleasesNothing) {
  static int released;
  released = 0;
  struct Array {
    CSint *x[2];
  };
  const auto make = [] { return Array{{cs_createCSint(0, 9), cs_createCSint(0, 9)}}; };
  const auto create = [](Array &array) {
    CSnoGoodSet *created = cs_createNoGoodSet(
        array.x, 2, nullptr, 0, [](CSnoGoodSet *, void *) { ++released; }, nullptr);
    return created != nullptr;
  };
  EXPECT_EQ(failEachAllocation(make, create), 5);  // site, watch lists, constraint and two entries
  EXPECT_EQ(released, 5);                          // one after each failure, at the next cs_end
  cs_end();
  EXPECT_EQ(released, 6);
}

TEST_F(NoGoodSetTest, AFailedAdditionIsReportedOnceAndLeavesTheSetAsItWas) {
  add(set, {eq(0, 1), eq(1, 2)});
  {
    const FailingAllocation failing(0);
    add(set, {eq(0, 1)});
  }
  EXPECT_EQ(memoryReports, 1);
  EXPECT_EQ(cs_getErr(), CS_ERR_MEMORY);
  EXPECT_EQ(contents(set), (std::vector<Literals>{{eq(0, 1), eq(1, 2)}}));
  const FailingAllocation failing(1);
  add(set, {eq(0, 1)});
  EXPECT_FALSE(FailingAllocation::failed());  // an addition is one allocation
}

}  // namespace
