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
