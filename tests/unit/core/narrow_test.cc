// SPDX-License-Identifier: MIT
// What the four narrowing operations do to the domain and note on the trail. Their events are in narrow_events_test.cc.
#include "core/narrow.h"

#include "core/create.h"
#include "core/solver.h"
#include "support/kit/solver_test.h"
#include "unit/core/allocation_rule.h"

namespace {

using namespace koru;
using namespace koru::test;

struct Noted {
  TrailKind kind;
  int value;
  int oldCount;
  bool operator==(const Noted &) const = default;
};

class NarrowTest : public SolverTest {
 protected:
  // The trail records of v, oldest first.
  static std::vector<Noted> noted(const CSint *v) {
    std::vector<Noted> result;
    solver::trail.forEach([&](const TrailRecord &record) {
      if (record.kind() != TrailKind::kBuffer && record.variable() == v)
        result.push_back({record.kind(), record.value, record.oldCount});
    });
    return result;
  }
  static void expectDomain(CSint *v, const std::vector<int> &expected) {
    EXPECT_EQ(values(v), expected);
    EXPECT_EQ(cs_getNbElements(v), static_cast<int>(expected.size()));
  }

  CSint *interval = nullptr;  // [0, 9]
  CSint *holed = nullptr;     // {1, 3, 4, 7, 9}

  void SetUp() override {
    SolverTest::SetUp();
    interval = cs_createCSint(0, 9);
    holed = fromValues({1, 3, 4, 7, 9});
  }
};

// ----- narrowMin

TEST_F(NarrowTest, RaisingTheMinimumAboveTheMaximumFailsAndChangesNothing) {
  EXPECT_FALSE(narrowMin(interval, 10));
  expectDomain(interval, {0, 1, 2, 3, 4, 5, 6, 7, 8, 9});
  EXPECT_TRUE(noted(interval).empty());
}

TEST_F(NarrowTest, RaisingTheMinimumToItselfOrBelowIsTrueAndTrailsNothing) {
  EXPECT_TRUE(narrowMin(interval, 0));
  EXPECT_TRUE(narrowMin(interval, kIntMin));
  expectDomain(interval, {0, 1, 2, 3, 4, 5, 6, 7, 8, 9});
  EXPECT_TRUE(noted(interval).empty());
}

TEST_F(NarrowTest, RaisingTheMinimumOfAnIntervalNotesTheOldMinimumAndCount) {
  EXPECT_TRUE(narrowMin(interval, 6));
  expectDomain(interval, {6, 7, 8, 9});
  EXPECT_EQ(noted(interval), (std::vector<Noted>{{TrailKind::kMin, 0, 10}}));
  EXPECT_EQ(interval->bits, nullptr);
}

TEST_F(NarrowTest, RaisingTheMinimumToTheMaximumInstantiates) {
  EXPECT_TRUE(narrowMin(interval, 9));
  EXPECT_TRUE(cs_isInstantiated(interval));
  EXPECT_EQ(cs_getValue(interval), 9);
}

TEST_F(NarrowTest, RaisingTheMinimumIntoAHoleStopsAtTheNextPresentValue) {
  EXPECT_TRUE(narrowMin(holed, 5));
  expectDomain(holed, {7, 9});
  EXPECT_EQ(noted(holed), (std::vector<Noted>{{TrailKind::kMin, 1, 5}}));
}

TEST_F(NarrowTest, RaisingTheMinimumOntoAPresentValueKeepsIt) {
  EXPECT_TRUE(narrowMin(holed, 4));
  expectDomain(holed, {4, 7, 9});
}

TEST_F(NarrowTest, RaisingTheMinimumOfABitArrayWithoutHolesWorksLikeAnInterval) {
  CSint *v = fromValues({2, 3, 4, 5});
  EXPECT_TRUE(narrowMin(v, 4));
  expectDomain(v, {4, 5});
  EXPECT_EQ(noted(v), (std::vector<Noted>{{TrailKind::kMin, 2, 4}}));
}

TEST_F(NarrowTest, HolesOutsideTheBoundsDoNotCountAsHoles) {
  EXPECT_TRUE(narrowMin(holed, 3) && narrowMax(holed, 4));
  EXPECT_FALSE(hasHoles(holed));
  EXPECT_TRUE(narrowMin(holed, 4));
  expectDomain(holed, {4});
}

// ----- narrowMax

TEST_F(NarrowTest, LoweringTheMaximumBelowTheMinimumFailsAndChangesNothing) {
  EXPECT_FALSE(narrowMax(interval, -1));
  expectDomain(interval, {0, 1, 2, 3, 4, 5, 6, 7, 8, 9});
  EXPECT_TRUE(noted(interval).empty());
}

TEST_F(NarrowTest, LoweringTheMaximumToItselfOrAboveIsTrueAndTrailsNothing) {
  EXPECT_TRUE(narrowMax(interval, 9));
  EXPECT_TRUE(narrowMax(interval, kIntMax));
  expectDomain(interval, {0, 1, 2, 3, 4, 5, 6, 7, 8, 9});
  EXPECT_TRUE(noted(interval).empty());
}

TEST_F(NarrowTest, LoweringTheMaximumOfAnIntervalNotesTheOldMaximumAndCount) {
  EXPECT_TRUE(narrowMax(interval, 3));
  expectDomain(interval, {0, 1, 2, 3});
  EXPECT_EQ(noted(interval), (std::vector<Noted>{{TrailKind::kMax, 9, 10}}));
  EXPECT_EQ(interval->bits, nullptr);
}

TEST_F(NarrowTest, LoweringTheMaximumIntoAHoleStopsAtThePreviousPresentValue) {
  EXPECT_TRUE(narrowMax(holed, 6));
  expectDomain(holed, {1, 3, 4});
  EXPECT_EQ(noted(holed), (std::vector<Noted>{{TrailKind::kMax, 9, 5}}));
}

TEST_F(NarrowTest, LoweringTheMaximumOntoAPresentValueKeepsIt) {
  EXPECT_TRUE(narrowMax(holed, 3));
  expectDomain(holed, {1, 3});
}

TEST_F(NarrowTest, LoweringTheMaximumOfABitArrayWithoutHolesWorksLikeAnInterval) {
  CSint *v = fromValues({2, 3, 4, 5});
  EXPECT_TRUE(narrowMax(v, 3));
  expectDomain(v, {2, 3});
}

// ----- bindValue

TEST_F(NarrowTest, BindingOutsideTheBoundsFailsAndChangesNothing) {
  EXPECT_FALSE(bindValue(interval, -1));
  EXPECT_FALSE(bindValue(interval, 10));
  expectDomain(interval, {0, 1, 2, 3, 4, 5, 6, 7, 8, 9});
  EXPECT_TRUE(noted(interval).empty());
}

TEST_F(NarrowTest, BindingAnInstantiatedVariableIsTrueForItsValueOnlyAndTrailsNothing) {
  CSint *constant = CSINT(7);
  EXPECT_TRUE(bindValue(constant, 7));
  EXPECT_FALSE(bindValue(constant, 6));
  EXPECT_FALSE(bindValue(constant, 8));
  EXPECT_TRUE(noted(constant).empty());
}

TEST_F(NarrowTest, BindingToAHoleFailsAndChangesNothing) {
  EXPECT_FALSE(bindValue(holed, 5));
  expectDomain(holed, {1, 3, 4, 7, 9});
  EXPECT_TRUE(noted(holed).empty());
}

TEST_F(NarrowTest, BindingToTheMaximumNotesTheMinimumAlone) {
  EXPECT_TRUE(bindValue(interval, 9));
  expectDomain(interval, {9});
  EXPECT_EQ(noted(interval), (std::vector<Noted>{{TrailKind::kMin, 0, 10}}));
}

TEST_F(NarrowTest, BindingToTheMinimumNotesTheMaximumAlone) {
  EXPECT_TRUE(bindValue(interval, 0));
  expectDomain(interval, {0});
  EXPECT_EQ(noted(interval), (std::vector<Noted>{{TrailKind::kMax, 9, 10}}));
}

TEST_F(NarrowTest, BindingToAnInnerValueNotesMinimumThenMaximum) {
  EXPECT_TRUE(bindValue(holed, 4));
  expectDomain(holed, {4});
  EXPECT_EQ(noted(holed), (std::vector<Noted>{{TrailKind::kMin, 1, 5}, {TrailKind::kMax, 9, 5}}));
}

// ----- removeValue

TEST_F(NarrowTest, RemovingOutsideTheBoundsIsTrueAndTrailsNothing) {
  EXPECT_TRUE(removeValue(interval, -1));
  EXPECT_TRUE(removeValue(interval, 10));
  EXPECT_TRUE(removeValue(CSINT(3), 4));
  EXPECT_TRUE(noted(interval).empty());
  expectDomain(interval, {0, 1, 2, 3, 4, 5, 6, 7, 8, 9});
}

TEST_F(NarrowTest, RemovingTheOnlyValueFails) {
  CSint *constant = CSINT(3);
  EXPECT_FALSE(removeValue(constant, 3));
  expectDomain(constant, {3});
  EXPECT_TRUE(noted(constant).empty());
}

TEST_F(NarrowTest, RemovingAnAbsentValueIsTrueAndTrailsNothing) {
  EXPECT_TRUE(removeValue(holed, 5));
  expectDomain(holed, {1, 3, 4, 7, 9});
  EXPECT_TRUE(noted(holed).empty());
}

// The count that an accepted context leaves behind after a restore may be too low.
TEST_F(NarrowTest, RemovingAnAbsentValueFailsWhereTheCountSaysBound) {
  CSint *x = fromValues({1, 2, 4, 5});
  x->count = 1;
  EXPECT_FALSE(removeValue(x, 3));
}

TEST_F(NarrowTest, RemovingTheMinimumOfAnIntervalCreatesNoBitArray) {
  EXPECT_TRUE(removeValue(interval, 0));
  expectDomain(interval, {1, 2, 3, 4, 5, 6, 7, 8, 9});
  EXPECT_EQ(noted(interval), (std::vector<Noted>{{TrailKind::kMin, 0, 10}}));
  EXPECT_EQ(interval->bits, nullptr);
}

TEST_F(NarrowTest, RemovingTheMaximumOfAnIntervalCreatesNoBitArray) {
  EXPECT_TRUE(removeValue(interval, 9));
  expectDomain(interval, {0, 1, 2, 3, 4, 5, 6, 7, 8});
  EXPECT_EQ(noted(interval), (std::vector<Noted>{{TrailKind::kMax, 9, 10}}));
  EXPECT_EQ(interval->bits, nullptr);
}

TEST_F(NarrowTest, RemovingTheMinimumOfADomainWithHolesGoesToTheNextPresentValue) {
  EXPECT_TRUE(removeValue(holed, 1));
  expectDomain(holed, {3, 4, 7, 9});
  EXPECT_EQ(noted(holed), (std::vector<Noted>{{TrailKind::kMin, 1, 5}}));
}

TEST_F(NarrowTest, RemovingTheMaximumOfADomainWithHolesGoesToThePreviousPresentValue) {
  EXPECT_TRUE(removeValue(holed, 9));
  expectDomain(holed, {1, 3, 4, 7});
  EXPECT_EQ(noted(holed), (std::vector<Noted>{{TrailKind::kMax, 9, 5}}));
}

TEST_F(NarrowTest, RemovingAnInnerValueCreatesABitArrayOverTheCreationRange) {
  EXPECT_TRUE(narrowMin(interval, 2) && narrowMax(interval, 7));
  EXPECT_TRUE(removeValue(interval, 4));
  expectDomain(interval, {2, 3, 5, 6, 7});
  ASSERT_NE(interval->bits, nullptr);
  EXPECT_EQ(interval->bits->low, 0);
  EXPECT_EQ(interval->bits->high, 9);
  EXPECT_EQ(noted(interval).back(), (Noted{TrailKind::kRemoved, 4, 6}));
}

TEST_F(NarrowTest, TheBitArrayOnceCreatedOutlivesARestore) {
  cs_saveContext();
  EXPECT_TRUE(removeValue(interval, 4));
  const DomainBits *bits = interval->bits;
  cs_restoreContext();
  EXPECT_EQ(interval->bits, bits);
  expectDomain(interval, {0, 1, 2, 3, 4, 5, 6, 7, 8, 9});
}

TEST_F(NarrowTest, RemovingABoundOfABitArrayWithoutHolesWorksLikeAnInterval) {
  CSint *v = fromValues({2, 3, 4, 5});
  EXPECT_TRUE(removeValue(v, 2) && removeValue(v, 5));
  expectDomain(v, {3, 4});
  EXPECT_EQ(noted(v), (std::vector<Noted>{{TrailKind::kMin, 2, 4}, {TrailKind::kMax, 5, 3}}));
}

// ----- the ends of the int range

TEST_F(NarrowTest, BoundsAtTheIntLimitsAreNarrowedExactly) {
  CSint *v = cs_createCSint(kIntMin, kIntMax);
  EXPECT_TRUE(removeValue(v, kIntMin));
  EXPECT_EQ(cs_getMin(v), kIntMin + 1);
  EXPECT_TRUE(removeValue(v, kIntMax));
  EXPECT_EQ(cs_getMax(v), kIntMax - 1);
  EXPECT_TRUE(narrowMin(v, kIntMax - 2));
  expectDomain(v, {kIntMax - 2, kIntMax - 1});
}

TEST_F(NarrowTest, HolesBesideTheIntLimitsAreSteppedOver) {
  CSint *high = cs_createCSint(kIntMax - 3, kIntMax);
  EXPECT_TRUE(removeValue(high, kIntMax - 1));
  EXPECT_TRUE(removeValue(high, kIntMax));
  expectDomain(high, {kIntMax - 3, kIntMax - 2});
  CSint *low = cs_createCSint(kIntMin, kIntMin + 3);
  EXPECT_TRUE(removeValue(low, kIntMin + 1));
  EXPECT_TRUE(removeValue(low, kIntMin));
  expectDomain(low, {kIntMin + 2, kIntMin + 3});
}

TEST_F(NarrowTest, TheWholeIntRangeCanBeBoundToEitherEndAndToZero) {
  for (const int value : {kIntMin, 0, kIntMax}) {
    CSint *v = cs_createCSint(kIntMin, kIntMax);
    EXPECT_TRUE(bindValue(v, value));
    expectDomain(v, {value});
  }
}

// ----- 64-bit bounds

TEST_F(NarrowTest, WideBoundsThatDoNotTightenAreTrueAndTrailNothing) {
  EXPECT_TRUE(narrowMin64(interval, std::int64_t{kIntMin} * 8));
  EXPECT_TRUE(narrowMax64(interval, std::int64_t{kIntMax} * 8));
  EXPECT_TRUE(noted(interval).empty());
}

TEST_F(NarrowTest, WideBoundsPastTheOtherBoundFailWithoutNarrowing) {
  EXPECT_FALSE(narrowMin64(interval, std::int64_t{kIntMax} + 1));
  EXPECT_FALSE(narrowMax64(interval, std::int64_t{kIntMin} - 1));
  EXPECT_FALSE(narrowMin64(interval, 10));
  EXPECT_FALSE(narrowMax64(interval, -1));
  EXPECT_TRUE(noted(interval).empty());
}

TEST_F(NarrowTest, WideBoundsWithinTheDomainNarrow) {
  EXPECT_TRUE(narrowMin64(interval, 2));
  EXPECT_TRUE(narrowMax64(interval, 3));
  expectDomain(interval, {2, 3});
}

// ----- removeValueNoTrail

TEST_F(NarrowTest, UntrailedRemovalOfAbsentValuesDoesNothing) {
  EXPECT_TRUE(removeValueNoTrail(holed, 0));
  EXPECT_TRUE(removeValueNoTrail(holed, 10));
  EXPECT_TRUE(removeValueNoTrail(holed, 5));
  expectDomain(holed, {1, 3, 4, 7, 9});
}

TEST_F(NarrowTest, UntrailedRemovalMovesTheBoundsOverHoles) {
  EXPECT_TRUE(removeValueNoTrail(holed, 1));
  EXPECT_TRUE(removeValueNoTrail(holed, 9));
  expectDomain(holed, {3, 4, 7});
  EXPECT_TRUE(noted(holed).empty());
}

TEST_F(NarrowTest, UntrailedRemovalOfAnInnerValueCreatesTheBitArray) {
  EXPECT_TRUE(narrowMin(interval, 1));
  const std::size_t before = noted(interval).size();
  EXPECT_TRUE(removeValueNoTrail(interval, 5));
  expectDomain(interval, {1, 2, 3, 4, 6, 7, 8, 9});
  EXPECT_EQ(interval->bits->low, 0);
  EXPECT_EQ(noted(interval).size(), before);
}

TEST_F(NarrowTest, UntrailedRemovalSurvivesARestore) {
  cs_saveContext();
  EXPECT_TRUE(removeValueNoTrail(interval, 5));
  cs_restoreContext();
  EXPECT_FALSE(cs_isIn(interval, 5));
}

TEST_F(NarrowTest, UntrailedRemovalOfTheLastValueIsTrueAndEmptiesTheCount) {
  CSint *constant = CSINT(3);
  EXPECT_TRUE(removeValueNoTrail(constant, 3));
  EXPECT_EQ(cs_getNbElements(constant), 0);
  constant->max = constant->min;  // an emptied domain is its owner's to repair
  constant->initialMax = constant->max;
  constant->count = 1;
}

// ----- exhausted memory

TEST_F(NarrowTest, ARefusedBitArrayFailsTheRemovalAndIsReportedOnce) {
  const AllocationRule none(refuseAll());
  EXPECT_FALSE(removeValue(interval, 5));
  EXPECT_EQ(memoryReports, 1);
  EXPECT_EQ(cs_getErr(), CS_ERR_MEMORY);
  EXPECT_EQ(values(interval).size(), 10U);
  EXPECT_FALSE(removeValueNoTrail(interval, 5));
  EXPECT_EQ(memoryReports, 2);
}

TEST_F(NarrowTest, ARemovalThatFailedForMemoryIsUndoneHarmlessly) {
  cs_saveContext();
  {
    const AllocationRule none(refuseAll());
    EXPECT_FALSE(removeValue(interval, 5));
  }
  cs_restoreContext();
  expectDomain(interval, {0, 1, 2, 3, 4, 5, 6, 7, 8, 9});
}

TEST_F(NarrowTest, EveryOperationFailsUnchangedWhenTheTrailCannotGrow) {
  fillTrail();
  const AllocationRule none(refuseAll());
  EXPECT_FALSE(narrowMin(interval, 5));
  EXPECT_FALSE(narrowMax(interval, 5));
  EXPECT_FALSE(bindValue(interval, 0));
  EXPECT_FALSE(bindValue(interval, 5));
  EXPECT_FALSE(bindValue(interval, 9));
  EXPECT_FALSE(removeValue(interval, 0));
  EXPECT_FALSE(removeValue(interval, 5));
  EXPECT_FALSE(removeValue(interval, 9));
  EXPECT_EQ(memoryReports, 8);
  expectDomain(interval, {0, 1, 2, 3, 4, 5, 6, 7, 8, 9});
}

TEST_F(NarrowTest, TheTwoNotesOfABindingMayLieInTwoBlocks) {
  cs_saveContext();
  while (solver::trail.count() % Trail::kCapacity != Trail::kCapacity - 1) cs_backtrack(nullptr, 0, nullptr);
  EXPECT_TRUE(bindValue(interval, 5));
  EXPECT_EQ(noted(interval), (std::vector<Noted>{{TrailKind::kMin, 0, 10}, {TrailKind::kMax, 9, 10}}));
  cs_restoreContext();
  expectDomain(interval, {0, 1, 2, 3, 4, 5, 6, 7, 8, 9});
}

// Without bits, with a word of them and with several, and with a count that was written back wrong.
TEST_F(NarrowTest, AValueThatNobodyForeseesIsFoundAndRemovedLikeAnother) {
  for (const int high : {9, 63, 64, 200})
    for (const auto &holes : {std::vector<int>{}, {3}, {1, 4, 8}, {2, 3, 4, 5, 6, 7, 8}})
      for (const int wrong : {0, 1, 2})
        for (int value = -3; value <= high + 3; ++value) {
          CSint *pair[] = {cs_createCSint(0, high), cs_createCSint(0, high)};
          for (CSint *v : pair) {
            for (const int hole : holes) ASSERT_TRUE(removeValue(v, hole));
            if (wrong > 0) v->count = wrong;
          }
          EXPECT_EQ(mayContain(pair[0], value),
                    has(pair[0], kEasy) ? contains(pair[1], value) : isWithin(pair[1], value));
          EXPECT_EQ(removeUnforeseen(pair[0], value), removeValue(pair[1], value)) << value << " of " << high;
          for (int i = 0; i <= high; ++i) ASSERT_EQ(contains(pair[0], i), contains(pair[1], i));
          EXPECT_EQ(pair[0]->count, pair[1]->count);
          for (CSint *v : pair) {
            DomainBits::destroy(v->bits);
            *v = intervalOf(0, 0);
          }
        }
}

TEST_F(NarrowTest, BindingFailsUnchangedWhenOnlyTheSecondNoteFindsNoRoom) {
  fillTrail();
  // One slot becomes free in the last block.
  solver::trail.pop();
  const AllocationRule none(refuseAll());
  EXPECT_FALSE(bindValue(interval, 5));
  EXPECT_EQ(memoryReports, 1);
  expectDomain(interval, {0, 1, 2, 3, 4, 5, 6, 7, 8, 9});
}

}  // namespace
