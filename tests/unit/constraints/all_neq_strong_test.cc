// SPDX-License-Identifier: MIT
// cs_AllNeqDomain and cs_AllNeqBounds beyond what enumeration reaches: sizes, extremes, ranges left behind.
#include <algorithm>
#include <memory>
#include <random>

#include "koru_extras.h"
#include "support/kit/solver_test.h"

namespace {

using namespace koru::test;

constexpr int kMin = -2147483647 - 1;
constexpr int kMax = 2147483647;

using PostAllNeq = bool (*)(CSint **, int);

class AllNeqStrongTest : public SolverTest, public ::testing::WithParamInterface<PostAllNeq> {
 protected:
  static bool post(std::vector<CSint *> vars) { return GetParam()(vars.data(), static_cast<int>(vars.size())); }
  static std::vector<CSint *> create(int count, int min, int max) {
    std::vector<CSint *> vars;
    for (int i = 0; i < count; ++i) vars.push_back(cs_createCSint(min, max));
    return vars;
  }
};

INSTANTIATE_TEST_SUITE_P(Both, AllNeqStrongTest, ::testing::Values(cs_AllNeqBounds, cs_AllNeqDomain));

TEST_P(AllNeqStrongTest, MorePigeonsThanHolesAreRefusedAtOnce) { EXPECT_FALSE(post(create(200, 1, 199))); }

TEST_P(AllNeqStrongTest, AsManyAsThereAreFit) {
  std::vector<CSint *> vars = create(100, 1, 100);
  ASSERT_TRUE(post(vars));
  EXPECT_TRUE(cs_search(vars.data(), 100, cs_findFreeVar));
  EXPECT_EQ(cs_getNbFails(), 0);
}

TEST_P(AllNeqStrongTest, APairOfVariablesHasItsTwoValuesAlone) {
  std::vector<CSint *> pair = create(2, 3, 4);
  CSint *below = cs_createCSint(3, 9);
  CSint *above = cs_createCSint(0, 4);
  ASSERT_TRUE(post({pair[0], below, pair[1], above}));
  EXPECT_EQ(cs_getMin(below), 5);
  EXPECT_EQ(cs_getMax(above), 2);
}

TEST_P(AllNeqStrongTest, ChainsOfHallIntervalsAreFollowed) {
  std::vector<CSint *> vars;
  for (int i = 0; i < 70; ++i) vars.push_back(cs_createCSint(0, i));
  ASSERT_TRUE(post(vars));
  for (int i = 0; i < 70; ++i) EXPECT_EQ(cs_getMin(vars[static_cast<std::size_t>(i)]), i);
}

TEST_P(AllNeqStrongTest, TheEndsOfTheIntsAreOrdinaryValues) {
  std::vector<CSint *> low = create(2, kMin, kMin + 1);
  std::vector<CSint *> high = create(2, kMax - 1, kMax);
  CSint *any = cs_createCSint(kMin, kMax);
  ASSERT_TRUE(post({low[0], high[0], any, low[1], high[1]}));
  EXPECT_EQ(cs_getMin(any), kMin + 2);
  EXPECT_EQ(cs_getMax(any), kMax - 2);
  EXPECT_TRUE(cs_EQ(low[0], kMin));
  EXPECT_EQ(cs_getMin(low[1]), kMin + 1);
}

TEST_P(AllNeqStrongTest, AVariableTwiceFails) {
  CSint *x = cs_createCSint(0, 9);
  EXPECT_FALSE(post({x, cs_createCSint(0, 9), x}));
}

TEST_P(AllNeqStrongTest, BadArraysAreRefusedAndSmallOnesAreTrue) {
  CSint *x = cs_createCSint(0, 9);
  EXPECT_FALSE(GetParam()(nullptr, 1));
  EXPECT_FALSE(GetParam()(&x, -1));
  EXPECT_FALSE(post({x, nullptr}));
  EXPECT_TRUE(GetParam()(nullptr, 0));
  EXPECT_TRUE(post({x}));
  cs_end();
  EXPECT_FALSE(GetParam()(nullptr, 0));
  cs_init();
}

TEST_P(AllNeqStrongTest, TheArrayMayGo) {
  std::vector<CSint *> vars = create(3, 0, 2);
  {
    const auto array = std::make_unique<CSint *[]>(3);
    std::copy(vars.begin(), vars.end(), array.get());
    ASSERT_TRUE(GetParam()(array.get(), 3));
  }
  EXPECT_TRUE(cs_EQ(vars[0], 0) && cs_EQ(vars[1], 1));
  EXPECT_EQ(cs_getMin(vars[2]), 2);
}

TEST_P(AllNeqStrongTest, AllPermutationsAreFound) {
  std::vector<CSint *> vars = create(5, -2, 2);
  ASSERT_TRUE(post(vars));
  static int found;
  found = 0;
  cs_findAll(vars.data(), 5, cs_findFreeVar, [](CSint **, int) { ++found; });
  EXPECT_EQ(found, 120);
}

// Posted on what an accepted context had left of the domains, it meets values that it did not know.
TEST_P(AllNeqStrongTest, ValuesThatComeBackBehindAnAcceptAreTold) {
  std::vector<CSint *> vars = create(3, 0, 9);
  cs_saveContext();
  for (CSint *v : vars) ASSERT_TRUE(cs_LE(v, 8));
  cs_saveContext();
  for (CSint *v : vars) ASSERT_TRUE(cs_LE(v, 2));
  ASSERT_TRUE(post(vars));
  cs_acceptContext();
  cs_restoreContext();
  ASSERT_EQ(cs_getMax(vars[0]), 9);
  EXPECT_TRUE(cs_EQ(vars[0], 9));
  EXPECT_TRUE(cs_EQ(vars[1], 8));
  EXPECT_FALSE(cs_GE(vars[2], 8));
}

class AllNeqDomainTest : public SolverTest {};

TEST_F(AllNeqDomainTest, AHallSetInHolesIsSeenInDomainsOnly) {
  for (const auto &[poster, left] : {std::pair<PostAllNeq, int>{cs_AllNeqBounds, 6}, {cs_AllNeqDomain, 4}}) {
    CSint *pair[] = {fromValues({1, 4}), fromValues({1, 4})};
    CSint *x = cs_createCSint(0, 5);
    CSint *vars[] = {pair[0], x, pair[1]};
    ASSERT_TRUE(poster(vars, 3));
    EXPECT_EQ(cs_getNbElements(x), left);
  }
}

TEST_F(AllNeqDomainTest, SpansTooWideForDomainsGetBounds) {
  CSint *vars[] = {cs_createCSint(0, 1), cs_createCSint(0, 1), cs_createCSint(0, 2000000)};
  ASSERT_TRUE(cs_AllNeqDomain(vars, 3));
  EXPECT_EQ(cs_getMin(vars[2]), 2);
  EXPECT_TRUE(cs_EQ(vars[0], 1));
  EXPECT_EQ(cs_getMax(vars[1]), 0);
}

// Many words of values, with restores: what is left is what pairs of a matching could be, tried value by value.
TEST_F(AllNeqDomainTest, ValuesThatAreLeftLeadToSolutions) {
  std::mt19937 random(3);
  std::vector<CSint *> vars;
  for (int i = 0; i < 12; ++i) {
    std::vector<int> domain;
    for (int k = 0; k < 3; ++k) domain.push_back(static_cast<int>(random() % 14) * 17);
    vars.push_back(fromValues(domain));
  }
  if (!cs_AllNeqDomain(vars.data(), 12)) GTEST_FAIL() << "another seed";
  for (CSint *v : vars) {
    for (const int value : values(v)) {
      const int label = cs_saveContext();
      EXPECT_TRUE(cs_EQ(v, value));
      EXPECT_TRUE(cs_search(vars.data(), 12, cs_findFreeVarNbElements));
      EXPECT_EQ(cs_getNbFails(), 0);
      cs_restoreContextUntil(label);
    }
  }
}

// Within the context the minima come to stand in the opposite order; after it they are equal.
TEST_P(AllNeqStrongTest, ARestoreThatTurnsTheOrderRoundIsNoticed) {
  constexpr int kCount = 60;
  std::vector<CSint *> vars = create(kCount, 0, 200);
  ASSERT_TRUE(post(vars));
  cs_saveContext();
  for (int i = 0; i < kCount; ++i) ASSERT_TRUE(cs_GE(vars[static_cast<std::size_t>(i)], kCount - i));
  cs_restoreContext();
  for (int i = 1; i < kCount; ++i) ASSERT_TRUE(cs_LE(vars[static_cast<std::size_t>(i)], kCount - 2));
  EXPECT_EQ(cs_getMin(vars[0]), kCount - 1);
}

}  // namespace
