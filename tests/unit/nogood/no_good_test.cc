// SPDX-License-Identifier: MIT
// Decisions about a domain: entailed, undecided or neither, and the negation.
#include "nogood/no_good.h"

#include "support/kit/small_domains.h"
#include "support/no_goods/no_goods.h"

namespace {

using namespace koru;
using namespace koru::test;
using namespace koru::test::nogood;

using DecisionTest = SolverTest;

struct Verdict {
  bool entailed;
  bool undecided;
  bool operator==(const Verdict &) const = default;
};

Verdict verdict(const CSvalueSelection &decision, const CSint *v) {
  return {isEntailed(decision, v), isUndecided(decision, v)};
}

// Entailed: true of every value; undecided: of some only.
TEST_F(DecisionTest, EachMethodIsJudgedByTheValuesThatSatisfyIt) {
  for (const brute::Domain &domain : brute::allDomains(-2, 5)) {
    const CSint *v = brute::create(domain);
    for (int method = 0; method < kMethods; ++method) {
      for (int value = -4; value <= 4; ++value) {
        const auto satisfying = std::ranges::count_if(domain.values, [&](int x) {
          return holds(Literal{0, method, value}, x);
        });
        const bool all = satisfying == std::ssize(domain.values);
        EXPECT_EQ(verdict({method, value}, v), (Verdict{all, satisfying > 0 && !all}))
            << Literal{0, method, value} << " on " << ::testing::PrintToString(domain.values);
      }
    }
  }
}

TEST_F(DecisionTest, TheNegationHoldsExactlyWhenTheDecisionDoesNot) {
  for (int method = 0; method < kMethods; ++method) {
    const CSvalueSelection negation = negationOf({method, 3});
    EXPECT_EQ(negation.value, 3);
    for (int x = 2; x <= 4; ++x)
      EXPECT_NE(holds(Literal{0, method, 3}, x), holds(Literal{0, negation.method, negation.value}, x));
  }
}

TEST_F(DecisionTest, NegationSwapsMethodsInPairs) {
  const int pairs[][2] = {{0, 1}, {1, 0}, {2, 5}, {5, 2}, {3, 4}, {4, 3}};
  for (const auto &[method, negated] : pairs) EXPECT_EQ(negationOf({method, 0}).method, negated);
}

TEST_F(DecisionTest, OnlyTheSixMethodsAreMethods) {
  for (const int method : {INT_MIN, -1, 6, INT_MAX}) EXPECT_FALSE(isMethod(method)) << method;
  for (int method = 0; method < 6; ++method) EXPECT_TRUE(isMethod(method)) << method;
}

TEST_F(DecisionTest, TheEndsOfTheIntRangeAreComparedSafely) {
  const CSint *low = cs_createCSint(INT_MIN, INT_MIN + 1);
  EXPECT_EQ(verdict({CS_METHOD_LE, INT_MIN}, low), (Verdict{false, true}));
  EXPECT_EQ(verdict({CS_METHOD_LT, INT_MIN}, low), (Verdict{false, false}));
  EXPECT_EQ(verdict({CS_METHOD_GE, INT_MIN}, low), (Verdict{true, false}));
  EXPECT_EQ(verdict({CS_METHOD_GT, INT_MAX}, low), (Verdict{false, false}));
  const CSint *high = cs_createCSint(INT_MAX - 1, INT_MAX);
  EXPECT_EQ(verdict({CS_METHOD_GE, INT_MAX}, high), (Verdict{false, true}));
  EXPECT_EQ(verdict({CS_METHOD_GT, INT_MAX}, high), (Verdict{false, false}));
  EXPECT_EQ(verdict({CS_METHOD_LE, INT_MAX}, high), (Verdict{true, false}));
  EXPECT_EQ(verdict({CS_METHOD_NEQ, INT_MIN}, high), (Verdict{true, false}));
}

// Its element count has wrapped to 0: neither free nor instantiated.
TEST_F(DecisionTest, AVariableOverAllIntsIsNeverUndecidedAboutOneValue) {
  const CSint *v = cs_createCSint(INT_MIN, INT_MAX);
  EXPECT_EQ(verdict({CS_METHOD_EQ, 5}, v), (Verdict{false, false}));
  EXPECT_EQ(verdict({CS_METHOD_NEQ, 5}, v), (Verdict{false, false}));
  EXPECT_EQ(verdict({CS_METHOD_LE, 5}, v), (Verdict{false, true}));
}

TEST_F(DecisionTest, NoGoodsAgreeWhenTheShorterBeginsTheLonger) {
  const auto make = [](const Literals &literals) {
    CSnoGood *noGood = createNoGood(static_cast<int>(literals.size()));
    for (std::size_t i = 0; i < literals.size(); ++i)
      noGood->elements()[i] = {{literals[i].method, literals[i].value}, literals[i].index};
    return noGood;
  };
  const auto agreeing = [&](const Literals &a, const Literals &b) {
    CSnoGood *left = make(a);
    CSnoGood *right = make(b);
    const bool result = agree(*left, *right);
    EXPECT_EQ(agree(*right, *left), result);
    deallocate(left);
    deallocate(right);
    return result;
  };
  EXPECT_TRUE(agreeing({eq(0, 1), eq(1, 2)}, {eq(0, 1), eq(1, 2)}));
  EXPECT_TRUE(agreeing({eq(0, 1)}, {eq(0, 1), eq(1, 2)}));
  EXPECT_FALSE(agreeing({eq(1, 2)}, {eq(0, 1), eq(1, 2)}));
  EXPECT_FALSE(agreeing({eq(1, 2), eq(0, 1)}, {eq(0, 1), eq(1, 2)}));
  EXPECT_FALSE(agreeing({eq(0, 1)}, {neq(0, 1)}));
  EXPECT_FALSE(agreeing({eq(0, 1)}, {eq(0, 2)}));
  EXPECT_FALSE(agreeing({eq(0, 1)}, {eq(1, 1)}));
}

}  // namespace
