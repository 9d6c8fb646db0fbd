// SPDX-License-Identifier: MIT
// The orders of variables and values, by the first decision of a search.
#include "solve/choose.h"

#include <functional>

#include "core/solver.h"
#include "support/kit/solver_test.h"

namespace koru::test::solve {
namespace {

class ChooseTest : public SolverTest {
 protected:
  using Change = std::function<void(CSsearchOptions &)>;

  // After one choice point, the domains tell of the decision.
  static void decideOnce(std::vector<CSint *> vars, const Change &change) {
    CSsearchOptions o{};
    o.size = sizeof o;
    o.progressMilliseconds = 0;
    change(o);
    CSsearch *s = cs_createSearch(vars.data(), static_cast<int>(vars.size()));
    ASSERT_TRUE(cs_setSearchOptions(s, &o));
    cs_nextSolution(s);
  }

  // The values of one variable in the order in which a search comes to them.
  static std::vector<int> orderOfValues(CSint *v, const Change &change) {
    CSsearchOptions o{};
    o.size = sizeof o;
    change(o);
    CSsearch *s = cs_createSearch(&v, 1);
    EXPECT_TRUE(cs_setSearchOptions(s, &o));
    std::vector<int> result;
    while (cs_nextSolution(s) == CS_STATUS_SOLUTION) result.push_back(cs_getValue(v));
    EXPECT_TRUE(cs_freeSearch(s));
    return result;
  }

  // The variables in the order in which a search binds them.
  static std::vector<int> orderOfVariables(std::vector<CSint *> vars, const Change &change) {
    return orderOfVariables(vars, vars, change);
  }
  // Of those that are watched.
  static std::vector<int> orderOfVariables(std::vector<CSint *> watched, std::vector<CSint *> vars,
                                           const Change &change) {
    static std::vector<int> bound;
    bound.clear();
    const int n = static_cast<int>(vars.size());
    cs_saveContext();
    EXPECT_TRUE(cs_eventKnown(
        watched.data(), static_cast<int>(watched.size()),
        [](int, int index, CSint **, int, void *) {
          bound.push_back(index);
          return true;
        },
        nullptr));
    CSsearchOptions o{};
    o.size = sizeof o;
    change(o);
    CSsearch *s = cs_createSearch(vars.data(), n);
    EXPECT_TRUE(cs_setSearchOptions(s, &o));
    EXPECT_EQ(cs_nextSolution(s), CS_STATUS_SOLUTION);
    EXPECT_TRUE(cs_freeSearch(s));
    cs_restoreContext();
    return bound;
  }

  static Change order(int kind) {
    return [kind](CSsearchOptions &o) { o.order = kind; };
  }
  static Change value(int kind) {
    return [kind](CSsearchOptions &o) { o.value = kind; };
  }
};

// Among constants, of which there are more than the words of a set can hold, the same choices as without them.
TEST_F(ChooseTest, OrdersOfVariablesFarApart) {
  std::vector<CSint *> few;
  for (int i = 0; i < 6; ++i) few.push_back(cs_createCSint(i % 3, 4 + i * 5 % 7));
  ASSERT_TRUE(cs_Lt(few[0], few[4]));
  std::vector<CSint *> many(10001, CSINT(3));
  for (std::size_t i = 0; i < few.size(); ++i) many[i * 2000] = few[i];
  for (const int kind : {CS_ORDER_INPUT, CS_ORDER_SMALLEST, CS_ORDER_LARGEST, CS_ORDER_REGRET, CS_ORDER_DOM_WDEG}) {
    EXPECT_EQ(orderOfVariables(few, many, order(kind)), orderOfVariables(few, order(kind))) << kind;
  }
}

TEST_F(ChooseTest, OrdersOfVariables) {
  CSint *a = cs_createCSint(2, 6);
  CSint *b = fromValues({3, 9});
  CSint *c = cs_createCSint(1, 9);
  CSint *d = cs_createCSint(4, 6);
  ASSERT_TRUE(cs_Neq(d, cs_createCSint(50, 60)));
  const std::vector<CSint *> vars{a, b, c, d};
  using Order = std::vector<int>;
  EXPECT_EQ(orderOfVariables(vars, order(CS_ORDER_INPUT)), (Order{0, 1, 2, 3}));
  EXPECT_EQ(orderOfVariables(vars, order(CS_ORDER_SMALLEST)), (Order{1, 3, 0, 2}));
  EXPECT_EQ(orderOfVariables(vars, order(CS_ORDER_LARGEST)), (Order{2, 0, 3, 1}));
  EXPECT_EQ(orderOfVariables(vars, order(CS_ORDER_SMALLEST_MIN)), (Order{2, 0, 1, 3}));
  EXPECT_EQ(orderOfVariables(vars, order(CS_ORDER_LARGEST_MAX)), (Order{1, 2, 0, 3}));
  EXPECT_EQ(orderOfVariables(vars, order(CS_ORDER_REGRET)), (Order{1, 0, 2, 3}));
  EXPECT_EQ(orderOfVariables(vars, order(CS_ORDER_MOST_CONSTRAINED)).front(), 3);
  EXPECT_EQ(orderOfVariables(vars, order(CS_ORDER_DOM_WDEG)), (Order{1, 3, 0, 2}));
}

TEST_F(ChooseTest, EqualsAtRandomAreNotAlwaysTheSame) {
  std::vector<CSint *> vars;
  for (int i = 0; i < 6; ++i) vars.push_back(cs_createCSint(0, 3));
  std::vector<std::vector<int>> orders;
  for (unsigned seed = 0; seed < 5; ++seed) {
    const auto change = [seed](CSsearchOptions &o) {
      o.order = CS_ORDER_SMALLEST;
      o.randomTies = true;
      o.seed = seed;
    };
    orders.push_back(orderOfVariables(vars, change));
    EXPECT_EQ(orderOfVariables(vars, change), orders.back()) << "the seed decides";
  }
  EXPECT_NE(orders[0], orders[1]);
}

TEST_F(ChooseTest, OrdersOfValues) {
  using Order = std::vector<int>;
  CSint *v = cs_createCSint(1, 5);
  EXPECT_EQ(orderOfValues(v, value(CS_VALUE_MIN)), (Order{1, 2, 3, 4, 5}));
  EXPECT_EQ(orderOfValues(v, value(CS_VALUE_MAX)), (Order{5, 4, 3, 2, 1}));
  EXPECT_EQ(orderOfValues(v, value(CS_VALUE_MIDDLE)), (Order{3, 2, 4, 1, 5}));
  EXPECT_EQ(orderOfValues(v, value(CS_VALUE_MEDIAN)), (Order{3, 2, 4, 1, 5}));
  EXPECT_EQ(orderOfValues(v, value(CS_VALUE_LOW_HALF)), (Order{1, 2, 3, 4, 5}));
  EXPECT_EQ(orderOfValues(v, value(CS_VALUE_HIGH_HALF)), (Order{5, 4, 3, 2, 1}));
  CSint *holes = fromValues({1, 2, 3, 10, 12});
  EXPECT_EQ(orderOfValues(holes, value(CS_VALUE_MIDDLE)).front(), 3);
  EXPECT_EQ(orderOfValues(fromValues({1, 2, 9, 12}), value(CS_VALUE_MIDDLE)).front(), 9);
  EXPECT_EQ(orderOfValues(holes, value(CS_VALUE_MEDIAN)).front(), 3);
  EXPECT_EQ(orderOfValues(fromValues({0, 7, 9, 11}), value(CS_VALUE_MEDIAN)).front(), 7);
  EXPECT_EQ(orderOfValues(holes, value(CS_VALUE_RANDOM)).size(), 5u);
}

TEST_F(ChooseTest, ByValuesBothWays) {
  using Order = std::vector<int>;
  CSint *v = fromValues({1, 2, 5});
  for (const int kind : {CS_VALUE_MIN, CS_VALUE_MAX}) {
    const Order order = orderOfValues(v, [kind](CSsearchOptions &o) {
      o.value = kind;
      o.branching = CS_BRANCH_VALUES;
    });
    EXPECT_EQ(order, kind == CS_VALUE_MIN ? (Order{1, 2, 5}) : (Order{5, 2, 1}));
  }
}

TEST_F(ChooseTest, ByTheFirstDecisionOfASelector) {
  using Order = std::vector<int>;
  CSint *v = cs_createCSint(1, 5);
  const auto orderOf = [&](CSvalueSelector *selector) {
    return orderOfValues(v, [&](CSsearchOptions &o) {
      o.value = CS_VALUE_SELECTOR;
      o.selectors = &selector;
    });
  };
  EXPECT_EQ(orderOf(cs_getValueSelector(CS_SELECT_DESCENDING)), (Order{5, 4, 3, 2, 1}));
  EXPECT_EQ(orderOf(cs_getValueSelector(CS_SELECT_LOWER_HALF)), (Order{1, 2, 3, 4, 5}));
  EXPECT_EQ(orderOf(cs_getValueSelector(CS_SELECT_MEDIAN)), (Order{3, 2, 4, 1, 5}));
  EXPECT_EQ(orderOf(nullptr), (Order{1, 2, 3, 4, 5}));
  static int ended;
  ended = 0;
  CSvalueSelector last{nullptr,
                       [](CSvalueSelection *r, int index, CSint **array, int, void *) {
                         *r = {CS_METHOD_EQ, cs_getMax(array[index])};
                         return true;
                       },
                       [](int, CSint **, int, void *) { return ++ended > 0; }};
  EXPECT_EQ(orderOf(&last), (Order{5, 4, 3, 2, 1}));
  EXPECT_EQ(ended, 4) << "each choice begins and ends it";
}

// A phase may ask for selectors that the options which are set later do not have.
TEST_F(ChooseTest, WithoutSelectorsTheMinimum) {
  CSint **x = cs_createCSintArray(1, 0, 2);
  CSvalueSelector *selector = cs_getValueSelector(CS_SELECT_DESCENDING);
  CSsearchOptions o{};
  o.size = sizeof o;
  o.selectors = &selector;
  CSsearch *s = cs_createSearch(x, 0);
  ASSERT_TRUE(cs_setSearchOptions(s, &o));
  ASSERT_TRUE(cs_addSearchPhase(s, x, 1, CS_ORDER_INPUT, CS_VALUE_SELECTOR));
  o.selectors = nullptr;
  ASSERT_TRUE(cs_setSearchOptions(s, &o));
  ASSERT_EQ(cs_nextSolution(s), CS_STATUS_SOLUTION);
  EXPECT_EQ(cs_getValue(x[0]), 0);
}

// What propagation changes most comes first: a decision on x[0] changes x[3] and x[4], and again when it is undone.
TEST_F(ChooseTest, TheMostActive) {
  CSint **x = cs_createCSintArray(5, 0, 9);
  ASSERT_TRUE(cs_Le(x[3], cs_Add(x[0], CSINT(5))) && cs_Lt(x[0], x[4]));
  const std::vector<int> order =
      orderOfVariables({x[0], x[1], x[2], x[3], x[4]}, [](CSsearchOptions &o) { o.order = CS_ORDER_ACTIVITY; });
  EXPECT_EQ(order.front(), 0) << "at first all are equal, and x[0] has fewest values";
  EXPECT_EQ(order[1], 3);
}

// A value at random of any domain there can be.
TEST_F(ChooseTest, RandomValuesOfTheWidestDomain) {
  CSint *v = cs_createCSint(INT_MIN, INT_MAX);
  decideOnce({v}, [](CSsearchOptions &o) {
    o.value = CS_VALUE_RANDOM;
    o.seed = 3;
  });
  EXPECT_TRUE(cs_isInstantiated(v));
}

TEST_F(ChooseTest, AHintComesFirst) {
  CSint *v = cs_createCSint(0, 4);
  CSsearch *s = cs_createSearch(&v, 1);
  CSsearchOptions o{};
  o.size = sizeof o;
  o.guided = true;
  ASSERT_TRUE(cs_setSearchOptions(s, &o));
  ASSERT_TRUE(cs_setSearchHint(s, 0, 3));
  EXPECT_EQ(cs_nextSolution(s), CS_STATUS_SOLUTION);
  EXPECT_EQ(cs_getValue(v), 3);
  EXPECT_EQ(cs_nextSolution(s), CS_STATUS_SOLUTION);
  EXPECT_EQ(cs_getValue(v), 0);
}

TEST_F(ChooseTest, WhatTheHostChoosesBadlyIsNotUsed) {
  CSint **x = cs_createCSintArray(3, 0, 2);
  CSsearchOptions o{};
  o.size = sizeof o;
  o.order = CS_ORDER_HOST;
  o.value = CS_VALUE_HOST;
  for (const int choice : {-1, 3, 0}) {
    int position = choice;
    o.extra = &position;
    o.chooseVariable = [](CSint **, int, void *extra) { return *static_cast<int *>(extra); };
    o.chooseValue = [](CSvalueSelection *r, int, CSint **, int, void *) {
      *r = {CS_METHOD_EQ, 77};
      return true;
    };
    CSsearch *s = cs_createSearch(x, 3);
    ASSERT_TRUE(cs_setSearchOptions(s, &o));
    int count = 0;
    while (cs_nextSolution(s) == CS_STATUS_SOLUTION) ++count;
    EXPECT_EQ(count, 27);
    EXPECT_TRUE(cs_freeSearch(s));
  }
}

// Phases may ask for the host's choice when the options that are set later have no callback.
TEST_F(ChooseTest, WithoutACallbackTheFirstVariableAndTheMinimum) {
  CSint **x = cs_createCSintArray(2, 0, 2);
  CSsearchOptions o{};
  o.size = sizeof o;
  o.order = CS_ORDER_HOST;
  o.value = CS_VALUE_HOST;
  o.chooseVariable = [](CSint **, int, void *) { return 1; };
  o.chooseValue = [](CSvalueSelection *, int, CSint **, int, void *) { return false; };
  CSsearch *s = cs_createSearch(x, 0);
  ASSERT_TRUE(cs_setSearchOptions(s, &o));
  ASSERT_TRUE(cs_addSearchPhase(s, x, 2, CS_ORDER_HOST, CS_VALUE_HOST));
  o = {};
  o.size = sizeof o;
  ASSERT_TRUE(cs_setSearchOptions(s, &o));
  ASSERT_EQ(cs_nextSolution(s), CS_STATUS_SOLUTION);
  EXPECT_EQ(cs_getValue(x[0]), 0);
}

}  // namespace
}  // namespace koru::test::solve
