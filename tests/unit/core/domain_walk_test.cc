// SPDX-License-Identifier: MIT
#include "core/domain_walk.h"

#include <vector>

#include "support/kit/solver_test.h"

namespace {

using namespace koru;
using namespace koru::test;

using DomainWalkTest = SolverTest;

TEST_F(DomainWalkTest, AWalkOverTheValuesIsLiveAndStopsWhenItIsRefused) {
  CSint *v = fromValues({-2, 0, 1, 5, 7, 9});
  std::vector<int> seen;
  EXPECT_TRUE(forEachValue(v, [&](int value) {
    seen.push_back(value);
    return value != 0 || (cs_NEQ(v, 5) && cs_LE(v, 8));
  }));
  EXPECT_EQ(seen, (std::vector{-2, 0, 1, 7}));
  EXPECT_FALSE(forEachValue(v, [&](int value) { return value != 1 && value < 7; }));
  int count = 0;
  EXPECT_TRUE(forEachValue(cs_createCSint(kIntMax - 1, kIntMax), [&](int) { return ++count < 3; }));
  EXPECT_EQ(count, 2);
}

TEST_F(DomainWalkTest, VisitsOnlyWhatLiesWithinTheLimits) {
  CSint *v = fromValues({-5, -2, 0, 3, 4, 9});
  std::vector<int> seen;
  const auto note = [&](int value) {
    seen.push_back(value);
    return true;
  };
  EXPECT_TRUE(forEachValue(v, -3, 4, note));
  EXPECT_EQ(seen, (std::vector<int>{-2, 0, 3, 4}));
  EXPECT_TRUE(forEachValue(v, 5, 8, note));
  EXPECT_TRUE(forEachValue(v, 10, 20, note));
  EXPECT_TRUE(forEachValue(v, 4, 3, note));
  EXPECT_EQ(seen.size(), 4U);
}

}  // namespace
