// SPDX-License-Identifier: MIT
// Shortening: which decisions are dropped, which no-goods are looked at, and what callbacks may do meanwhile.
#include "nogood/shorten.h"

#include "support/kit/refuser.h"
#include "support/no_goods/no_goods.h"

namespace {

using namespace koru;
using namespace koru::test;
using namespace koru::test::nogood;

using Sets = std::vector<Literals>;

class ShortenTest : public NoGoodTest {
 protected:
  Sets shortened() {
    const int contexts = solver::contexts.count();
    shortenNewest(*set);
    EXPECT_EQ(solver::contexts.count(), contexts);
    return contents(set);
  }
  void expectUntouched() const {
    for (CSint *v : x) EXPECT_EQ(values(v), range(0, 9));
  }
  // Tells of each value that x[i] is bound to.
  void listen(int i, std::function<void(int)> callback) {
    accepts = [told = std::move(callback)](int value) {
      told(value);
      return true;
    };
    ASSERT_TRUE(postRefuser(x[i], accepts));
  }

  std::function<bool(int)> accepts;
};

// x3 = 1 is refused because of x0 = 1 alone.
TEST_F(ShortenTest, DecisionsWithoutWhichALaterOneIsRefusedAreDropped) {
  ASSERT_TRUE(cs_Neq(x[0], x[3]));
  add(set, {eq(0, 1), eq(1, 2), eq(2, 3), eq(3, 1)});
  EXPECT_EQ(shortened(), (Sets{{eq(0, 1), eq(3, 1)}}));
  expectUntouched();
}

TEST_F(ShortenTest, ADecisionThatIsRefusedByItselfStandsAlone) {
  ASSERT_TRUE(cs_NEQ(x[2], 3));
  add(set, {eq(0, 1), eq(1, 2), eq(2, 3), eq(3, 1)});
  EXPECT_EQ(shortened(), (Sets{{eq(2, 3)}}));
}

TEST_F(ShortenTest, OnlyDecisionsJustBeforeTheRefusedOneAreDropped) {
  ASSERT_TRUE(cs_Neq(x[1], x[3]));
  add(set, {eq(0, 1), eq(1, 2), eq(2, 3), eq(3, 2)});
  EXPECT_EQ(shortened(), (Sets{{eq(0, 1), eq(1, 2), eq(3, 2)}}));
}

TEST_F(ShortenTest, WhatFollowsTheRefusedDecisionGoesOnlyIfSomethingBeforeItDoes) {
  ASSERT_TRUE(cs_Neq(x[0], x[2]));
  ASSERT_TRUE(cs_Neq(x[1], x[3]));
  addFreely(set, {eq(1, 1), eq(3, 1), eq(0, 5), eq(2, 7)});
  add(set, {eq(0, 1), eq(1, 2), eq(2, 1), eq(3, 9)});
  EXPECT_EQ(shortened(), (Sets{{eq(1, 1), eq(3, 1), eq(0, 5), eq(2, 7)}, {eq(0, 1), eq(2, 1)}}));
}

TEST_F(ShortenTest, AFirstDecisionThatIsRefusedKeepsTheNoGood) {
  ASSERT_TRUE(cs_NEQ(x[0], 1));
  add(set, {eq(0, 1), eq(1, 2), eq(2, 3)});
  EXPECT_EQ(shortened(), (Sets{{eq(0, 1), eq(1, 2), eq(2, 3)}}));
}

// Its own conclusion refuses the last decision, and needs all others.
TEST_F(ShortenTest, ANoGoodThatPropagationAddsNothingToIsKept) {
  add(set, {eq(0, 1), eq(1, 2), eq(2, 3)});
  EXPECT_EQ(shortened(), (Sets{{eq(0, 1), eq(1, 2), eq(2, 3)}}));
  add(set, {eq(0, 5)});
  EXPECT_EQ(shortened(), (Sets{{eq(0, 1), eq(1, 2), eq(2, 3)}, {eq(0, 5)}}));
  expectUntouched();
}

TEST_F(ShortenTest, OtherNoGoodsTakePart) {
  add(set, {eq(0, 1), eq(1, 2)});
  addFreely(set, {eq(0, 1), eq(3, 4), eq(1, 2)});
  EXPECT_EQ(shortened(), (Sets{{eq(0, 1), eq(1, 2)}, {eq(0, 1), eq(1, 2)}}));
}

TEST_F(ShortenTest, AShortenedNoGoodWatchesItsFirstTwoElements) {
  ASSERT_TRUE(cs_Neq(x[0], x[3]));
  add(set, {eq(0, 1), eq(1, 2), eq(2, 3), eq(3, 1)});
  shortened();
  EXPECT_EQ(watches(newest(set)), (std::vector{0, 1}));
  ASSERT_TRUE(cs_NEQ(x[2], 3));
  add(set, {neq(0, 1), eq(1, 2), eq(2, 3)});
  shortened();
  EXPECT_EQ(watches(newest(set)), (std::vector{0, 0}));
  expectSound(set);
}

// ----- which no-goods

// Four that can be shortened, by x2 != 3, and one that cannot.
class ShortenOrderTest : public ShortenTest {
 protected:
  void SetUp() override {
    ShortenTest::SetUp();
    ASSERT_TRUE(cs_NEQ(x[2], 3));
  }
  void addLong(int value) { add(set, {eq(0, value), eq(1, 1), eq(2, 3)}); }
  void addFirm(int value) { add(set, {eq(0, value), eq(1, 1), eq(2, 4)}); }
  std::vector<int> lengths() {
    std::vector<int> result;
    for (const Literals &l : contents(set)) result.push_back(static_cast<int>(l.size()));
    return result;
  }
  std::vector<int> lengthsAfterShortening() {
    shortened();
    return lengths();
  }
};

TEST_F(ShortenOrderTest, TheVisitFromTheNewestEndsAtTheFirstThatKeepsItsLength) {
  addLong(1);
  addFirm(2);
  addLong(3);
  addLong(4);
  EXPECT_EQ(lengthsAfterShortening(), (std::vector{3, 3, 1, 1}));
}

TEST_F(ShortenOrderTest, NoGoodsThatWereLookedAtArePassedOver) {
  addLong(1);
  addFirm(2);
  addLong(3);
  shortened();
  addLong(4);
  EXPECT_EQ(lengthsAfterShortening(), (std::vector{1, 3, 1, 1}));
}

TEST_F(ShortenOrderTest, NothingIsLookedAtTwice) {
  addFirm(1);
  shortened();
  ASSERT_TRUE(cs_NEQ(x[2], 4));
  EXPECT_EQ(lengthsAfterShortening(), std::vector{3});
}

// ----- callbacks and memory

TEST_F(ShortenOrderTest, ACallbackMayDeleteTheNoGoodThatIsShortened) {
  addLong(1);
  addLong(2);
  listen(1, [&](int) { filterBy([](CSnoGood *) { return false; }); });
  shortened();
  EXPECT_EQ(lengths(), std::vector<int>{});
}

TEST_F(ShortenOrderTest, NoGoodsThatACallbackAddsAreNotLookedAt) {
  addLong(1);
  listen(1, [&](int) {
    if (cs_getNbNoGoods(set) == 1) addLong(2);
  });
  EXPECT_EQ(lengthsAfterShortening(), (std::vector{1, 3}));
  EXPECT_FALSE(newest(set)->processed);
}

TEST_F(ShortenOrderTest, ANoGoodThatFailsMeanwhileKeepsItsPlace) {
  addLong(1);
  add(set, {eq(1, 1), eq(0, 2)});
  addLong(2);
  const Sets before = contents(set);
  EXPECT_EQ(shortened()[1], before[1]);
}

TEST_F(ShortenOrderTest, ARefusalForWantOfMemoryShortensNothing) {
  addLong(1);
  listen(1, [&](int) {
    const FailingAllocation failing(0);
    cs_NEQ(x[3], 5);
  });
  EXPECT_EQ(lengthsAfterShortening(), std::vector{3});
  EXPECT_GT(memoryReports, 0);
}

// A context for the no-good, and one for each of its three decisions.
class ShortenRoomTest : public ShortenOrderTest, public ::testing::WithParamInterface<int> {};

TEST_P(ShortenRoomTest, AContextThatCannotBeHadShortensNothing) {
  addLong(1);
  while (solver::contexts.count() + GetParam() < BlockStack<ContextMark>::kCapacity) cs_saveContext();
  {
    const FailingAllocation failing(0);
    EXPECT_EQ(lengthsAfterShortening(), std::vector{3});
  }
  EXPECT_EQ(memoryReports, 1);
}

INSTANTIATE_TEST_SUITE_P(, ShortenRoomTest, ::testing::Range(0, 4));

}  // namespace
