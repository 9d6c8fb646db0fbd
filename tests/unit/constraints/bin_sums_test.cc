// SPDX-License-Identifier: MIT
#include "constraints/counting/bin_sums.h"

#include <algorithm>
#include <random>
#include <set>
#include <vector>

#include "koru_extras.h"
#include "support/kit/solver_test.h"

namespace koru::test {
namespace {

using Values = std::vector<int>;
using counting::BinSums;

class BinSumsTest : public SolverTest {};

// Sizes 3, 5 and 6 make 0, 3, 5, 6, 8, 9, 11 and 14.
TEST_F(BinSumsTest, ThreeItemsMakeEightSums) {
  BinSums sums(3, 20);
  ASSERT_TRUE(static_cast<bool>(sums));
  sums.start(20);
  for (const int size : {3, 5, 6}) sums.add(size);
  CSint *const load = cs_createCSint(7, 10);
  ASSERT_TRUE(sums.meet(load, 0));
  EXPECT_EQ(sums.least(), 8);
  EXPECT_EQ(sums.greatest(), 9);
  // 9 is 3 + 6, 8 is 3 + 5.
  const BinSums::Use six = sums.takeBack(6);
  EXPECT_TRUE(six.with && six.without);
  const BinSums::Use five = sums.takeBack(5);
  EXPECT_TRUE(five.with && five.without);
  const BinSums::Use three = sums.takeBack(3);
  EXPECT_TRUE(three.with);
  EXPECT_FALSE(three.without) << "both sums have it";
}

TEST_F(BinSumsTest, WhatIsThereAlreadyRaisesTheSums) {
  BinSums sums(2, 20);
  sums.start(10);
  sums.add(2);
  sums.add(4);
  EXPECT_TRUE(sums.meet(cs_createCSint(106, 106), 100));
  EXPECT_EQ(sums.least(), 6);
  EXPECT_FALSE(sums.meet(cs_createCSint(107, 110), 100));
  EXPECT_FALSE(sums.meet(cs_createCSint(0, 99), 100));
}

TEST_F(BinSumsTest, ReachesAsFarAsThereIsRoom) {
  EXPECT_TRUE(BinSums(1, 64).reaches(63));
  EXPECT_FALSE(BinSums(1, 64).reaches(64));
  const BinSums most(1, std::int64_t{1} << 40);
  EXPECT_TRUE(most.reaches(8191));
  EXPECT_FALSE(most.reaches(8192));
}

// An item that is larger than all sums that count is in none of them.
TEST_F(BinSumsTest, ALargeItemFallsOutOfTheSums) {
  BinSums sums(2, 64);
  sums.start(63);
  sums.add(1000);
  sums.add(7);
  ASSERT_TRUE(sums.meet(cs_createCSint(0, 63), 0));
  EXPECT_EQ(sums.greatest(), 7);
  EXPECT_TRUE(sums.takeBack(7).with);
  EXPECT_FALSE(sums.takeBack(1000).with);
}

// All subsets, by enumeration.
struct Subsets {
  const Values &sizes;
  const CSint *load;

  std::set<int> sums{};
  std::vector<BinSums::Use> uses{sizes.size(), {false, false}};

  void enumerate(int base) {
    for (unsigned subset = 0; subset < 1U << sizes.size(); ++subset) {
      int sum = 0;
      for (std::size_t i = 0; i < sizes.size(); ++i)
        if ((subset >> i & 1) != 0) sum += sizes[i];
      if (!cs_isIn(const_cast<CSint *>(load), base + sum)) continue;
      sums.insert(sum);
      for (std::size_t i = 0; i < sizes.size(); ++i) ((subset >> i & 1) != 0 ? uses[i].with : uses[i].without) = true;
    }
  }
};

TEST_F(BinSumsTest, AgreeWithEnumeration) {
  std::mt19937 random(31);
  for (int round = 0; round < 2000; ++round) {
    Values sizes;
    for (unsigned i = 0; i < random() % 7; ++i) sizes.push_back(static_cast<int>(random() % 60));
    const int base = static_cast<int>(random() % 50);
    const int low = base + static_cast<int>(random() % 150);
    CSint *const load = cs_createCSint(low, low + static_cast<int>(random() % 80));
    for (int k = 0; k < 20 && cs_getNbElements(load) > 1; ++k) cs_NEQ(load, low + static_cast<int>(random() % 80));
    Subsets subsets{sizes, load};
    subsets.enumerate(base);
    BinSums sums(static_cast<int>(sizes.size()), 512);
    sums.start(std::max(0, cs_getMax(load) - base));
    for (const int size : sizes) sums.add(size);
    ASSERT_EQ(sums.meet(load, base), !subsets.sums.empty());
    if (subsets.sums.empty()) continue;
    EXPECT_EQ(sums.least(), *subsets.sums.begin());
    EXPECT_EQ(sums.greatest(), *subsets.sums.rbegin());
    for (std::size_t i = sizes.size(); i-- > 0;) {
      const BinSums::Use use = sums.takeBack(sizes[i]);
      ASSERT_EQ(use.with, subsets.uses[i].with) << "round " << round << " item " << i;
      ASSERT_EQ(use.without, subsets.uses[i].without) << "round " << round << " item " << i;
    }
  }
}

}  // namespace
}  // namespace koru::test
