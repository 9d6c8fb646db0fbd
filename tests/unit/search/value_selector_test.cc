// SPDX-License-Identifier: MIT
// Value selectors without a search: the decisions of the built-in ones, the record, and the posting of a decision.
#include <climits>
#include <cstring>
#include <functional>
#include <string>

#include "support/kit/death.h"
#include "support/kit/probe.h"
#include "support/kit/search_trace.h"

namespace {

using namespace koru;
using namespace koru::test;

class ValueSelectorTest : public SolverTest {
 protected:
  // All decisions, separated by commas.
  static std::string decisions(
      int kind, CSint *v, const std::function<void()> &afterStart = [] {}) {
    CSvalueSelector *selector = cs_getValueSelector(kind);
    void *state = nullptr;
    EXPECT_TRUE(cs_initValueSelector(selector, 0, &v, 1, &state));
    afterStart();
    std::string text;
    CSvalueSelection r{};
    for (int i = 0; i < 100 && cs_selectNextValue(&r, selector, 0, &v, 1, &state); ++i)
      text += (text.empty() ? "" : ", ") + decisionText(r);
    EXPECT_FALSE(cs_selectNextValue(&r, selector, 0, &v, 1, &state)) << "nothing follows the end";
    EXPECT_TRUE(cs_endValueSelector(selector, 0, &v, 1, &state));
    return text;
  }
  static std::string decisions(int kind, int min, int max) { return decisions(kind, cs_createCSint(min, max)); }
};

TEST_F(ValueSelectorTest, AscendingProducesEachPresentValueUpwards) {
  EXPECT_EQ(decisions(CS_SELECT_ASCENDING, fromValues({2, 4, 7})), "EQ 2, EQ 4, EQ 7");
  EXPECT_EQ(decisions(CS_SELECT_ASCENDING, -1, 1), "EQ -1, EQ 0, EQ 1");
  EXPECT_EQ(decisions(CS_SELECT_ASCENDING, 5, 5), "EQ 5");
}

TEST_F(ValueSelectorTest, DescendingProducesEachPresentValueDownwards) {
  EXPECT_EQ(decisions(CS_SELECT_DESCENDING, fromValues({2, 4, 7})), "EQ 7, EQ 4, EQ 2");
  EXPECT_EQ(decisions(CS_SELECT_DESCENDING, -1, 1), "EQ 1, EQ 0, EQ -1");
  EXPECT_EQ(decisions(CS_SELECT_DESCENDING, 5, 5), "EQ 5");
}

TEST_F(ValueSelectorTest, LowerHalfSplitsAtTheMiddleOfTheBounds) {
  EXPECT_EQ(decisions(CS_SELECT_LOWER_HALF, 3, 4), "LE 3, GT 3");
  EXPECT_EQ(decisions(CS_SELECT_LOWER_HALF, 3, 10), "LE 6, GT 6");
  EXPECT_EQ(decisions(CS_SELECT_LOWER_HALF, -4, -1), "LE -3, GT -3");
  EXPECT_EQ(decisions(CS_SELECT_LOWER_HALF, fromValues({0, 1, 9})), "LE 4, GT 4");
  EXPECT_EQ(decisions(CS_SELECT_LOWER_HALF, 3, 3), "LE 3") << "nothing is above";
}

TEST_F(ValueSelectorTest, UpperHalfSplitsAboveTheMinimum) {
  EXPECT_EQ(decisions(CS_SELECT_UPPER_HALF, 3, 4), "GE 4, LT 4");
  EXPECT_EQ(decisions(CS_SELECT_UPPER_HALF, 3, 10), "GE 6, LT 6");
  EXPECT_EQ(decisions(CS_SELECT_UPPER_HALF, -4, -1), "GE -3, LT -3");
  EXPECT_EQ(decisions(CS_SELECT_UPPER_HALF, 3, 3), "GE 3") << "nothing is below";
}

TEST_F(ValueSelectorTest, MedianTriesTheMiddleElementThenTheOthers) {
  EXPECT_EQ(decisions(CS_SELECT_MEDIAN, fromValues({1, 3, 8, 9})), "EQ 3, NEQ 3");
  EXPECT_EQ(decisions(CS_SELECT_MEDIAN, fromValues({1, 3, 8})), "EQ 3, NEQ 3");
  EXPECT_EQ(decisions(CS_SELECT_MEDIAN, fromValues({1, 3})), "EQ 1, NEQ 1");
  EXPECT_EQ(decisions(CS_SELECT_MEDIAN, 0, 4), "EQ 2, NEQ 2");
  EXPECT_EQ(decisions(CS_SELECT_MEDIAN, 7, 7), "EQ 7");
}

TEST_F(ValueSelectorTest, DomainsAtTheEndsOfTheIntRangeEnd) {
  EXPECT_EQ(decisions(CS_SELECT_ASCENDING, INT_MAX - 1, INT_MAX), "EQ 2147483646, EQ 2147483647");
  EXPECT_EQ(decisions(CS_SELECT_ASCENDING, INT_MIN, INT_MIN + 1), "EQ -2147483648, EQ -2147483647");
  EXPECT_EQ(decisions(CS_SELECT_DESCENDING, INT_MAX - 1, INT_MAX), "EQ 2147483647, EQ 2147483646");
  EXPECT_EQ(decisions(CS_SELECT_DESCENDING, INT_MIN, INT_MIN + 1), "EQ -2147483647, EQ -2147483648");
}

TEST_F(ValueSelectorTest, ABoundThatMovesAwayFromTheEndAfterTheStartIsNotPassed) {
  for (const int step : {0, 1}) {
    CSint *up = cs_createCSint(INT_MIN + step, 0);
    EXPECT_EQ(decisions(CS_SELECT_ASCENDING, up, [=] { cs_GE(up, -1); }), "EQ -1, EQ 0");
    CSint *down = cs_createCSint(0, INT_MAX - step);
    EXPECT_EQ(decisions(CS_SELECT_DESCENDING, down, [=] { cs_LE(down, 1); }), "EQ 1, EQ 0");
  }
}

// max - min does not fit an int; the count, 0, is below 2.
TEST_F(ValueSelectorTest, TheWholeIntRangeIsSplitWithoutOverflow) {
  EXPECT_EQ(decisions(CS_SELECT_LOWER_HALF, INT_MIN, INT_MAX), "LE -1, GT -1");
  EXPECT_EQ(decisions(CS_SELECT_UPPER_HALF, INT_MIN, INT_MAX), "GE -1, LT -1");
  EXPECT_EQ(decisions(CS_SELECT_MEDIAN, INT_MIN, INT_MAX), "EQ -2147483648");
  EXPECT_EQ(decisions(CS_SELECT_MEDIAN, INT_MIN, -1), "EQ -2147483648") << "a count of INT_MIN";
  EXPECT_EQ(decisions(CS_SELECT_MEDIAN, 1, INT_MAX), "EQ 1073741824, NEQ 1073741824");
}

TEST_F(ValueSelectorTest, TheFiguresAreThoseOfTheDomainAtEachCall) {
  CSint *v = cs_createCSint(0, 9);
  CSvalueSelection r{};
  void *state = nullptr;
  CSvalueSelector *ascending = cs_getValueSelector(CS_SELECT_ASCENDING);
  cs_initValueSelector(ascending, 0, &v, 1, &state);
  ASSERT_TRUE(cs_GE(v, 3) && cs_NEQ(v, 4));
  ASSERT_TRUE(cs_selectNextValue(&r, ascending, 0, &v, 1, &state));
  EXPECT_EQ(decisionText(r), "EQ 3");
  ASSERT_TRUE(cs_selectNextValue(&r, ascending, 0, &v, 1, &state));
  EXPECT_EQ(decisionText(r), "EQ 5");
  ASSERT_TRUE(cs_LE(v, 5));
  EXPECT_FALSE(cs_selectNextValue(&r, ascending, 0, &v, 1, &state));

  CSint *u = cs_createCSint(0, 9);
  CSvalueSelector *descending = cs_getValueSelector(CS_SELECT_DESCENDING);
  cs_initValueSelector(descending, 0, &u, 1, &state);
  ASSERT_TRUE(cs_LE(u, 6) && cs_NEQ(u, 5));
  ASSERT_TRUE(cs_selectNextValue(&r, descending, 0, &u, 1, &state));
  EXPECT_EQ(decisionText(r), "EQ 6");
  ASSERT_TRUE(cs_LE(u, 3));
  ASSERT_TRUE(cs_selectNextValue(&r, descending, 0, &u, 1, &state));
  EXPECT_EQ(decisionText(r), "EQ 3");

  CSint *w = cs_createCSint(0, 9);
  CSvalueSelector *lower = cs_getValueSelector(CS_SELECT_LOWER_HALF);
  cs_initValueSelector(lower, 0, &w, 1, &state);
  ASSERT_TRUE(cs_selectNextValue(&r, lower, 0, &w, 1, &state));
  EXPECT_EQ(decisionText(r), "LE 4");
  ASSERT_TRUE(cs_GE(w, 6));
  ASSERT_TRUE(cs_selectNextValue(&r, lower, 0, &w, 1, &state));
  EXPECT_EQ(decisionText(r), "GT 7");
}

// The count says 3 and one value is left: see cs_getDomain.
TEST_F(ValueSelectorTest, ACountThatIsTooHighLeadsToNoValueAboveTheMaximum) {
  CSint *v = withCountTooHigh();
  EXPECT_EQ(decisions(CS_SELECT_MEDIAN, v), "EQ 0, NEQ 0");
  EXPECT_EQ(decisions(CS_SELECT_ASCENDING, v), "EQ 0");
  EXPECT_EQ(decisions(CS_SELECT_DESCENDING, v), "EQ 0");
  EXPECT_EQ(decisions(CS_SELECT_UPPER_HALF, v), "GE 1, LT 1");
}

TEST_F(ValueSelectorTest, ACursorThatTheCallerHasSpoiledEndsTheDecisions) {
  CSint *v = cs_createCSint(0, 9);
  CSvalueSelection r{};
  for (int state : {-1, 2}) {
    const int cursor = state;
    EXPECT_FALSE(cs_selectNextValue(&r, cs_getValueSelector(CS_SELECT_LOWER_HALF), 0, &v, 1, &state)) << cursor;
  }
}

// Nothing behind the int is written, as in a host's own state.
TEST_F(ValueSelectorTest, TheCursorIsAnInt) {
  CSint *v = cs_createCSint(3, 8);
  CSvalueSelection r{};
  int state[2] = {0, 12345};
  const auto cursor = [&] {
    EXPECT_EQ(state[1], 12345);
    return state[0];
  };
  cs_initValueSelector(cs_getValueSelector(0), 0, &v, 1, state);
  EXPECT_EQ(cursor(), 3);
  cs_selectNextValue(&r, cs_getValueSelector(0), 0, &v, 1, state);
  EXPECT_EQ(cursor(), 4);
  cs_initValueSelector(cs_getValueSelector(1), 0, &v, 1, state);
  EXPECT_EQ(cursor(), 8);
  cs_selectNextValue(&r, cs_getValueSelector(1), 0, &v, 1, state);
  EXPECT_EQ(cursor(), 7);
  for (int kind = 2; kind <= 4; ++kind) {
    cs_initValueSelector(cs_getValueSelector(kind), 0, &v, 1, state);
    EXPECT_EQ(cursor(), 0);
  }
}

TEST_F(ValueSelectorTest, ACursorThatTheCallerSetsAsAnIntIsUnderstood) {
  CSint *v = cs_createCSint(-5, 8);
  CSvalueSelection r{};
  void *word = nullptr;
  for (const int kind : {CS_SELECT_ASCENDING, CS_SELECT_DESCENDING}) {
    cs_initValueSelector(cs_getValueSelector(kind), 0, &v, 1, &word);
    for (const int cursor : {2, -2}) {
      std::memcpy(&word, &cursor, sizeof cursor);
      ASSERT_TRUE(cs_selectNextValue(&r, cs_getValueSelector(kind), 0, &v, 1, &word));
      EXPECT_EQ(r.value, cursor);
    }
  }
}

TEST_F(ValueSelectorTest, ThereAreFiveBuiltInKinds) {
  for (int kind = 0; kind < 5; ++kind) {
    CSvalueSelector *selector = cs_getValueSelector(kind);
    ASSERT_NE(selector, nullptr);
    EXPECT_NE(selector->init, nullptr);
    EXPECT_EQ(selector->end, nullptr);
    EXPECT_EQ(cs_getValueSelector(kind), selector);
  }
  for (const int kind : {-1, 5, INT_MIN, INT_MAX}) EXPECT_EQ(cs_getValueSelector(kind), nullptr);
}

bool yes(int, CSint **, int, void *) { return true; }
bool no(int, CSint **, int, void *) { return false; }
bool seven(CSvalueSelection *r, int, CSint **, int, void *) {
  *r = {CS_METHOD_LT, 7};
  return true;
}
bool none(CSvalueSelection *, int, CSint **, int, void *) { return false; }

TEST_F(ValueSelectorTest, ASelectorOfTheCallersOwnIsCalledThroughItsThreeFunctions) {
  CSint *v = cs_createCSint(0, 9);
  void *state = nullptr;
  CSvalueSelection r{};
  for (const auto function : {yes, no}) {
    CSvalueSelector *selector = cs_createValueSelector(function, seven, function);
    ASSERT_NE(selector, nullptr);
    EXPECT_EQ(cs_initValueSelector(selector, 0, &v, 1, &state), function == yes);
    EXPECT_TRUE(cs_selectNextValue(&r, selector, 0, &v, 1, &state));
    EXPECT_EQ(decisionText(r), "LT 7");
    EXPECT_EQ(cs_endValueSelector(selector, 0, &v, 1, &state), function == yes);
    cs_freeValueSelector(selector);
  }
}

TEST_F(ValueSelectorTest, WithoutInitAndEndASelectorBeginsAndEnds) {
  CSint *v = cs_createCSint(0, 9);
  void *state = nullptr;
  CSvalueSelection r{};
  CSvalueSelector *selector = cs_createValueSelector(nullptr, none, nullptr);
  EXPECT_TRUE(cs_initValueSelector(selector, 0, &v, 1, &state));
  EXPECT_FALSE(cs_selectNextValue(&r, selector, 0, &v, 1, &state));
  EXPECT_TRUE(cs_endValueSelector(selector, 0, &v, 1, &state));
  cs_freeValueSelector(selector);
}

TEST_F(ValueSelectorTest, NullArgumentsAreRefused) {
  CSint *v = cs_createCSint(0, 9);
  CSint *nobody = nullptr;
  void *state = nullptr;
  CSvalueSelection r{};
  EXPECT_FALSE(cs_initValueSelector(nullptr, 0, &v, 1, &state));
  EXPECT_FALSE(cs_selectNextValue(&r, nullptr, 0, &v, 1, &state));
  EXPECT_FALSE(cs_endValueSelector(nullptr, 0, &v, 1, &state));
  CSvalueSelector silent{nullptr, nullptr, nullptr};
  EXPECT_FALSE(cs_selectNextValue(&r, &silent, 0, &v, 1, &state));
  for (int kind = 0; kind < 5; ++kind) {
    CSvalueSelector *selector = cs_getValueSelector(kind);
    EXPECT_FALSE(cs_initValueSelector(selector, 0, nullptr, 1, &state));
    EXPECT_FALSE(cs_initValueSelector(selector, 0, &v, 1, nullptr));
    EXPECT_FALSE(cs_initValueSelector(selector, -1, &v, 1, &state));
    EXPECT_FALSE(cs_selectNextValue(&r, selector, 0, nullptr, 1, &state));
    EXPECT_FALSE(cs_selectNextValue(&r, selector, 0, &v, 1, nullptr));
    EXPECT_FALSE(cs_selectNextValue(&r, selector, 0, &nobody, 1, &state));
    EXPECT_FALSE(cs_selectNextValue(nullptr, selector, 0, &v, 1, &state));
    EXPECT_FALSE(cs_selectNextValue(&r, selector, -1, &v, 1, &state));
  }
  EXPECT_FALSE(cs_selectValue(v, nullptr));
  r = {CS_METHOD_NEQ, 4};
  EXPECT_FALSE(cs_selectValue(nullptr, &r));
}

TEST_F(ValueSelectorTest, FreeingNullOrABuiltInSelectorDoesNothing) {
  cs_freeValueSelector(nullptr);
  for (int kind = 0; kind < 5; ++kind) cs_freeValueSelector(cs_getValueSelector(kind));
  EXPECT_EQ(decisions(CS_SELECT_LOWER_HALF, 3, 4), "LE 3, GT 3");
}

TEST_F(ValueSelectorTest, ASelectorThatCannotBeAllocatedIsReported) {
  {
    const FailingAllocation failing(0);
    EXPECT_EQ(cs_createValueSelector(yes, seven, yes), nullptr);
  }
  EXPECT_EQ(memoryReports, 1);
  EXPECT_EQ(cs_getErr(), CS_ERR_MEMORY);
}

struct DecisionRow {
  CSvalueSelection decision;
  std::vector<int> left;
};

class SelectValueTest : public SolverTest, public ::testing::WithParamInterface<DecisionRow> {};

TEST_P(SelectValueTest, PostsTheComparison) {
  CSint *v = cs_createCSint(0, 4);
  EXPECT_TRUE(cs_selectValue(v, &GetParam().decision));
  EXPECT_EQ(values(v), GetParam().left);
}

INSTANTIATE_TEST_SUITE_P(
    , SelectValueTest,
    ::testing::Values(DecisionRow{{CS_METHOD_EQ, 2}, {2}}, DecisionRow{{CS_METHOD_NEQ, 2}, {0, 1, 3, 4}},
                      DecisionRow{{CS_METHOD_LE, 2}, {0, 1, 2}}, DecisionRow{{CS_METHOD_LT, 2}, {0, 1}},
                      DecisionRow{{CS_METHOD_GE, 2}, {2, 3, 4}}, DecisionRow{{CS_METHOD_GT, 2}, {3, 4}}),
    [](const auto &row) {
      return decisionText(row.param.decision).substr(0, 2) + "_" + std::to_string(row.param.decision.method);
    });

TEST_F(ValueSelectorTest, ADecisionThatIsRefusedIsFalse) {
  CSint *v = cs_createCSint(0, 4);
  for (const CSvalueSelection r : {CSvalueSelection{CS_METHOD_EQ, 5}, CSvalueSelection{CS_METHOD_LT, 0}})
    EXPECT_FALSE(cs_selectValue(v, &r));
}

using ValueSelectorDeathTest = ValueSelectorTest;

TEST_F(ValueSelectorDeathTest, AnUnknownMethodAbortsTheProcess) {
  CSint *v = cs_createCSint(0, 4);
  for (const int method : {-1, 6}) {
    const CSvalueSelection r{method, 2};
    EXPECT_EXIT(cs_selectValue(v, &r), kAborted, "");
  }
}

}  // namespace
