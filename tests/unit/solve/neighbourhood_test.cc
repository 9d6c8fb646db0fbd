// SPDX-License-Identifier: MIT
#include "solve/neighbourhood.h"

#include <algorithm>
#include <set>

#include "support/kit/failing_allocations.h"
#include "support/kit/solver_test.h"

namespace koru::test::solve {
namespace {

using koru::solve::Neighbourhood;
using koru::solve::Weights;

class NeighbourhoodTest : public SolverTest {
 protected:
  static std::set<int> relaxed(const Neighbourhood &n, int size) {
    std::set<int> result;
    for (int i = 0; i < size; ++i)
      if (n.isRelaxed(i)) result.insert(i);
    return result;
  }

  koru::solve::Random random{7};
};

TEST_F(NeighbourhoodTest, RandomOnesHaveTheSizeAskedFor) {
  Neighbourhood n;
  ASSERT_TRUE(n.create(50, 20, 0));
  std::set<std::set<int>> seen;
  for (int i = 0; i < 20; ++i) {
    n.clear();
    n.relaxRandom(random);
    EXPECT_EQ(relaxed(n, 50).size(), 10u);
    seen.insert(relaxed(n, 50));
  }
  EXPECT_EQ(seen.size(), 20u);
}

TEST_F(NeighbourhoodTest, TheSizeAdapts) {
  Neighbourhood n;
  ASSERT_TRUE(n.create(100, 20, 0));
  const auto size = [&] {
    n.clear();
    n.relaxRandom(random);
    return relaxed(n, 100).size();
  };
  for (int i = 0; i < 4; ++i) n.noteExhausted();
  EXPECT_GT(size(), 25u);
  for (int i = 0; i < 100; ++i) n.noteExhausted();
  EXPECT_EQ(size(), 90u);
  for (int i = 0; i < 1000; ++i) n.noteLeft();
  EXPECT_EQ(size(), 1u);
}

TEST_F(NeighbourhoodTest, LinkedOnesFollowConstraints) {
  CSint **x = cs_createCSintArray(30, 0, 9);
  for (int i = 0; i + 1 < 30; ++i) ASSERT_TRUE(cs_Neq(x[i], x[i + 1]));
  Weights weights;
  ASSERT_TRUE(weights.collect(x, 30));
  Neighbourhood n;
  ASSERT_TRUE(n.create(30, 20, weights.places()));
  for (int i = 0; i < 20; ++i) {
    n.clear();
    n.relaxLinked(random, weights);
    const std::set<int> positions = relaxed(n, 30);
    EXPECT_EQ(positions.size(), 6u);
    EXPECT_EQ(*positions.rbegin() - *positions.begin(), 5) << "a stretch of the chain";
  }
}

// The objective is labelled after the host's variables, and no neighbourhood lets it go.
TEST_F(NeighbourhoodTest, LinkedOnesLeaveTheObjectiveOut) {
  CSint **x = cs_createCSintArray(11, 0, 9);
  for (int i = 0; i < 10; ++i) ASSERT_TRUE(cs_Neq(x[i], x[10]));
  Weights weights;
  ASSERT_TRUE(weights.collect(x, 11));
  for (int i = 0; i < 20; ++i) {
    Neighbourhood n;
    ASSERT_TRUE(n.create(10, 50, weights.places()));
    n.clear();
    n.relaxLinked(random, weights);
    EXPECT_EQ(relaxed(n, 10).size(), 5u);
  }
}

TEST_F(NeighbourhoodTest, WhereNothingIsLinkedItBeginsAgain) {
  CSint **x = cs_createCSintArray(10, 0, 9);
  Weights weights;
  ASSERT_TRUE(weights.collect(x, 10));
  Neighbourhood n;
  ASSERT_TRUE(n.create(10, 90, weights.places()));
  n.clear();
  n.relaxLinked(random, weights);
  EXPECT_EQ(relaxed(n, 10).size(), 9u);
}

// Six tasks in a row on each of two machines, ten units of time from one to the next; the starts are labelled as well.
class OrdersLetGoTest : public NeighbourhoodTest {
 protected:
  using Pair = std::pair<int, int>;

  void SetUp() override {
    NeighbourhoodTest::SetUp();
    std::vector<CSint *> starts;
    for (int i = 0; i < kTasks; ++i) starts.push_back(CSINT(10 * (i % kOnMachine)));
    const auto start = [&](int i) { return starts[static_cast<std::size_t>(i)]; };
    std::vector<CSorder> orders;
    for (int i = 0; i < kTasks; ++i)
      for (int j = i + 1; j < kTasks; ++j) {
        if (machineOf(i) != machineOf(j)) continue;
        orders.push_back({CSINT(1), {start(i), start(j)}, {CSINT(1), CSINT(1)}, machineOf(i)});
        pairs.emplace_back(i, j);
      }
    ASSERT_TRUE(labelled.addOrders(orders.data(), static_cast<int>(orders.size()), CS_ORDER_SLACK, CS_VALUE_SLACK));
    ASSERT_TRUE(labelled.add(starts.data(), kTasks, CS_ORDER_INPUT, CS_VALUE_MIN));
    labelled.keepSolution();
  }
  static int machineOf(int task) { return task / kOnMachine; }

  // Those of the 30 pairs that are let go; the starts must all be.
  std::vector<Pair> letGo(int which, int share) {
    Neighbourhood n;
    EXPECT_TRUE(n.create(labelled.size(), share, 0));
    n.clear();
    n.relaxOrders(random, labelled, which);
    std::vector<Pair> result;
    for (std::size_t k = 0; k < pairs.size(); ++k)
      if (n.isRelaxed(static_cast<int>(k))) result.push_back(pairs[k]);
    for (int i = static_cast<int>(pairs.size()); i < labelled.size(); ++i) EXPECT_TRUE(n.isRelaxed(i));
    return result;
  }

  static constexpr int kOnMachine = 6;
  static constexpr int kTasks = 2 * kOnMachine;
  koru::solve::Labelled labelled;
  std::vector<Pair> pairs;
};

TEST_F(OrdersLetGoTest, AWindowHoldsThoseThatStartAroundAMoment) {
  std::set<std::vector<Pair>> seen;
  for (int i = 0; i < 30; ++i) {
    const std::vector<Pair> released = letGo(CS_NEIGHBOURS_WINDOW, 20);
    ASSERT_EQ(released.size(), 6u);
    for (const auto &[a, b] : released) EXPECT_LE(b - a, 3) << "at most half of the time that six pairs take";
    seen.insert(released);
  }
  EXPECT_GE(seen.size(), 4u);
}

TEST_F(OrdersLetGoTest, MachinesAreLetGoWhole) {
  for (int i = 0; i < 10; ++i) {
    const std::vector<Pair> released = letGo(CS_NEIGHBOURS_MACHINES, 20);
    ASSERT_EQ(released.size(), 15u);
    for (const auto &[a, b] : released) EXPECT_EQ(machineOf(a), machineOf(released[0].first));
  }
  EXPECT_EQ(letGo(CS_NEIGHBOURS_MACHINES, 60).size(), 30u);
}

TEST_F(OrdersLetGoTest, TasksAreLetGoWithAllOthersOfTheirMachines) {
  std::set<std::vector<Pair>> seen;
  for (int i = 0; i < 30; ++i) {
    const std::vector<Pair> released = letGo(CS_NEIGHBOURS_TASKS, 5);
    ASSERT_EQ(released.size(), 5u) << "one task";
    std::set<int> tasks{released[0].first, released[0].second};
    for (const auto &[a, b] : released) std::erase_if(tasks, [a = a, b = b](int t) { return t != a && t != b; });
    EXPECT_EQ(tasks.size(), 1u);
    seen.insert(released);
  }
  EXPECT_GE(seen.size(), 8u);
}

TEST_F(NeighbourhoodTest, WithoutOrdersAllIsLetGo) {
  CSint **x = cs_createCSintArray(4, 0, 9);
  koru::solve::Labelled labelled;
  ASSERT_TRUE(labelled.add(x, 4, CS_ORDER_INPUT, CS_VALUE_MIN));
  Neighbourhood n;
  ASSERT_TRUE(n.create(4, 20, 0));
  n.relaxOrders(random, labelled, CS_NEIGHBOURS_WINDOW);
  EXPECT_EQ(relaxed(n, 4).size(), 4u);
}

TEST_F(NeighbourhoodTest, OfNothingThereIsNothing) {
  Neighbourhood n;
  ASSERT_TRUE(n.create(0, 20, 0));
  n.clear();
  n.relaxRandom(random);
}

TEST_F(NeighbourhoodTest, EveryAllocationCanFail) {
  for (int k = 0; k < 3; ++k) {
    const FailingAllocator failing(k, Failing::kOnce);
    Neighbourhood n;
    EXPECT_FALSE(n.create(5, 20, 1));
  }
}

}  // namespace
}  // namespace koru::test::solve
