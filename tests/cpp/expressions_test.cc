// SPDX-License-Identifier: MIT
// Sums and conditions of koru.hpp: posted, denied, reified and implied, they mean what they say.
#include <algorithm>
#include <climits>
#include <random>

#include "brute_force.h"

namespace cpp_test {
namespace {

using koru::Condition;
using koru::IntVar;
using koru::Linear;

// A condition on three variables, and what it means.
struct Statement {
  std::function<Condition(const IntVars &)> say;
  Holds holds;
};

// In all contexts: posted, denied, reified, implied by a truth value and by its opposite, equal to one, below "or".
void expectInAllContexts(const Statement &s, int lo, int hi) {
  const auto posted = [&](const std::function<Condition(const IntVars &, IntVar)> &say,
                          const std::function<bool(bool, bool)> &meaning) {
    koru::Model m;
    IntVars x = m.ints(3, lo, hi);
    x.push_back(m.boolean());
    m.post(say(x, x[3]));
    const int least = std::min(lo, 0);
    const std::set<Values> all = counted(4, least, std::max(hi, 1), [&](const Values &v) {
      return *std::min_element(v.begin(), v.begin() + 3) >= lo && *std::max_element(v.begin(), v.begin() + 3) <= hi &&
             (v[3] == 0 || v[3] == 1) && meaning(s.holds(v), v[3] == 1);
    });
    EXPECT_EQ(found(m, x), all);
  };
  const auto say = s.say;
  posted([&](const IntVars &x, IntVar) { return say(x); }, [](bool a, bool) { return a; });
  posted([&](const IntVars &x, IntVar) { return !say(x); }, [](bool a, bool) { return !a; });
  posted([&](const IntVars &x, IntVar b) { return b >> say(x); }, [](bool a, bool b) { return !b || a; });
  posted([&](const IntVars &x, IntVar b) { return say(x) >> b; }, [](bool a, bool b) { return !a || b; });
  posted([&](const IntVars &x, IntVar b) { return !b >> say(x); }, [](bool a, bool b) { return b || a; });
  posted([&](const IntVars &x, IntVar b) { return say(x) == b; }, [](bool a, bool b) { return a == b; });
  posted([&](const IntVars &x, IntVar b) { return say(x) != b; }, [](bool a, bool b) { return a != b; });
  posted([&](const IntVars &x, IntVar b) { return b == !say(x); }, [](bool a, bool b) { return a != b; });
  posted([&](const IntVars &x, IntVar b) { return (say(x) && b) || (!say(x) && !b); },
         [](bool a, bool b) { return a == b; });

  koru::Model m;
  IntVars x = m.ints(3, lo, hi);
  const IntVar b = m.reify(s.say(x));
  for (const koru::Solution &found : m.solutions({.vars = x})) EXPECT_EQ(found[b] >= 1, s.holds(found[x]));
  EXPECT_EQ(found(m, x).size(), counted(3, lo, hi, [](const Values &) { return true; }).size());
}

void expectInAllContexts(const Statement &s) { expectInAllContexts(s, -1, 2); }

TEST(CppCondition, ComparesAVariableWithAnInt) {
  expectInAllContexts({[](const IntVars &x) { return x[0] == 1; }, [](const Values &v) { return v[0] == 1; }});
  expectInAllContexts({[](const IntVars &x) { return x[0] != 1; }, [](const Values &v) { return v[0] != 1; }});
  expectInAllContexts({[](const IntVars &x) { return x[0] <= 0; }, [](const Values &v) { return v[0] <= 0; }});
  expectInAllContexts({[](const IntVars &x) { return x[0] < 0; }, [](const Values &v) { return v[0] < 0; }});
  expectInAllContexts({[](const IntVars &x) { return x[0] >= 1; }, [](const Values &v) { return v[0] >= 1; }});
  expectInAllContexts({[](const IntVars &x) { return x[0] > 1; }, [](const Values &v) { return v[0] > 1; }});
  expectInAllContexts({[](const IntVars &x) { return 1 > x[0]; }, [](const Values &v) { return 1 > v[0]; }});
}

TEST(CppCondition, ComparesAVariableWithAnEnumerator) {
  enum { no, yes };
  expectInAllContexts({[](const IntVars &x) { return x[0] == yes; }, [](const Values &v) { return v[0] == 1; }});
  expectInAllContexts({[](const IntVars &x) { return 2 * x[0] - yes < no; }, [](const Values &v) { return v[0] < 1; }});
}

TEST(CppCondition, ComparesTwoVariables) {
  expectInAllContexts({[](const IntVars &x) { return x[0] == x[1]; }, [](const Values &v) { return v[0] == v[1]; }});
  expectInAllContexts({[](const IntVars &x) { return x[0] != x[1]; }, [](const Values &v) { return v[0] != v[1]; }});
  expectInAllContexts({[](const IntVars &x) { return x[0] <= x[1]; }, [](const Values &v) { return v[0] <= v[1]; }});
  expectInAllContexts({[](const IntVars &x) { return x[0] < x[1]; }, [](const Values &v) { return v[0] < v[1]; }});
  expectInAllContexts({[](const IntVars &x) { return x[0] >= x[1]; }, [](const Values &v) { return v[0] >= v[1]; }});
  expectInAllContexts({[](const IntVars &x) { return x[0] > x[1]; }, [](const Values &v) { return v[0] > v[1]; }});
  expectInAllContexts({[](const IntVars &x) { return x[0] == x[0]; }, [](const Values &) { return true; }});
  expectInAllContexts({[](const IntVars &x) { return x[0] < x[0]; }, [](const Values &) { return false; }});
}

// Near 0 a sum of two variables is a relation of them; elsewhere it is a linear constraint.
TEST(CppCondition, ComparesTwoVariablesAtADistance) {
  for (int d = -2; d <= 2; ++d) {
    expectInAllContexts(
        {[d](const IntVars &x) { return x[0] <= x[1] + d; }, [d](const Values &v) { return v[0] <= v[1] + d; }});
    expectInAllContexts(
        {[d](const IntVars &x) { return x[0] - d < x[1]; }, [d](const Values &v) { return v[0] - d < v[1]; }});
    expectInAllContexts(
        {[d](const IntVars &x) { return x[0] + d >= x[1]; }, [d](const Values &v) { return v[0] + d >= v[1]; }});
    expectInAllContexts(
        {[d](const IntVars &x) { return -x[0] + x[1] > d; }, [d](const Values &v) { return -v[0] + v[1] > d; }});
    expectInAllContexts(
        {[d](const IntVars &x) { return x[1] - x[0] == d; }, [d](const Values &v) { return v[1] - v[0] == d; }});
    expectInAllContexts(
        {[d](const IntVars &x) { return x[1] - x[0] != d; }, [d](const Values &v) { return v[1] - v[0] != d; }});
  }
}

TEST(CppCondition, KnowsMembership) {
  expectInAllContexts({[](const IntVars &x) {
                         return koru::one_of(x[0], {2, -1, 7, 2});
                       },
                       [](const Values &v) { return v[0] == 2 || v[0] == -1; }});
  expectInAllContexts({[](const IntVars &x) { return koru::one_of(x[0], {}); }, [](const Values &) { return false; }});
  expectInAllContexts({[](const IntVars &x) { return koru::between(x[0], 0, 1); },
                       [](const Values &v) { return v[0] == 0 || v[0] == 1; }});
  expectInAllContexts(
      {[](const IntVars &x) { return koru::between(x[0], 1, 0); }, [](const Values &) { return false; }});
}

TEST(CppCondition, TakesAVariableForTrueFromOne) {
  expectInAllContexts({[](const IntVars &x) { return Condition(x[0]); }, [](const Values &v) { return v[0] >= 1; }});
  expectInAllContexts({[](const IntVars &x) { return !x[0]; }, [](const Values &v) { return v[0] < 1; }});
  expectInAllContexts({[](const IntVars &x) { return Condition(x[0]) == Condition(x[1]); },
                       [](const Values &v) { return (v[0] >= 1) == (v[1] >= 1); }});
}

TEST(CppCondition, OfNothing) {
  expectInAllContexts({[](const IntVars &) { return koru::all_of({}); }, [](const Values &) { return true; }});
  expectInAllContexts({[](const IntVars &) { return koru::any_of({}); }, [](const Values &) { return false; }});
}

// One variable with every small coefficient, constant and relation: divisions round to the right side.
TEST(CppLinear, OfOneVariableIsARelationWithAnInt) {
  for (int a = -3; a <= 3; ++a) {
    for (int k = -7; k <= 7; ++k) {
      for (int relation = 0; relation < 6; ++relation) {
        const auto r = static_cast<koru::Relation>(relation);
        expectMeaning(
            1, -3, 3, [&](const Values &v) { return koru::detail::holds(a * v[0], r, k); },
            [&](const IntVars &x) { return Condition::compare(a * x[0], r, k); });
      }
    }
  }
}

TEST(CppLinear, ComparesAtTheEndsOfTheInts) {
  koru::Model m;
  const IntVar x = m.var(INT_MIN, INT_MIN + 1);
  const IntVar y = m.var(INT_MAX - 1, INT_MAX);
  const auto holds = [&m](const Condition &c) {
    const koru::Context context = m.context();
    return m.post(c);
  };
  EXPECT_FALSE(holds(x < INT_MIN));
  EXPECT_FALSE(holds(y > INT_MAX));
  EXPECT_TRUE(holds(x <= INT_MIN));
  EXPECT_TRUE(holds(y >= INT_MAX));
  EXPECT_TRUE(holds(x > LLONG_MIN + 1));
  EXPECT_TRUE(holds(y < LLONG_MAX));
  EXPECT_FALSE(holds(x == INT_MIN - 1LL));
  EXPECT_FALSE(holds(y >= INT_MAX + 1LL));
  EXPECT_TRUE(holds(y != INT_MAX + 1LL));
  EXPECT_TRUE(holds(y > INT_MIN - 1LL));
  EXPECT_FALSE(holds(x > LLONG_MAX));
  EXPECT_TRUE(holds(1LL * y - x <= 4294967295LL));
  EXPECT_FALSE(holds(1LL * y - x > 4294967295LL));
  EXPECT_TRUE(holds(3 * x >= LLONG_MIN + 2));
  EXPECT_FALSE(holds(3 * x <= LLONG_MIN + 2));
}

TEST(CppLinear, ThrowsRatherThanWrap) {
  koru::Model m;
  const IntVar x = m.var(0, 1);
  EXPECT_THROW(static_cast<void>(LLONG_MAX * (2 * x)), std::overflow_error);
  EXPECT_THROW(static_cast<void>(x + LLONG_MAX + 1), std::overflow_error);
  EXPECT_THROW(static_cast<void>(-(LLONG_MIN * x)), std::overflow_error);
  EXPECT_THROW(m.post(LLONG_MAX * x + 1 * x <= 0), std::overflow_error);
}

TEST(CppLinear, Gathers) {
  koru::Model m;
  const IntVars x = m.ints(3, 0, 9);
  Linear e = 2 * x[0] + x[1] * 3 - (x[0] - 5);
  e += e;
  e -= x[2];
  e *= 2;
  EXPECT_EQ(e.constant(), 20);
  EXPECT_EQ(e.terms().size(), 7u);
  const koru::Result r = m.solve({.vars = x});
  EXPECT_EQ(r.best[e], 20);
  EXPECT_EQ(r.best[koru::sum(x)], 0);
  EXPECT_THROW(koru::sum({1, 2}, x), std::invalid_argument);
}

// Random sums over random relations, with variables in several places; some with so many terms that nothing is
// gathered.
TEST(CppLinear, MeansItsSum) {
  std::mt19937 random(7);
  for (int round = 0; round < 60; ++round) {
    const int terms = round % 10 == 0 ? 20 : 1 + static_cast<int>(random() % 5);
    std::vector<std::pair<int, std::size_t>> sum;
    for (int i = 0; i < terms; ++i) sum.emplace_back(static_cast<int>(random() % 7) - 3, random() % 3);
    const int k = static_cast<int>(random() % 9) - 4;
    const auto r = static_cast<koru::Relation>(random() % 6);
    const auto say = [=](const IntVars &x) {
      Linear all = k;
      for (const auto &[a, i] : sum) all += a * x[i];
      return Condition::compare(all, r, 1);
    };
    const auto holds = [=](const Values &v) {
      int all = k;
      for (const auto &[a, i] : sum) all += a * v[i];
      return koru::detail::holds(all, r, 1);
    };
    expectInAllContexts({say, holds});
  }
}

// A random tree of conditions.
Statement randomStatement(std::mt19937 &random, int depth) {
  if (depth == 0 || random() % 4 == 0) {
    const std::size_t i = random() % 3;
    const std::size_t j = random() % 3;
    const int k = static_cast<int>(random() % 4) - 1;
    const auto r = static_cast<koru::Relation>(random() % 6);
    switch (random() % 4) {
      case 0:
        return {[=](const IntVars &x) { return Condition::compare(x[i], r, k); },
                [=](const Values &v) { return koru::detail::holds(v[i], r, k); }};
      case 1:
        return {[=](const IntVars &x) { return Condition::compare(x[i], r, x[j]); },
                [=](const Values &v) { return koru::detail::holds(v[i], r, v[j]); }};
      case 2:
        return {[=](const IntVars &x) { return Condition::compare(x[i] + 2 * x[j], r, k); },
                [=](const Values &v) { return koru::detail::holds(v[i] + 2 * v[j], r, k); }};
      default:
        return {[=](const IntVars &x) { return !x[i]; }, [=](const Values &v) { return v[i] < 1; }};
    }
  }
  const Statement a = randomStatement(random, depth - 1);
  const Statement b = randomStatement(random, depth - 1);
  switch (random() % 5) {
    case 0:
      return {[=](const IntVars &x) { return a.say(x) && b.say(x); },
              [=](const Values &v) { return a.holds(v) && b.holds(v); }};
    case 1:
      return {[=](const IntVars &x) { return a.say(x) || b.say(x); },
              [=](const Values &v) { return a.holds(v) || b.holds(v); }};
    case 2:
      return {[=](const IntVars &x) { return a.say(x) >> b.say(x); },
              [=](const Values &v) { return !a.holds(v) || b.holds(v); }};
    case 3:
      return {[=](const IntVars &x) { return a.say(x) == b.say(x); },
              [=](const Values &v) { return a.holds(v) == b.holds(v); }};
    default:
      return {[=](const IntVars &x) { return !a.say(x); }, [=](const Values &v) { return !a.holds(v); }};
  }
}

TEST(CppCondition, MeansWhatItsPartsMean) {
  std::mt19937 random(11);
  for (int round = 0; round < 150; ++round) expectInAllContexts(randomStatement(random, 3), -1, 1);
}

// What is simple is said by the constraint that is made for it.
TEST(CppCondition, PostsTheCheapestConstraint) {
  koru::Model m;
  const IntVars x = m.ints(4, 0, 9);
  const auto attached = [&] {
    int n = 0;
    for (const IntVar &v : x) n += cs_getNbConstraints(v.get());
    return n;
  };
  m.post(x[0] <= 7, 2 * x[1] > 3, koru::one_of(x[2], {1, 2, 3}));
  EXPECT_EQ(attached(), 0);
  EXPECT_EQ(x[1].min(), 2);
  m.post((x[0] == 1) >> (x[1] != 2));
  EXPECT_EQ(attached(), 2);
  m.post(x[0] + 1 <= x[1]);
  EXPECT_EQ(attached(), 4);
}

}  // namespace
}  // namespace cpp_test
