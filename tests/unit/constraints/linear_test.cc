// SPDX-License-Identifier: MIT
// cs_Linear, cs_ReifLinear, cs_LinearIff, cs_LinearIf: what is attached, what an event costs, numbers at the ends of
// their ranges, bad arguments, memory, and states that nobody restored.
#include <climits>

#include "koru_extras.h"
#include "support/kit/batch.h"
#include "support/kit/probe.h"

namespace {

using namespace koru;
using namespace koru::test;

class LinearTest : public SolverTest {
 protected:
  static constexpr int kSize = 6;
  std::vector<CSint *> v;
  CSint *b = nullptr;
  std::vector<long long> ones = std::vector<long long>(kSize, 1);

  void SetUp() override {
    SolverTest::SetUp();
    for (int i = 0; i < kSize; ++i) v.push_back(cs_createCSint(0, 9));
    b = cs_createCSint(0, 1);
  }
};

TEST_F(LinearTest, AnInequalityHearsOnlyTheEndThatCounts) {
  const long long coefficients[] = {2, -3};
  ASSERT_TRUE(cs_Linear(v.data(), coefficients, 2, CS_METHOD_LE, 50));
  EXPECT_EQ(attachments(v[0]), (std::vector<std::pair<std::string, int>>{{"cs_Linear", 0}}));
  EXPECT_EQ(v[0]->constraints->heard, events(kNewMin, kMinBound, kBound));
  EXPECT_EQ(v[1]->constraints->heard, events(kNewMax, kMaxBound, kBound));
}

TEST_F(LinearTest, TermsWithoutCoefficientAreNotAttached) {
  CSint *x[] = {v[0], v[1], v[0]};
  const long long coefficients[] = {2, 0, -2};
  EXPECT_TRUE(cs_Linear(x, coefficients, 3, CS_METHOD_EQ, 0));
  EXPECT_FALSE(cs_Linear(x, coefficients, 3, CS_METHOD_EQ, 1));
  EXPECT_EQ(cs_getNbConstraints(v[0]) + cs_getNbConstraints(v[1]), 0);
}

TEST_F(LinearTest, TheDivisorOfTheCoefficientsIsTakenOutFirst) {
  CSint *x[] = {cs_createCSint(0, INT_MAX), cs_createCSint(0, INT_MAX)};
  const long long coefficients[] = {2, -2};
  EXPECT_FALSE(cs_Linear(x, coefficients, 2, CS_METHOD_EQ, 1));
  EXPECT_TRUE(cs_Linear(x, coefficients, 2, CS_METHOD_NEQ, 1));
  EXPECT_TRUE(cs_Linear(x, coefficients, 2, CS_METHOD_LE, 1));
  EXPECT_TRUE(cs_LE(x[1], 4));
  EXPECT_EQ(cs_getMax(x[0]), 4);
}

TEST_F(LinearTest, SumsAreExactAtTheEndsOf64Bits) {
  CSint *x[] = {cs_createCSint(INT_MIN, INT_MAX), cs_createCSint(INT_MIN, INT_MAX), cs_createCSint(0, 1)};
  const long long coefficients[] = {LLONG_MAX, LLONG_MIN, 1};
  cs_saveContext();
  ASSERT_TRUE(cs_Linear(x, coefficients, 3, CS_METHOD_EQ, LLONG_MAX));
  EXPECT_TRUE(cs_EQ(x[0], 1));
  EXPECT_EQ(values(x[1]), range(0, 0));
  EXPECT_EQ(values(x[2]), range(0, 0));
  cs_restoreContext();
  ASSERT_TRUE(cs_Linear(x, coefficients, 3, CS_METHOD_GE, LLONG_MAX));
  EXPECT_TRUE(cs_EQ(x[0], 0));
  EXPECT_EQ(cs_getMax(x[1]), -1) << "LLONG_MIN * x + z >= LLONG_MAX";
  EXPECT_TRUE(cs_EQ(x[1], -1));
  EXPECT_TRUE(cs_EQ(x[2], 0));
}

// To the end it would take a thousand million rounds, and as many records on the trail.
TEST_F(LinearTest, BoundsThatCreepAreLeftAfterAWhile) {
  CSint *x[] = {cs_createCSint(0, INT_MAX), cs_createCSint(1, INT_MAX), cs_createCSint(0, 0)};
  const long long coefficients[] = {1LL << 40, -(1LL << 40) - 1, 1};
  ASSERT_TRUE(cs_Linear(x, coefficients, 3, CS_METHOD_EQ, 0));
  EXPECT_GT(cs_getMin(x[0]), 100);
  const int records = solver::trail.count();
  EXPECT_LT(records, 20);
  EXPECT_FALSE(cs_EQ(x[0], 2000000));
}

TEST_F(LinearTest, TheWholeIntRangeIsNarrowedExactly) {
  CSint *x[] = {cs_createCSint(INT_MIN, INT_MAX), cs_createCSint(INT_MIN, INT_MAX)};
  ASSERT_TRUE(cs_Linear(x, ones.data(), 2, CS_METHOD_EQ, 2LL * INT_MAX - 1));
  EXPECT_EQ(values(x[0]), (std::vector<int>{INT_MAX - 1, INT_MAX}));
  EXPECT_TRUE(cs_EQ(x[1], INT_MAX));
  EXPECT_EQ(values(x[0]), (std::vector<int>{INT_MAX - 1}));
  EXPECT_FALSE(cs_Linear(x, ones.data(), 2, CS_METHOD_GT, 2LL * INT_MAX));
}

TEST_F(LinearTest, BadArgumentsAreRefusedAndPostNothing) {
  CSint *hole[] = {v[0], nullptr};
  const auto refused = [&](CSint **vars, const long long *coefficients, int n, int method) {
    return !cs_Linear(vars, coefficients, n, method, 3) && cs_ReifLinear(vars, coefficients, n, method, 3) == nullptr &&
           !cs_LinearIff(b, vars, coefficients, n, method, 3) && !cs_LinearIf(b, vars, coefficients, n, method, 3);
  };
  EXPECT_TRUE(refused(nullptr, ones.data(), 2, CS_METHOD_EQ));
  EXPECT_TRUE(refused(v.data(), nullptr, 2, CS_METHOD_EQ));
  EXPECT_TRUE(refused(hole, ones.data(), 2, CS_METHOD_LE));
  for (const int n : {-1, INT_MIN}) EXPECT_TRUE(refused(v.data(), ones.data(), n, CS_METHOD_LE));
  for (const int method : {-1, 6, INT_MIN, INT_MAX}) EXPECT_TRUE(refused(v.data(), ones.data(), 2, method));
  EXPECT_FALSE(cs_LinearIff(nullptr, v.data(), ones.data(), 2, CS_METHOD_EQ, 3));
  EXPECT_FALSE(cs_LinearIf(nullptr, v.data(), ones.data(), 2, CS_METHOD_EQ, 3));
  EXPECT_EQ(cs_getNbConstraints(v[0]) + cs_getNbConstraints(b), 0);
  cs_end();
  EXPECT_TRUE(refused(v.data(), ones.data(), 2, CS_METHOD_EQ));
}

TEST_F(LinearTest, EachFailingAllocationIsReportedOnceAndIsFalse) {
  struct Operands {
    CSint *x[4];
  };
  const auto make = [] {
    return Operands{{cs_createCSint(0, 4), cs_createCSint(0, 4), cs_createCSint(0, 4), cs_createCSint(0, 1)}};
  };
  for (int method = CS_METHOD_EQ; method <= CS_METHOD_GT; ++method)
    for (const long long factor : {1LL, LLONG_MAX / 2}) {
      const long long coefficients[] = {factor, 2, -3};
      EXPECT_GT(failEachAllocation(make, [&](Operands &o) { return cs_Linear(o.x, coefficients, 3, method, 2); }), 5);
      EXPECT_GT(failEachAllocation(
                    make, [&](Operands &o) { return cs_ReifLinear(o.x, coefficients, 3, method, 2) != nullptr; }),
                8);
      EXPECT_GT(
          failEachAllocation(make, [&](Operands &o) { return cs_LinearIff(o.x[3], o.x, coefficients, 3, method, 2); }),
          8);
      EXPECT_GT(
          failEachAllocation(make, [&](Operands &o) { return cs_LinearIf(o.x[3], o.x, coefficients, 3, method, 2); }),
          5);
    }
}

TEST_F(LinearTest, ATruthValueIsDecidedWhenTheBoundsOfTheSumDecide) {
  struct Row {
    int method;
    int low, high;  // of the sum, out of 0..18
    int wanted;     // of b; -1: open
  };
  for (const Row &row : std::vector<Row>{{CS_METHOD_LE, 0, 9, 1},
                                         {CS_METHOD_LE, 10, 18, 0},
                                         {CS_METHOD_LE, 9, 10, -1},
                                         {CS_METHOD_GT, 10, 18, 1},
                                         {CS_METHOD_GT, 0, 9, 0},
                                         {CS_METHOD_EQ, 9, 9, 1},
                                         {CS_METHOD_EQ, 10, 18, 0},
                                         {CS_METHOD_EQ, 0, 8, 0},
                                         {CS_METHOD_EQ, 8, 10, -1},
                                         {CS_METHOD_NEQ, 9, 9, 0},
                                         {CS_METHOD_NEQ, 0, 8, 1},
                                         {CS_METHOD_NEQ, 8, 10, -1}}) {
    cs_saveContext();
    CSint *x[] = {cs_createCSint(0, 9), cs_createCSint(0, 9)};
    CSint *half = cs_createCSint(0, 1);
    CSint *full = cs_ReifLinear(x, ones.data(), 2, row.method, 9);
    ASSERT_TRUE(cs_LinearIf(half, x, ones.data(), 2, row.method, 9));
    const int high = row.high / 2;
    ASSERT_TRUE(cs_GE(x[0], row.low / 2) && cs_LE(x[0], high));
    ASSERT_TRUE(cs_GE(x[1], row.low - row.low / 2) && cs_LE(x[1], row.high - high));
    EXPECT_EQ(values(full), row.wanted < 0 ? range(0, 1) : range(row.wanted, row.wanted));
    // Half, a truth value is refuted, not proved; a difference is refuted when all is bound.
    EXPECT_EQ(values(half), row.wanted == 0 ? range(0, 0) : range(0, 1));
    cs_restoreContext();
  }
}

TEST_F(LinearTest, HoldsWhenItWasAcceptedAndWhatWasBeforeItRestored) {
  for (const int method : {CS_METHOD_EQ, CS_METHOD_LE, CS_METHOD_GE, CS_METHOD_NEQ}) {
    CSint *x[] = {cs_createCSint(0, 9), cs_createCSint(0, 9), cs_createCSint(0, 9)};
    cs_saveContext();
    EXPECT_TRUE(cs_EQ(x[0], 3) && cs_EQ(x[1], method == CS_METHOD_NEQ ? 4 : 3));
    cs_saveContext();
    EXPECT_TRUE(cs_EQ(x[2], 2));
    EXPECT_TRUE(cs_Linear(x, ones.data(), 3, method, 8));
    cs_acceptContext();
    cs_restoreContext();
    EXPECT_EQ(values(x[0]), range(0, 9));
    cs_saveContext();
    const int wrong = method == CS_METHOD_LE ? 9 : method == CS_METHOD_NEQ ? 3 : 1;
    EXPECT_FALSE(cs_EQ(x[0], wrong) && cs_EQ(x[1], wrong == 1 ? 1 : 3) && cs_EQ(x[2], 2)) << method;
    cs_restoreContext();
  }
}

// Totals are kept from event to event, but the events of a propagation that fails are lost.
TEST_F(LinearTest, HoldsInAStateThatFailedAndWasNotRestored) {
  for (const int method : {CS_METHOD_EQ, CS_METHOD_LE, CS_METHOD_NEQ}) {
    std::vector<CSint *> x;
    for (int i = 0; i < 6; ++i) x.push_back(cs_createCSint(0, 1));
    cs_saveContext();
    ASSERT_TRUE(cs_Linear(x.data(), ones.data(), 6, method, 3));
    EXPECT_TRUE(cs_EQ(x[5], 0));
    EXPECT_FALSE(together([&] {
      cs_EQ(x[0], 1);
      cs_EQ(x[1], 1);
      return false;
    }));
    EXPECT_TRUE(cs_EQ(x[2], 1));
    const int wrong = method == CS_METHOD_NEQ ? 0 : 1;
    EXPECT_FALSE(cs_EQ(x[3], wrong) && cs_EQ(x[4], wrong)) << method;
    cs_restoreContext();
  }
}

TEST_F(LinearTest, TotalsAreRightAfterEachOfManyRestores) {
  std::vector<CSint *> x;
  for (int i = 0; i < 6; ++i) x.push_back(cs_createCSint(0, 1));
  const long long coefficients[] = {1, 1, 1, 1, 1, 1};
  ASSERT_TRUE(cs_Linear(x.data(), coefficients, 6, CS_METHOD_LE, 3));
  for (int chosen = 0; chosen < 1 << 6; ++chosen) {
    cs_saveContext();
    bool consistent = true;
    for (int i = 0; i < 6; ++i) {
      if (i % 2 == 0) cs_saveContext();
      consistent = consistent && cs_EQ(x[static_cast<std::size_t>(i)], chosen >> i & 1);
    }
    EXPECT_EQ(consistent, std::popcount(static_cast<unsigned>(chosen)) <= 3) << chosen;
    cs_restoreAll();
  }
}

}  // namespace
