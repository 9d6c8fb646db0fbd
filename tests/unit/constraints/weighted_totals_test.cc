// SPDX-License-Identifier: MIT
#include "constraints/arith/weighted_totals.h"

#include <algorithm>
#include <climits>

#include "support/kit/random.h"
#include "support/kit/solver_test.h"

namespace {

using namespace koru;
using namespace koru::scal_prod;
using koru::test::Random;

class WeightedTotalsTest : public koru::test::SolverTest {
 protected:
  void addTerm(int coefficient, int min, int max) {
    coefficients.push_back(coefficient);
    vars.push_back(cs_createCSint(min, max));
  }
  Totals totals() const {
    Totals result{1, 2, 3};
    computeTotals({coefficients.data(), vars.data(), static_cast<int>(vars.size())}, result);
    return result;
  }

  // What the definition says.
  Totals expected() const {
    Totals result;
    for (std::size_t i = 0; i < vars.size(); ++i) {
      const long long atMin = static_cast<long long>(coefficients[i]) * cs_getMin(vars[i]);
      const long long atMax = static_cast<long long>(coefficients[i]) * cs_getMax(vars[i]);
      result.low += std::min(atMin, atMax);
      result.high += std::max(atMin, atMax);
      result.widest = std::max<std::int64_t>(result.widest, atMin < atMax ? atMax - atMin : atMin - atMax);
    }
    return result;
  }
  void expectRight() const {
    const Totals now = totals();
    const Totals wanted = expected();
    EXPECT_EQ(now.low, wanted.low);
    EXPECT_EQ(now.high, wanted.high);
    EXPECT_EQ(now.widest, wanted.widest);
  }

  std::vector<int> coefficients;
  std::vector<CSint *> vars;
};

TEST_F(WeightedTotalsTest, AreThoseOfEachTermForAnyNumberOfTerms) {
  Random random(1);
  for (int n = 0; n <= 40; ++n) {
    for (int round = 0; round < 20; ++round) {
      coefficients.clear();
      vars.clear();
      for (int i = 0; i < n; ++i) {
        const int min = random.between(-1000, 1000);
        addTerm(random.between(-9, 9), min, random.chance(30) ? min : min + random.below(1000));
      }
      expectRight();
    }
  }
}

// Each position, for a term is one of four, or one of the rest.
TEST_F(WeightedTotalsTest, HoldTheLargestTerms) {
  const int extremes[] = {INT_MIN, INT_MIN + 1, -1, 0, 1, INT_MAX - 1, INT_MAX};
  for (std::size_t place = 0; place < 11; ++place) {
    for (const int coefficient : extremes) {
      for (const int bound : extremes) {
        coefficients.assign(11, 1);
        vars.clear();
        for (int i = 0; i < 11; ++i) vars.push_back(cs_createCSint(-i, i));
        coefficients[place] = coefficient;
        vars[place] = bound < 0 ? cs_createCSint(bound, INT_MAX) : cs_createCSint(-5, bound);
        expectRight();
      }
    }
  }
}

// A fourth of the terms may add up to more than 64 bits hold when all together do not.
TEST_F(WeightedTotalsTest, MayLeave64BitsInBetween) {
  for (int i = 0; i < 12; ++i) addTerm(INT_MIN, i % 2 == 0 ? INT_MIN : INT_MAX, i % 2 == 0 ? INT_MIN : INT_MAX);
  expectRight();
}

}  // namespace
