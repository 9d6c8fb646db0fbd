// SPDX-License-Identifier: MIT
#include "solve/weights.h"

#include <memory>
#include <set>
#include <vector>

#include "core/solver.h"
#include "support/kit/failing_allocations.h"
#include "support/kit/solver_test.h"

namespace koru::test::solve {
namespace {

class WeightsTest : public SolverTest {
 protected:
  static const Constraint *newestOn(const CSint *v) { return v->constraints->constraint; }
  std::set<int> neighboursOf(int position) const {
    std::set<int> result;
    const auto visited = std::make_unique<bool[]>(static_cast<std::size_t>(weights.places()));
    weights.forEachNeighbour(position, visited.get(), [&](int other) { result.insert(other); });
    weights.forEachNeighbour(position, visited.get(), [](int) { ADD_FAILURE() << "its constraints are visited"; });
    return result;
  }

  std::vector<int> visitedFrom(int position) const {
    std::vector<int> result;
    const auto visited = std::make_unique<bool[]>(static_cast<std::size_t>(weights.places()));
    weights.forEachNeighbour(position, visited.get(), [&](int other) { result.push_back(other); });
    return result;
  }

  koru::solve::Weights weights;
};

// Records that a restore has given back are taken again in another order.
TEST_F(WeightsTest, NeighboursComeInAnOrderThatAddressesDoNotMatterFor) {
  constexpr int n = 40;
  CSint **x = cs_createCSintArray(n, 0, 99);
  std::vector<int> first;
  for (int round = 0; round < 3; ++round) {
    cs_saveContext();
    for (int i = 1; i < n; ++i) ASSERT_TRUE(cs_Neq(x[0], x[i * 7 % n]));
    ASSERT_TRUE(weights.collect(x, n));
    const std::vector<int> visited = visitedFrom(0);
    if (round == 0) first = visited;
    EXPECT_EQ(visited, first);
    cs_restoreContext();
  }
}

TEST_F(WeightsTest, AFailureAddsToTheVariablesOfItsConstraint) {
  CSint **x = cs_createCSintArray(4, 0, 9);
  ASSERT_TRUE(cs_Neq(x[0], x[2]));
  const Constraint *failed = newestOn(x[0]);
  ASSERT_TRUE(cs_Neq(x[1], x[2]));
  ASSERT_TRUE(weights.collect(x, 4));
  const std::uint64_t before = weights.of(0);
  weights.noteFailure(failed);
  EXPECT_GT(weights.of(0), before);
  EXPECT_EQ(weights.of(1), before);
  EXPECT_EQ(weights.of(2), weights.of(0));
  EXPECT_EQ(weights.of(3), before);
}

TEST_F(WeightsTest, LaterFailuresCountForMore) {
  CSint **x = cs_createCSintArray(4, 0, 9);
  ASSERT_TRUE(cs_Neq(x[0], x[1]));
  ASSERT_TRUE(cs_Neq(x[2], x[3]));
  ASSERT_TRUE(weights.collect(x, 4));
  weights.noteFailure(newestOn(x[0]));
  weights.noteFailure(newestOn(x[2]));
  EXPECT_GT(weights.of(2), weights.of(0));
}

TEST_F(WeightsTest, ResultsStandForWhatTheyAreMadeOf) {
  CSint **x = cs_createCSintArray(4, 0, 9);
  CSint *sum = cs_Add(x[0], x[1]);
  ASSERT_TRUE(cs_Neq(sum, x[2]));
  const Constraint *failed = newestOn(sum);
  ASSERT_TRUE(weights.collect(x, 4));
  const std::uint64_t before = weights.of(3);
  weights.noteFailure(failed);
  EXPECT_GT(weights.of(0), before);
  EXPECT_GT(weights.of(1), before);
  EXPECT_GT(weights.of(2), before);
  EXPECT_EQ(weights.of(3), before);
}

TEST_F(WeightsTest, ALargeConstraintDoesNotExplainAResult) {
  CSint **x = cs_createCSintArray(8, 0, 9);
  CSint *sum = cs_Sigma(x, 6);
  ASSERT_TRUE(cs_Neq(sum, x[7]));
  const Constraint *failed = newestOn(sum);
  ASSERT_TRUE(weights.collect(x, 8));
  const std::uint64_t before = weights.of(0);
  weights.noteFailure(failed);
  EXPECT_EQ(weights.of(0), before);
  EXPECT_GT(weights.of(7), before);
}

TEST_F(WeightsTest, AConstraintThatIsNotKnownConcernsNobody) {
  CSint **x = cs_createCSintArray(2, 0, 9);
  ASSERT_TRUE(weights.collect(x, 2));
  ASSERT_TRUE(cs_Neq(x[0], x[1]));
  const std::uint64_t before = weights.of(0);
  weights.noteFailure(newestOn(x[0]));
  EXPECT_EQ(weights.of(0), before);
}

TEST_F(WeightsTest, AVariableMayStandTwice) {
  CSint *x = cs_createCSint(0, 9);
  CSint *y = cs_createCSint(0, 9);
  ASSERT_TRUE(cs_Neq(x, y));
  CSint *array[] = {x, y, x};
  ASSERT_TRUE(weights.collect(array, 3));
  weights.noteFailure(newestOn(x));
  EXPECT_EQ(weights.of(0), weights.of(1));
  EXPECT_EQ(weights.of(2), weights.of(1));
}

// The order of weights outlives the scaling down, and none of them overflows.
TEST_F(WeightsTest, ScalesDownInTime) {
  CSint **x = cs_createCSintArray(4, 0, 9);
  ASSERT_TRUE(cs_Neq(x[0], x[1]));
  ASSERT_TRUE(cs_Neq(x[2], x[3]));
  ASSERT_TRUE(weights.collect(x, 4));
  for (int i = 0; i < 5000; ++i) {
    weights.noteFailure(newestOn(x[i % 3 == 0 ? 2 : 0]));
    ASSERT_LT(weights.of(0), std::uint64_t{1} << 32);
    ASSERT_GT(weights.of(2), 0u);
  }
  EXPECT_GT(weights.of(0), weights.of(2));
}

TEST_F(WeightsTest, NeighboursShareAConstraint) {
  CSint **x = cs_createCSintArray(5, 0, 9);
  ASSERT_TRUE(cs_Neq(x[0], x[1]));
  ASSERT_TRUE(cs_AllNeq(x + 1, 3));
  ASSERT_TRUE(weights.collect(x, 5));
  EXPECT_EQ(neighboursOf(0), (std::set<int>{0, 1}));
  EXPECT_EQ(neighboursOf(1), (std::set<int>{0, 1, 2, 3}));
  EXPECT_EQ(neighboursOf(4), std::set<int>{});
}

TEST_F(WeightsTest, EveryAllocationCanFail) {
  CSint **x = cs_createCSintArray(3, 0, 9);
  ASSERT_TRUE(cs_AllNeq(x, 3));
  int k = 0;
  for (;; ++k) {
    const FailingAllocator failing(k, Failing::kOnce);
    koru::solve::Weights fresh;
    if (fresh.collect(x, 3)) break;
  }
  EXPECT_EQ(k, 7);
}

}  // namespace
}  // namespace koru::test::solve
