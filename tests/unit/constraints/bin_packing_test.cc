// SPDX-License-Identifier: MIT
#include <climits>
#include <memory>
#include <numeric>
#include <vector>

#include "koru_extras.h"
#include "support/kit/solver_test.h"

namespace koru::test {
namespace {

using Values = std::vector<int>;
using Vars = std::vector<CSint *>;

class BinPackingTest : public SolverTest {
 protected:
  static Vars create(std::size_t count, int min, int max) {
    Vars vars;
    for (std::size_t i = 0; i < count; ++i) vars.push_back(cs_createCSint(min, max));
    return vars;
  }
  static bool post(Vars bins, const Values &sizes, Vars loads) {
    return cs_BinPacking(bins.data(), sizes.data(), static_cast<int>(bins.size()), loads.data(),
                         static_cast<int>(loads.size()));
  }
};

TEST_F(BinPackingTest, LoadsFollowItemsAndItemsFollowLoads) {
  const Vars bins = create(3, -4, 9);
  const Vars loads = create(2, -100, 100);
  ASSERT_TRUE(post(bins, {5, 3, 4}, loads));
  EXPECT_EQ(values(bins[0]), (Values{0, 1}));
  EXPECT_EQ(cs_getMin(loads[0]), 0);
  EXPECT_EQ(cs_getMax(loads[0]), 12);
  ASSERT_TRUE(cs_EQ(bins[0], 1));
  EXPECT_EQ(cs_getMin(loads[1]), 5);
  EXPECT_EQ(cs_getMax(loads[0]), 7);
  ASSERT_TRUE(cs_LE(loads[1], 8));
  EXPECT_EQ(cs_getValue(bins[2]), 0);
  ASSERT_TRUE(cs_GE(loads[1], 8));
  EXPECT_EQ(cs_getValue(bins[1]), 1);
  EXPECT_EQ(cs_getValue(loads[0]), 4);
}

TEST_F(BinPackingTest, LoadsThatNoSetMakesAreSeen) {
  const Vars bins = create(4, 0, 1);
  const Vars loads{cs_createCSint(8, 11), cs_createCSint(0, 99)};
  EXPECT_FALSE(post(bins, {6, 6, 6, 1}, loads));
}

TEST_F(BinPackingTest, BoundsOfTheLoadAreSums) {
  const Vars bins = create(3, 0, 1);
  const Vars loads{cs_createCSint(1, 16), cs_createCSint(0, 99)};
  ASSERT_TRUE(post(bins, {10, 10, 7}, loads));
  EXPECT_EQ(cs_getMin(loads[0]), 7);
  EXPECT_EQ(cs_getMax(loads[0]), 10);
  EXPECT_EQ(cs_getMin(loads[1]), 17);
  ASSERT_TRUE(cs_NEQ(loads[0], 7));
  EXPECT_EQ(cs_getValue(bins[2]), 1) << "the others weigh 10 and 20";
}

TEST_F(BinPackingTest, SumsTakeSeveralWords) {
  Values sizes;
  for (int i = 0; i < 12; ++i) sizes.push_back(100 + 64 * i);
  const Vars bins = create(12, 0, 1);
  const Vars loads{cs_createCSint(965, 969), cs_createCSint(0, 99999)};
  ASSERT_TRUE(post(bins, sizes, loads)) << "100 + 868, for example";
  EXPECT_EQ(cs_getValue(loads[0]), 968);
  EXPECT_FALSE(post(create(12, 0, 1), sizes, {cs_createCSint(965, 967), cs_createCSint(0, 99999)}));
}

TEST_F(BinPackingTest, SpaceBeyondAllSumsLeavesBounds) {
  const Vars bins = create(3, 0, 1);
  const Vars loads{cs_createCSint(12000, 24000), cs_createCSint(0, INT_MAX)};
  ASSERT_TRUE(post(bins, {INT_MAX - 10000, 20000, 10000}, loads));
  EXPECT_EQ(cs_getValue(bins[0]), 1);
  EXPECT_EQ(cs_getValue(bins[1]), 0);
  EXPECT_EQ(cs_getValue(bins[2]), 1);
  EXPECT_EQ(cs_getValue(loads[1]), INT_MAX);
}

TEST_F(BinPackingTest, AnItemThatIsMissedWithoutIsPut) {
  const Vars bins = create(3, 0, 2);
  const Vars loads{cs_createCSint(30000, 60000), cs_createCSint(0, 60000), cs_createCSint(0, 60000)};
  ASSERT_TRUE(post(bins, {20000, 20000, 1}, loads));
  EXPECT_EQ(cs_getValue(bins[0]), 0);
  EXPECT_EQ(cs_getValue(bins[1]), 0);
  EXPECT_EQ(values(bins[2]), (Values{0, 1, 2}));
}

// What an accepted context had taken from the load is back behind it: more than there is room for.
// What accepted contexts had taken from the loads is back behind them: more than there are sums for.
TEST_F(BinPackingTest, LoadsThatComeBackBehindAnAccept) {
  const Vars bins = create(4, 0, 3);
  const Vars loads = create(4, 0, 500);
  cs_saveContext();
  for (CSint *load : loads) ASSERT_TRUE(cs_LE(load, 490));
  cs_saveContext();
  for (CSint *load : loads) ASSERT_TRUE(cs_LE(load, 60));
  ASSERT_TRUE(post(bins, {20, 30, 50, 60}, loads));
  cs_acceptContext();
  cs_restoreContext();
  ASSERT_EQ(cs_getMax(loads[0]), 500);
  for (CSint *bin : bins) EXPECT_TRUE(cs_EQ(bin, 0));
  EXPECT_EQ(cs_getMin(loads[0]), 160);
  EXPECT_EQ(cs_getMax(loads[0]), 160);
}

TEST_F(BinPackingTest, OneVariableInSeveralPlaces) {
  CSint *const bin = cs_createCSint(0, 3);
  CSint *const load = cs_createCSint(0, 20);
  ASSERT_TRUE(post({bin, bin}, {3, 4}, {load, CSINT(7), CSINT(0)}));
  EXPECT_EQ(cs_getValue(bin), 1);
  CSint *const both = cs_createCSint(0, 9);
  EXPECT_TRUE(post({both, CSINT(0)}, {1, 1}, {both, cs_createCSint(0, 9)}));
  EXPECT_EQ(cs_getValue(both), 1);
}

TEST_F(BinPackingTest, TooFewBinsAreSeen) {
  EXPECT_FALSE(post(create(3, 0, 1), {6, 6, 6}, create(2, 0, 11))) << "each needs a bin of its own";
  EXPECT_TRUE(post(create(3, 0, 1), {6, 6, 5}, create(2, 0, 11)));
  EXPECT_FALSE(post(create(5, 0, 2), {7, 7, 4, 4, 4}, create(3, 0, 10))) << "there is no space beside the large ones";
  EXPECT_TRUE(post(create(5, 0, 2), {7, 7, 4, 4, 3}, create(3, 0, 10)));
  EXPECT_FALSE(
      post(create(4, 0, 2), {5, 5, 5, 5}, {cs_createCSint(0, 9), cs_createCSint(0, 10), cs_createCSint(0, 4)}));
}

TEST_F(BinPackingTest, AllPackingsAreFound) {
  Vars bins = create(6, 0, 2);
  ASSERT_TRUE(post(bins, {1, 2, 3, 4, 5, 6}, create(3, 7, 7)));
  static int found;
  found = 0;
  cs_findAll(bins.data(), 6, cs_findFreeVar, [](CSint **, int) { ++found; });
  EXPECT_EQ(found, 6) << "the orders of 1 6, 2 5, 3 4";
}

TEST_F(BinPackingTest, RefusesWhatMakesNoSense) {
  CSint *const v = cs_createCSint(0, 3);
  CSint *vars[] = {v, nullptr};
  const int sizes[] = {1, -1};
  EXPECT_FALSE(cs_BinPacking(vars, sizes, 2, vars, 1));
  EXPECT_FALSE(cs_BinPacking(vars, sizes, 1, vars, 2));
  EXPECT_FALSE(cs_BinPacking(vars, sizes, -1, vars, 1));
  EXPECT_FALSE(cs_BinPacking(vars, sizes, 1, vars, -1));
  EXPECT_FALSE(cs_BinPacking(nullptr, sizes, 1, vars, 1));
  EXPECT_FALSE(cs_BinPacking(vars, nullptr, 1, vars, 1));
  EXPECT_FALSE(cs_BinPacking(vars, sizes, 1, nullptr, 1));
  EXPECT_FALSE(cs_BinPacking(vars, sizes, 1, nullptr, 0)) << "no bin for the item";
  EXPECT_FALSE(cs_BinPacking(vars, sizes + 1, 1, vars, 1));
  EXPECT_TRUE(cs_BinPacking(nullptr, nullptr, 0, nullptr, 0));
  CSint *load = cs_createCSint(0, 3);
  EXPECT_TRUE(cs_BinPacking(nullptr, nullptr, 0, &load, 1));
  EXPECT_EQ(cs_getMax(load), 0);
  cs_end();
  EXPECT_FALSE(cs_BinPacking(nullptr, nullptr, 0, nullptr, 0));
  cs_init();
}

}  // namespace
}  // namespace koru::test
