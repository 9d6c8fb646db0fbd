// SPDX-License-Identifier: MIT
// cs_Cardinality and cs_CardinalityDomain beyond what enumeration reaches: sizes, extremes, bad input.
#include <climits>
#include <memory>
#include <random>
#include <set>
#include <vector>

#include "koru_extras.h"
#include "support/kit/solver_test.h"

namespace koru::test {
namespace {

using Values = std::vector<int>;
using PostCardinality = bool (*)(CSint **, int, const int *, CSint **, int, bool);

std::vector<CSint *> create(int count, int min, int max) {
  std::vector<CSint *> vars;
  for (int i = 0; i < count; ++i) vars.push_back(cs_createCSint(min, max));
  return vars;
}

class CardinalityTest : public SolverTest, public ::testing::WithParamInterface<PostCardinality> {
 protected:
  static bool post(std::vector<CSint *> vars, const Values &values, std::vector<CSint *> counts, bool closed = false) {
    return GetParam()(vars.data(), static_cast<int>(vars.size()), values.data(), counts.data(),
                      static_cast<int>(counts.size()), closed);
  }
};

INSTANTIATE_TEST_SUITE_P(All, CardinalityTest, ::testing::Values(cs_Cardinality, cs_CardinalityDomain));

TEST_P(CardinalityTest, CountsFollowTheVariables) {
  const std::vector<CSint *> x{CSINT(1), cs_createCSint(0, 2), cs_createCSint(2, 3), CSINT(7)};
  const std::vector<CSint *> counts = create(3, -5, 9);
  ASSERT_TRUE(post(x, {1, 2, 5}, counts));
  EXPECT_EQ(values(counts[0]), (Values{1, 2}));
  EXPECT_EQ(values(counts[1]), (Values{0, 1, 2}));
  EXPECT_EQ(values(counts[2]), (Values{0}));
  ASSERT_TRUE(cs_EQ(counts[1], 2));
  EXPECT_EQ(values(counts[0]), (Values{1}));
  EXPECT_EQ(values(x[1]), (Values{2}));
  EXPECT_EQ(values(x[2]), (Values{2}));
}

TEST_P(CardinalityTest, AValueThatIsFullLeavesTheOthers) {
  const std::vector<CSint *> x = create(3, 0, 2);
  ASSERT_TRUE(post(x, {1}, {cs_createCSint(0, 1)}));
  ASSERT_TRUE(cs_EQ(x[0], 1));
  EXPECT_EQ(values(x[1]), (Values{0, 2}));
  EXPECT_EQ(values(x[2]), (Values{0, 2}));
}

TEST_P(CardinalityTest, ClosedTakesNoOtherValue) {
  const std::vector<CSint *> x = create(2, 0, 9);
  ASSERT_TRUE(post(x, {7, 3, 12}, create(3, 0, 2), true));
  EXPECT_EQ(values(x[0]), (Values{3, 7}));
  EXPECT_FALSE(post({CSINT(4)}, {7, 3}, create(2, 0, 2), true));
  EXPECT_FALSE(post({CSINT(4)}, {}, {}, true));
  EXPECT_TRUE(post({CSINT(4)}, {}, {}, false));
}

TEST_P(CardinalityTest, WhereAllOthersAreNeededTheCountedValuesGo) {
  CSint *const x = cs_createCSint(0, 9);
  ASSERT_TRUE(post({x}, {0, 4, 5, 9}, {CSINT(0), cs_createCSint(0, 0), cs_createCSint(-1, 0), CSINT(0)}));
  EXPECT_EQ(values(x), (Values{1, 2, 3, 6, 7, 8}));
}

TEST_P(CardinalityTest, TheSumOfTheCountsIsTheNumberOfVariables) {
  const std::vector<CSint *> x = create(10, 0, 2);
  const std::vector<CSint *> counts{cs_createCSint(0, 3), cs_createCSint(0, 2), cs_createCSint(0, 10)};
  ASSERT_TRUE(post(x, {0, 1, 2}, counts));
  EXPECT_EQ(cs_getMin(counts[2]), 5);
  EXPECT_FALSE(cs_LE(counts[2], 4));
}

TEST_P(CardinalityTest, TwoValuesThatNeedTheSameVariableFail) {
  const std::vector<CSint *> x = create(2, 0, 1);
  EXPECT_FALSE(post(x, {0, 1}, {CSINT(2), cs_createCSint(1, 2)}));
  EXPECT_FALSE(post({cs_createCSint(0, 2), CSINT(5)}, {0, 1}, {CSINT(1), CSINT(1)}));
}

TEST_P(CardinalityTest, EndsOfTheIntsAreOrdinaryValues) {
  const std::vector<CSint *> x{cs_createCSint(INT_MAX - 1, INT_MAX), cs_createCSint(INT_MIN, INT_MIN + 1),
                               cs_createCSint(INT_MIN, INT_MAX)};
  const std::vector<CSint *> counts{cs_createCSint(INT_MIN, INT_MAX), cs_createCSint(2, INT_MAX)};
  ASSERT_TRUE(post(x, {INT_MAX, INT_MIN}, counts));
  EXPECT_EQ(cs_getValue(x[1]), INT_MIN);
  EXPECT_EQ(cs_getValue(x[2]), INT_MIN);
  EXPECT_EQ(values(counts[0]), (Values{0, 1}));
}

TEST_P(CardinalityTest, ManyValuesTakeSeveralWords) {
  for (const int step : {1, 3}) {
    Values all;
    for (int j = 0; j < 150; ++j) all.push_back(j * step);
    const std::vector<CSint *> x = create(150, 0, 149 * step);
    const std::vector<CSint *> counts = create(150, 0, 1);
    ASSERT_TRUE(post(x, all, counts, true));
    EXPECT_EQ(cs_getMin(counts[149]), 1);
    for (int i = 0; i < 149; ++i) ASSERT_TRUE(cs_EQ(x[static_cast<std::size_t>(i)], (i + 70) % 150 * step));
    EXPECT_EQ(cs_getValue(x[149]), 69 * step);
  }
}

TEST_P(CardinalityTest, AllWordsAreFound) {
  std::vector<CSint *> x = create(6, 0, 3);
  ASSERT_TRUE(post(x, {0, 1, 2}, {CSINT(2), CSINT(1), cs_createCSint(0, 1)}));
  static int found;
  found = 0;
  cs_findAll(x.data(), 6, cs_findFreeVar, [](CSint **, int) { ++found; });
  EXPECT_EQ(found, 60 + 180);  // 6! / (2! 1! 3!), with a 2 more 6! / (2! 1! 1! 2!)
}

TEST_P(CardinalityTest, ArraysMayGo) {
  const std::vector<CSint *> x = create(2, 0, 1);
  const std::vector<CSint *> counts = create(2, 1, 1);
  {
    const auto array = std::make_unique<CSint *[]>(4);
    std::copy(x.begin(), x.end(), array.get());
    std::copy(counts.begin(), counts.end(), array.get() + 2);
    const auto numbers = std::make_unique<int[]>(2);
    numbers[1] = 1;
    ASSERT_TRUE(GetParam()(array.get(), 2, numbers.get(), array.get() + 2, 2, true));
  }
  ASSERT_TRUE(cs_EQ(x[0], 1));
  EXPECT_EQ(cs_getValue(x[1]), 0);
}

TEST_P(CardinalityTest, RefusesWhatMakesNoSense) {
  CSint *const x = cs_createCSint(0, 3);
  CSint *vars[] = {x, nullptr};
  const int numbers[] = {1, 1};
  EXPECT_FALSE(GetParam()(vars, 2, numbers, vars, 1, false));
  EXPECT_FALSE(GetParam()(vars, 1, numbers, vars, 2, false));
  EXPECT_FALSE(GetParam()(vars, -1, numbers, vars, 1, false));
  EXPECT_FALSE(GetParam()(vars, 1, numbers, vars, -1, false));
  EXPECT_FALSE(GetParam()(vars, 1, numbers, vars, INT_MAX, false));
  EXPECT_FALSE(GetParam()(nullptr, 1, numbers, vars, 1, false));
  EXPECT_FALSE(GetParam()(vars, 1, nullptr, vars, 1, false));
  EXPECT_FALSE(GetParam()(vars, 1, numbers, nullptr, 1, false));
  EXPECT_FALSE(post({x}, {4, 4}, create(2, 0, 1))) << "a value twice";
  EXPECT_TRUE(GetParam()(nullptr, 0, nullptr, nullptr, 0, true));
  cs_end();
  EXPECT_FALSE(GetParam()(nullptr, 0, nullptr, nullptr, 0, true));
  cs_init();
}

using CardinalityDomainTest = SolverTest;

TEST_F(CardinalityDomainTest, ThreeVariablesOverTwoValuesAreSeenAtOnce) {
  const std::vector<CSint *> counts{cs_createCSint(0, 1), cs_createCSint(0, 1), cs_createCSint(0, 9)};
  const int numbers[] = {0, 1, 2};
  for (const int posted : {0, 1}) {
    std::vector<CSint *> x = create(3, 0, 1);
    for (const int i : {1, 2}) x.push_back(cs_createCSint(0, 4 + i));
    CSint *y[] = {counts[0], counts[1], counts[2]};
    cs_saveContext();
    const PostCardinality post = posted == 0 ? cs_Cardinality : cs_CardinalityDomain;
    EXPECT_EQ(post(x.data(), 5, numbers, y, 3, false), posted == 0);
    cs_restoreContext();
  }
}

// Variables over 0..5 of which four values are counted, and intervals for the counts.
class Instance {
 public:
  Instance(std::mt19937 &random, int n) {
    for (int i = 0; i < n; ++i) {
      Values domain;
      while (domain.empty())
        for (int v = 0; v < 6; ++v)
          if (random() % 5 < 2) domain.push_back(v);
      x.push_back(fromValues(domain));
    }
    for (std::size_t j = 0; j < numbers.size(); ++j) {
      const int low = static_cast<int>(random() % 3);
      counts.push_back(cs_createCSint(low, low + static_cast<int>(random() % 3)));
    }
  }

  bool post() {
    return cs_CardinalityDomain(x.data(), static_cast<int>(x.size()), numbers.data(), counts.data(),
                                static_cast<int>(counts.size()), false);
  }

  // The domains that solutions need, by enumeration; of the variables, then of the counts. Empty without a solution.
  std::vector<std::set<int>> needed() {
    std::vector<std::set<int>> result(x.size() + counts.size());
    Values taken(x.size());
    enumerate(taken, 0, result);
    return result;
  }
  std::vector<std::set<int>> left() const {
    std::vector<std::set<int>> result;
    for (const std::vector<CSint *> &vars : {x, counts})
      for (CSint *v : vars) {
        const Values all = values(v);
        result.emplace_back(all.begin(), all.end());
      }
    return result;
  }

  std::vector<CSint *> x;
  std::vector<CSint *> counts;
  Values numbers{4, 0, 1, 3};

 private:
  void enumerate(Values &taken, std::size_t i, std::vector<std::set<int>> &result) {
    if (i < x.size()) {
      for (const int v : values(x[i])) {
        taken[i] = v;
        enumerate(taken, i + 1, result);
      }
      return;
    }
    Values times;
    for (std::size_t j = 0; j < numbers.size(); ++j) {
      times.push_back(static_cast<int>(std::count(taken.begin(), taken.end(), numbers[j])));
      if (!cs_isIn(counts[j], times.back())) return;
    }
    taken.insert(taken.end(), times.begin(), times.end());
    for (std::size_t k = 0; k < taken.size(); ++k) result[k].insert(taken[k]);
    taken.resize(x.size());
  }
};

TEST_F(CardinalityDomainTest, WhatIsLeftIsWhatSolutionsNeed) {
  std::mt19937 random(7);
  int accepted = 0;
  for (int round = 0; round < 400; ++round) {
    cs_saveContext();
    Instance instance(random, 3 + round % 5);
    const auto needed = instance.needed();
    const bool posted = instance.post();
    ASSERT_EQ(posted, !needed[0].empty()) << round;
    if (posted) {
      ++accepted;
      EXPECT_EQ(instance.left(), needed) << round;
      for (CSint *v : instance.x) {
        cs_saveContext();
        cs_NEQ(v, cs_getMin(v));
        const auto still = instance.needed();
        EXPECT_TRUE(still[0].empty() || instance.left() == still) << round;
        cs_restoreContext();
      }
    }
    cs_restoreContext();
  }
  EXPECT_GT(accepted, 100);
  EXPECT_LT(accepted, 390);
}

}  // namespace
}  // namespace koru::test
