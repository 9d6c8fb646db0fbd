// SPDX-License-Identifier: MIT
// Linear sums and products beside the twin engine, which makes every total and every division: same domains, same
// handler calls, same failures after each of many random narrowings.
#include "support/kit/instrumented.h"
#include "support/twins/abs.h"
#include "support/twins/arithmetic.h"
#include "support/twins/pair.h"

namespace {

using namespace koru;
using namespace koru::test;
using koru::test::twin::Pair;

// Numbers at which 32-bit arithmetic would go wrong, and any others.
int extreme(Pair &pair) {
  static constexpr int kPoints[] = {INT_MIN, INT_MIN + 1, -65537, -46341, -3,    -2,          -1,     0,
                                    1,       2,           3,      46341,  65536, INT_MAX - 1, INT_MAX};
  const int i = pair.number(0, 2 * static_cast<int>(std::size(kPoints)));
  return i < static_cast<int>(std::size(kPoints)) ? kPoints[i] : pair.number(INT_MIN, INT_MAX);
}

int addSmall(Pair &pair) { return pair.add(brute::randomDomain(pair.random, pair.number(-6, 2), pair.number(1, 7))); }

int addExtreme(Pair &pair) {
  const int a = extreme(pair);
  const int b = pair.number(0, 3) == 0 ? satAdd(a, pair.number(0, 5)) : extreme(pair);
  return pair.add(std::min(a, b), std::max(a, b));
}

// n positions, some of them filled by a variable that stands elsewhere too.
std::vector<int> smallPositions(Pair &pair, int n) {
  std::vector<int> result;
  for (int i = 0; i < n; ++i) {
    const bool again = i > 0 && pair.number(0, 5) == 0;
    result.push_back(again ? result[static_cast<std::size_t>(pair.number(0, i - 1))] : addSmall(pair));
  }
  return result;
}

// All different: a wide variable at two positions may need as many steps as it has values to settle.
std::vector<int> extremePositions(Pair &pair, int n) {
  std::vector<int> result;
  for (int i = 0; i < n; ++i) result.push_back(addExtreme(pair));
  return result;
}

// False when the totals leave 64 bits, or come so near that a difference with s does.
bool fits(Pair &pair, const std::vector<int> &x, const std::vector<int> &c) {
  constexpr std::int64_t kLimit = INT64_MAX - (std::int64_t{1} << 33);
  const auto totals = twin::ScalProd{pair.engine, -1, x, c}.totals();
  return totals.has_value() && totals->first > -kLimit && totals->second < kLimit;
}

void runScalProd(Pair &pair, std::vector<int> x, std::vector<int> c, int steps) {
  std::vector<CSint *> vars = pair.variables(x);
  CSint *s = cs_ScalProd(vars.data(), c.data(), static_cast<int>(c.size()));
  const auto twinSum = twin::postScalProd(pair.engine, x, c);
  ASSERT_EQ(s != nullptr, twinSum.has_value()) << pair.where();
  if (s == nullptr) return;
  ASSERT_EQ(pair.addResult(s), *twinSum);
  pair.describe("\n  x " + ::testing::PrintToString(x) + " c " + ::testing::PrintToString(c));
  pair.randomSteps(steps);
}

class LinearTwin : public ::testing::Test {
 protected:
  void SetUp() override { Pair::stepsDone = 0; }

  template <class Body>
  void forSeeds(unsigned count, Body body) {
    for (unsigned seed = 1; seed <= count && !HasFailure(); ++seed) {
      Pair pair(seed);
      body(pair);
    }
  }
};

TEST_F(LinearTwin, ScalProdOfSmallTermsMovesAsIfEveryDivisionWereMade) {
  forSeeds(rounds(4000U), [](Pair &pair) {
    const std::vector<int> x = smallPositions(pair, pair.number(1, 5));
    std::vector<int> c;
    for (std::size_t i = 0; i < x.size(); ++i) c.push_back(pair.number(-4, 4));
    runScalProd(pair, x, c, 10);
  });
  EXPECT_GT(Pair::stepsDone, rounds(10000));
}

TEST_F(LinearTwin, ScalProdAtTheLimitsMovesAsIfEveryDivisionWereMade) {
  int posted = 0;
  int refused = 0;
  forSeeds(4000, [&](Pair &pair) {
    const std::vector<int> x = extremePositions(pair, pair.number(1, 4));
    std::vector<int> c;
    for (std::size_t i = 0; i < x.size(); ++i) c.push_back(extreme(pair));
    ++(fits(pair, x, c) ? posted : refused);
    runScalProd(pair, x, c, fits(pair, x, c) ? 8 : 0);
  });
  EXPECT_GT(posted, 1000);
  EXPECT_GT(refused, 20);
  EXPECT_GT(Pair::stepsDone, 4000);
}

// Wide terms with small coefficients: many narrowings with a rounded quotient.
TEST_F(LinearTwin, ScalProdOfWideTermsMovesAsIfEveryDivisionWereMade) {
  forSeeds(rounds(2000U), [](Pair &pair) {
    std::vector<int> x;
    std::vector<int> c;
    for (int n = pair.number(2, 4); n > 0; --n) {
      const int low = pair.number(-5000, 0);
      x.push_back(pair.add(low, low + pair.number(0, 5000)));
      c.push_back(pair.number(-9, 9));
    }
    runScalProd(pair, x, c, 12);
  });
  EXPECT_GT(Pair::stepsDone, rounds(5000));
}

void runSigma(Pair &pair, std::vector<int> x, int steps) {
  std::vector<CSint *> vars = pair.variables(x);
  CSint *s = cs_Sigma(vars.data(), static_cast<int>(vars.size()));
  ASSERT_NE(s, nullptr);
  ASSERT_EQ(pair.addResult(s), twin::postSum(pair.engine, x));
  pair.describe("\n  x " + ::testing::PrintToString(x));
  pair.randomSteps(steps);
}

TEST_F(LinearTwin, SigmaOfSmallAddendsMovesAsIfNoPassWereSkipped) {
  forSeeds(rounds(4000U), [](Pair &pair) { runSigma(pair, smallPositions(pair, pair.number(2, 5)), 10); });
  EXPECT_GT(Pair::stepsDone, rounds(10000));
}

TEST_F(LinearTwin, SigmaAtTheLimitsMovesAsIfNoPassWereSkipped) {
  forSeeds(rounds(3000U), [](Pair &pair) { runSigma(pair, extremePositions(pair, pair.number(2, 6)), 8); });
  EXPECT_GT(Pair::stepsDone, rounds(5000));
}

void runProduct(Pair &pair, int x, int y, bool divide, int steps) {
  const std::vector<CSint *> vars = pair.variables({x, y});
  CSint *z = divide ? cs_Div(vars[0], vars[1]) : cs_Mul(vars[0], vars[1]);
  const std::optional<int> twinResult =
      divide ? twin::postDiv(pair.engine, x, y) : std::optional(twin::postMul(pair.engine, x, y));
  ASSERT_EQ(z != nullptr, twinResult.has_value()) << pair.where();
  if (z == nullptr) return;
  ASSERT_EQ(pair.addResult(z), *twinResult);
  pair.describe(divide ? "\n  quotient" : "\n  product");
  pair.randomSteps(steps);
}

TEST_F(LinearTwin, SmallProductsAndQuotientsMoveLikeTheirTwins) {
  forSeeds(rounds(5000U), [](Pair &pair) {
    const std::vector<int> x = smallPositions(pair, 2);
    runProduct(pair, x[0], x[1], pair.number(0, 1) == 1, 10);
  });
  EXPECT_GT(Pair::stepsDone, rounds(10000));
}

TEST_F(LinearTwin, ProductsAndQuotientsAtTheLimitsMoveLikeTheirTwins) {
  forSeeds(rounds(5000U), [](Pair &pair) {
    const std::vector<int> x = extremePositions(pair, 2);
    runProduct(pair, x[0], x[1], pair.number(0, 1) == 1, 10);
  });
  EXPECT_GT(Pair::stepsDone, rounds(8000));
}

TEST_F(LinearTwin, AbsoluteValuesMoveLikeTheirTwins) {
  forSeeds(rounds(5000U), [](Pair &pair) {
    const int x = pair.add(brute::randomDomain(pair.random, pair.number(-9, 1), pair.number(1, 12)));
    CSint *real = pair.real[0];
    const bool withBits = real->bits != nullptr;
    CSint *z = cs_Abs(real);
    ASSERT_NE(z, nullptr);
    ASSERT_EQ(pair.addResult(z), twin::postAbs(pair.engine, x, withBits));
    pair.randomSteps(10);
  });
  EXPECT_GT(Pair::stepsDone, rounds(10000));
}

}  // namespace
