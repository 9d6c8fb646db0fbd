// SPDX-License-Identifier: MIT
// The relations at the ends of the int range.
#include <algorithm>
#include <climits>
#include <cstdint>

#include "core/solver.h"
#include "support/kit/probe.h"

namespace {

using namespace koru::test;

using RelationLimitsTest = SolverTest;

constexpr int kValues[] = {INT_MIN, INT_MIN + 1, INT_MIN + 2, -1, 0, 1, INT_MAX - 2, INT_MAX - 1, INT_MAX};

struct Bounds {
  std::int64_t min;
  std::int64_t max;
  bool operator==(const Bounds &) const = default;
};

std::ostream &operator<<(std::ostream &out, const Bounds &b) { return out << "[" << b.min << ", " << b.max << "]"; }

Bounds boundsOf(CSint *v) { return {cs_getMin(v), cs_getMax(v)}; }

// All intervals between two of the values.
template <class Visit>
void forEachInterval(Visit visit) {
  for (const int low : kValues)
    for (const int high : kValues)
      if (low <= high) visit(low, high);
}

struct OrderForm {
  const char *name;
  bool (*relation)(CSint *, int);
  Bounds (*allowed)(std::int64_t v);  // what the relation leaves of all numbers
};

constexpr OrderForm kOrderForms[] = {
    {"LE", cs_LE,
     [](std::int64_t v) {
       return Bounds{INT64_MIN, v};
     }},
    {"LT", cs_LT,
     [](std::int64_t v) {
       return Bounds{INT64_MIN, v - 1};
     }},
    {"GE", cs_GE,
     [](std::int64_t v) {
       return Bounds{v, INT64_MAX};
     }},
    {"GT", cs_GT,
     [](std::int64_t v) {
       return Bounds{v + 1, INT64_MAX};
     }},
    {"EQ", cs_EQ,
     [](std::int64_t v) {
       return Bounds{v, v};
     }},
};

TEST_F(RelationLimitsTest, RelationsWithAnIntIntersectAtTheEndsOfTheRange) {
  for (const OrderForm &form : kOrderForms) {
    for (const int v : kValues) {
      if ((form.relation == cs_LT && v == INT_MIN) || (form.relation == cs_GT && v == INT_MAX)) continue;
      forEachInterval([&](int low, int high) {
        CSint *x = cs_createCSint(low, high);
        const Bounds allowed = form.allowed(v);
        const Bounds wanted{std::max<std::int64_t>(low, allowed.min), std::min<std::int64_t>(high, allowed.max)};
        const bool possible = wanted.min <= wanted.max;
        EXPECT_EQ(form.relation(x, v), possible) << form.name << " " << v << " on " << low << ".." << high;
        EXPECT_EQ(boundsOf(x), possible ? wanted : (Bounds{low, high})) << form.name << " " << v;
        EXPECT_EQ(cs_getNbElements(x), koru::rangeSize(cs_getMin(x), cs_getMax(x)));
      });
    }
  }
}

// Deliberate: v - 1 and v + 1 wrap.
TEST_F(RelationLimitsTest, LtOfIntMinAndGtOfIntMaxAreTrueAndChangeNothing) {
  forEachInterval([](int low, int high) {
    CSint *x = cs_createCSint(low, high);
    EXPECT_TRUE(cs_LT(x, INT_MIN));
    EXPECT_TRUE(cs_GT(x, INT_MAX));
    EXPECT_EQ(boundsOf(x), (Bounds{low, high}));
  });
}

TEST_F(RelationLimitsTest, NeqTakesTheEndsOfTheRange) {
  CSint *x = cs_createCSint(INT_MIN, INT_MAX);
  EXPECT_TRUE(cs_NEQ(x, INT_MIN));
  EXPECT_TRUE(cs_NEQ(x, INT_MAX));
  EXPECT_EQ(boundsOf(x), (Bounds{INT_MIN + 1, INT_MAX - 1}));
  EXPECT_EQ(x->bits, nullptr);
  EXPECT_TRUE(cs_NEQ(x, INT_MIN));
  EXPECT_FALSE(cs_NEQ(CSINT(INT_MIN), INT_MIN));
  EXPECT_FALSE(cs_NEQ(CSINT(INT_MAX), INT_MAX));
}

TEST_F(RelationLimitsTest, NeqInsideSmallDomainsAtTheEndsOfTheRange) {
  for (const int low : {INT_MIN, INT_MAX - 3}) {
    CSint *x = cs_createCSint(low, low + 3);
    EXPECT_TRUE(cs_NEQ(x, low + 1));
    EXPECT_EQ(values(x), (std::vector{low, low + 2, low + 3}));
    EXPECT_TRUE(cs_NEQ(x, low));
    EXPECT_TRUE(cs_NEQ(x, low + 3));
    EXPECT_EQ(values(x), std::vector{low + 2});
  }
}

struct PairForm {
  const char *name;
  bool (*post)(CSint *, CSint *);
  bool (*holds)(std::int64_t, std::int64_t);
};

constexpr PairForm kPairForms[] = {
    {"Eq", cs_Eq, [](std::int64_t x, std::int64_t y) { return x == y; }},
    {"Neq", cs_Neq, [](std::int64_t x, std::int64_t y) { return x != y; }},
    {"Le", cs_Le, [](std::int64_t x, std::int64_t y) { return x <= y; }},
    {"Lt", cs_Lt, [](std::int64_t x, std::int64_t y) { return x < y; }},
    {"Ge", cs_Ge, [](std::int64_t x, std::int64_t y) { return x >= y; }},
    {"Gt", cs_Gt, [](std::int64_t x, std::int64_t y) { return x > y; }},
};

TEST_F(RelationLimitsTest, PairsOfConstantsAreDecidedAtThePosting) {
  for (const PairForm &form : kPairForms)
    for (const int a : kValues)
      for (const int b : kValues)
        EXPECT_EQ(form.post(CSINT(a), CSINT(b)), form.holds(a, b)) << form.name << " " << a << " " << b;
}

// Both are three values wide; a value without a partner may stay only where the relation does not promise more.
TEST_F(RelationLimitsTest, OrderOfSmallDomainsAtTheEndsOfTheRangeIsBoundsConsistent) {
  for (const PairForm &form : kPairForms) {
    if (form.post == cs_Neq) continue;
    for (const int a : {INT_MIN, INT_MIN + 2, -1, INT_MAX - 3, INT_MAX - 2}) {
      for (const int b : {INT_MIN, INT_MIN + 2, -1, INT_MAX - 3, INT_MAX - 2}) {
        CSint *x = cs_createCSint(a, a + 2);
        CSint *y = cs_createCSint(b, b + 2);
        std::vector<int> keptX;
        std::vector<int> keptY;
        for (int i = 0; i < 3; ++i) {
          bool partnerOfX = false;
          bool partnerOfY = false;
          for (int j = 0; j < 3; ++j) {
            partnerOfX = partnerOfX || form.holds(a + i, b + j);
            partnerOfY = partnerOfY || form.holds(a + j, b + i);
          }
          if (partnerOfX) keptX.push_back(a + i);
          if (partnerOfY) keptY.push_back(b + i);
        }
        ASSERT_EQ(form.post(x, y), !keptX.empty()) << form.name << " " << a << " " << b;
        if (keptX.empty()) continue;
        EXPECT_EQ(values(x), keptX) << form.name << " " << a << " " << b;
        EXPECT_EQ(values(y), keptY) << form.name << " " << a << " " << b;
      }
    }
  }
}

TEST_F(RelationLimitsTest, NeqOfAConstantTakesTheEndOfTheRange) {
  CSint *x = cs_createCSint(INT_MIN, INT_MAX);
  EXPECT_TRUE(cs_Neq(x, CSINT(INT_MIN)));
  EXPECT_TRUE(cs_Neq(CSINT(INT_MAX), x));
  EXPECT_EQ(boundsOf(x), (Bounds{INT_MIN + 1, INT_MAX - 1}));
}

TEST_F(RelationLimitsTest, WholeRangesPassTheirBounds) {
  CSint *x = cs_createCSint(INT_MIN, INT_MAX);
  CSint *y = cs_createCSint(INT_MIN, INT_MAX);
  CSint *z = cs_createCSint(INT_MIN, INT_MAX);
  ASSERT_TRUE(cs_Eq(x, y));
  ASSERT_TRUE(cs_Lt(y, z));
  EXPECT_EQ(boundsOf(x), (Bounds{INT_MIN, INT_MAX - 1}));
  EXPECT_EQ(boundsOf(z), (Bounds{INT_MIN + 1, INT_MAX}));
  ASSERT_TRUE(cs_GE(x, INT_MAX - 1));
  EXPECT_EQ(boundsOf(z), (Bounds{INT_MAX, INT_MAX}));
  EXPECT_FALSE(cs_EQ(y, INT_MAX));
}

class WholeRangeTest : public SolverTest {
 protected:
  void SetUp() override {
    SolverTest::SetUp();
    x = cs_createCSint(INT_MIN, INT_MAX);
  }
  CSint *x = nullptr;
  static inline std::size_t lastSize = 0;
};

TEST_F(WholeRangeTest, HasAWrappedCountAndIsNeitherFreeNorInstantiated) {
  EXPECT_EQ(cs_getNbElements(x), 0);
  EXPECT_FALSE(cs_isFree(x));
  EXPECT_FALSE(cs_isInstantiated(x));
  ASSERT_TRUE(cs_LE(x, 0));
  EXPECT_EQ(cs_getNbElements(x), INT_MIN + 1);
  ASSERT_TRUE(cs_GE(x, -1));
  EXPECT_EQ(cs_getNbElements(x), 2);
  EXPECT_TRUE(cs_isFree(x));
}

TEST_F(WholeRangeTest, CanBeBoundToAnyValue) {
  for (const int v : kValues) {
    cs_saveContext();
    EXPECT_TRUE(cs_EQ(x, v));
    EXPECT_EQ(cs_getValue(x), v);
    EXPECT_TRUE(cs_isInstantiated(x));
    cs_restoreContext();
    EXPECT_EQ(boundsOf(x), (Bounds{INT_MIN, INT_MAX}));
    EXPECT_EQ(cs_getNbElements(x), 0);
  }
}

TEST_F(WholeRangeTest, ABitArrayThatCannotBeHadIsReportedAndLeavesTheDomain) {
  {
    const FailingAllocation failing(0);
    EXPECT_FALSE(cs_NEQ(x, 0));
  }
  EXPECT_EQ(memoryReports, 1);
  EXPECT_EQ(cs_getErr(), CS_ERR_MEMORY);
  EXPECT_TRUE(cs_isIn(x, 0));
  EXPECT_EQ(cs_getNbElements(x), 0);
  EXPECT_TRUE(cs_EQ(x, 0));
}

TEST_F(WholeRangeTest, ASetOfBothEndsNeedsTheSameArray) {
  const std::vector<int> ends{INT_MAX, INT_MIN};
  lastSize = 0;
  koru::allocationHook = [](std::size_t size) {
    lastSize = size;
    return false;
  };
  EXPECT_EQ(fromValues(ends), nullptr);
  koru::allocationHook = nullptr;
  EXPECT_EQ(memoryReports, 1);
  EXPECT_GE(lastSize, std::size_t{1} << 29);
}

TEST_F(WholeRangeTest, HeavyAnInnerValueIsReallyRemoved) {
  ASSERT_TRUE(cs_NEQ(x, 0));
  EXPECT_FALSE(cs_isIn(x, 0));
  EXPECT_EQ(cs_getNbElements(x), -1);
  EXPECT_EQ(cs_getNextValue(x, -1), 1);
  EXPECT_EQ(cs_getPreviousValue(x, 1), -1);
  ASSERT_TRUE(cs_GE(x, 0));
  EXPECT_EQ(cs_getMin(x), 1);
  EXPECT_EQ(cs_getNbElements(x), INT_MAX);
  EXPECT_EQ(memoryReports, 0);
}

TEST_F(WholeRangeTest, IsLabelledFromTheSmallestInt) {
  EXPECT_TRUE(cs_search(&x, 1, cs_findFreeVar));
  EXPECT_EQ(cs_getValue(x), INT_MIN);
  EXPECT_EQ(cs_getNbChoicePoints(), 1);
  cs_restoreAll();
  EXPECT_EQ(boundsOf(x), (Bounds{INT_MIN, INT_MAX}));
}

}  // namespace
