// SPDX-License-Identifier: MIT
#include "constraints/counting/bin_bound.h"

#include <algorithm>
#include <random>
#include <vector>

#include "koru_extras.h"
#include "support/kit/solver_test.h"

namespace koru::test {
namespace {

using Values = std::vector<int>;

constexpr int kFree = -1;

class BinBoundTest : public SolverTest {
 protected:
  // Items of these sizes, in these bins or free; how much each bin may hold.
  static bool allows(const Values &sizes, const Values &placed, const Values &most) {
    const auto n = static_cast<int>(sizes.size());
    const auto m = static_cast<int>(most.size());
    std::vector<CSint *> bins;
    for (const int j : placed) bins.push_back(j == kFree ? cs_createCSint(0, m) : CSINT(j));
    std::vector<CSint *> loads;
    for (const int load : most) loads.push_back(cs_createCSint(0, load));
    counting::BinBound bound(sizes.data(), n, m);
    EXPECT_TRUE(static_cast<bool>(bound));
    return bound.allows(bins.data(), sizes.data(), loads.data());
  }
  static Values free(std::size_t count) { return Values(count, kFree); }
};

TEST_F(BinBoundTest, NothingIsAllowedNothing) {
  EXPECT_TRUE(allows({}, {}, {}));
  EXPECT_TRUE(allows({}, {}, {5}));
  EXPECT_TRUE(allows({0, 0}, free(2), {0}));
}

TEST_F(BinBoundTest, AllSizesTogetherNeedRoom) {
  EXPECT_TRUE(allows({3, 3, 2, 2}, free(4), {5, 5}));
  EXPECT_FALSE(allows({3, 3, 3, 2}, free(4), {5, 5}));
}

TEST_F(BinBoundTest, NoTwoLargeItemsAreTogether) {
  EXPECT_TRUE(allows({6, 6, 5, 5}, free(4), {10, 10, 10}));
  EXPECT_FALSE(allows({6, 6, 6, 6}, free(4), {10, 10, 10}));
}

TEST_F(BinBoundTest, SmallItemsMustFitBesideLargeOnes) {
  EXPECT_TRUE(allows({7, 7, 3, 3, 4, 4}, free(6), {10, 10, 10}));
  EXPECT_FALSE(allows({7, 7, 4, 4, 4}, free(5), {10, 10, 10})) << "29 of 30, but no 4 fits beside a 7";
}

TEST_F(BinBoundTest, ASmallerBinIsALargeOneWithSomethingInIt) {
  EXPECT_TRUE(allows({6, 6}, free(2), {10, 6}));
  EXPECT_FALSE(allows({6, 6}, free(2), {10, 5}));
}

// In bins of 100, 30 is a small item. In what is left of them it is a large one.
TEST_F(BinBoundTest, WhatIsLeftOfBinsCounts) {
  EXPECT_TRUE(allows({42, 42, 30, 30}, {0, 1, kFree, kFree}, {100, 100}));
  EXPECT_FALSE(allows({42, 42, 30, 30, 30}, {0, 1, kFree, kFree, kFree}, {100, 100})) << "58 are left of each";
}

TEST_F(BinBoundTest, SizesBeyondIntsAddUp) {
  constexpr int kMost = 2147483647;
  EXPECT_TRUE(allows({kMost, kMost, kMost}, free(3), {kMost, kMost, kMost}));
  EXPECT_FALSE(allows({kMost, kMost, 1}, free(3), {kMost, kMost}));
}

bool canBePacked(const Values &sizes, std::size_t i, const Values &placed, Values &space) {
  if (i == sizes.size()) return std::all_of(space.begin(), space.end(), [](int left) { return left >= 0; });
  for (std::size_t j = 0; j < space.size(); ++j) {
    if (placed[i] != kFree && placed[i] != static_cast<int>(j)) continue;
    space[j] -= sizes[i];
    const bool packed = canBePacked(sizes, i + 1, placed, space);
    space[j] += sizes[i];
    if (packed) return true;
  }
  return false;
}

TEST_F(BinBoundTest, WhatCanBePackedIsAllowed) {
  std::mt19937 random(23);
  int refused = 0;
  for (int round = 0; round < 3000; ++round) {
    Values sizes;
    Values placed;
    Values most;
    for (unsigned j = 0; j < 1 + random() % 4; ++j) most.push_back(static_cast<int>(random() % 12) + 4);
    for (unsigned i = 0; i < 1 + random() % 7; ++i) {
      sizes.push_back(static_cast<int>(random() % 9));
      placed.push_back(random() % 4 == 0 ? static_cast<int>(random() % most.size()) : kFree);
    }
    const bool packed = canBePacked(sizes, 0, placed, most);
    const bool allowed = allows(sizes, placed, most);
    ASSERT_TRUE(allowed || !packed) << "round " << round;
    refused += !allowed;
  }
  EXPECT_GT(refused, 500);
}

}  // namespace
}  // namespace koru::test
