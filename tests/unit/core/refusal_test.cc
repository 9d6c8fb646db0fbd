// SPDX-License-Identifier: MIT
// cs_getNbRefused: which calls count, when, and what a restored context gives back.
#include "core/refusal.h"

#include <climits>
#include <functional>
#include <string>
#include <vector>

#include "core/solver.h"
#include "koru_extras.h"
#include "support/kit/solver_test.h"

namespace {

using namespace koru;
using namespace koru::test;

using RefusalTest = SolverTest;

// A call that is refused, whatever the state.
struct RefusedCall {
  const char *name;
  std::function<void()> make;
};

bool known(int, int, CSint **, int, void *) { return false; }
bool allKnown(CSint **, int, void *) { return false; }

std::vector<RefusedCall> relations() {
  return {{"cs_EQ", [] { cs_EQ(CSINT(1), 2); }},
          {"cs_NEQ", [] { cs_NEQ(CSINT(1), 1); }},
          {"cs_LE", [] { cs_LE(CSINT(1), 0); }},
          {"cs_LT", [] { cs_LT(CSINT(1), 1); }},
          {"cs_GE", [] { cs_GE(CSINT(1), 2); }},
          {"cs_GT", [] { cs_GT(CSINT(1), 1); }},
          {"cs_Eq", [] { cs_Eq(CSINT(1), CSINT(2)); }},
          {"cs_Neq", [] { cs_Neq(CSINT(1), CSINT(1)); }},
          {"cs_Le", [] { cs_Le(CSINT(2), CSINT(1)); }},
          {"cs_Lt", [] { cs_Lt(CSINT(1), CSINT(1)); }},
          {"cs_Ge", [] { cs_Ge(CSINT(1), CSINT(2)); }},
          {"cs_Gt", [] { cs_Gt(CSINT(1), CSINT(1)); }},
          {"cs_IfEq", [] { cs_IfEq(CSINT(1), CSINT(1), 1, 2); }},
          {"cs_IfNeq", [] { cs_IfNeq(CSINT(1), CSINT(2), 1, 2); }},
          {"cs_InArray", [] { cs_InArray(cs_createCSint(0, 9), nullptr, 1); }},
          {"cs_InArray of others",
           [] {
             const int others[] = {0, 5};
             cs_InArray(CSINT(2), others, 2);
           }},
          {"cs_NotInArray",
           [] {
             const int all[] = {0, 1};
             cs_NotInArray(cs_createCSint(0, 1), all, 2);
           }},
          {"cs_InInterval", [] { cs_InInterval(CSINT(0), 1, 2); }},
          {"cs_NotInInterval", [] { cs_NotInInterval(cs_createCSint(3, 4), 0, 9); }},
          {"cs_selectValue", [] { cs_selectValue(CSINT(0), nullptr); }},
          {"cs_selectValue of a relation", [] {
             const CSvalueSelection decision{CS_METHOD_GT, 5};
             cs_selectValue(CSINT(0), &decision);
           }}};
}

std::vector<RefusedCall> results() {
  return {{"cs_Add", [] { cs_Add(nullptr, CSINT(1)); }},
          {"cs_Sub", [] { cs_Sub(CSINT(1), nullptr); }},
          {"cs_Mul", [] { cs_Mul(CSINT(1), nullptr); }},
          {"cs_Div", [] { cs_Div(CSINT(1), CSINT(2)); }},
          {"cs_Abs", [] { cs_Abs(nullptr); }},
          {"cs_VAdd", [] { cs_VAdd(2, CSINT(1), nullptr); }},
          {"cs_VSub", [] { cs_VSub(2, CSINT(1), nullptr); }},
          {"cs_VMul", [] { cs_VMul(2, CSINT(1), nullptr); }},
          {"cs_VDiv", [] { cs_VDiv(2, CSINT(1), nullptr); }},
          {"cs_Sigma", [] { cs_Sigma(nullptr, 1); }},
          {"cs_ScalProd", [] { cs_ScalProd(nullptr, nullptr, 1); }},
          {"cs_VScalProd", [] { cs_VScalProd(1, nullptr, 1); }},
          {"cs_ReifEq", [] { cs_ReifEq(nullptr, CSINT(1)); }},
          {"cs_ReifNeq", [] { cs_ReifNeq(nullptr, CSINT(1)); }},
          {"cs_ReifLe", [] { cs_ReifLe(nullptr, CSINT(1)); }},
          {"cs_ReifLt", [] { cs_ReifLt(nullptr, CSINT(1)); }},
          {"cs_ReifGe", [] { cs_ReifGe(nullptr, CSINT(1)); }},
          {"cs_ReifGt", [] { cs_ReifGt(nullptr, CSINT(1)); }},
          {"cs_ReifEQ", [] { cs_ReifEQ(nullptr, 1); }},
          {"cs_ReifNEQ", [] { cs_ReifNEQ(nullptr, 1); }},
          {"cs_ReifLE", [] { cs_ReifLE(nullptr, 1); }},
          {"cs_ReifLT", [] { cs_ReifLT(nullptr, 1); }},
          {"cs_ReifGE", [] { cs_ReifGE(nullptr, 1); }},
          {"cs_ReifGT", [] { cs_ReifGT(nullptr, 1); }},
          {"cs_Min", [] { cs_Min(nullptr, 1); }},
          {"cs_Max", [] { cs_Max(nullptr, 1); }},
          {"cs_VMin", [] { cs_VMin(1, nullptr); }},
          {"cs_VMax", [] { cs_VMax(1, nullptr); }},
          {"cs_Element", [] { cs_Element(nullptr, nullptr, 1); }},
          {"cs_VarElement", [] { cs_VarElement(nullptr, nullptr, 1); }},
          {"cs_VarElementRange", [] { cs_VarElementRange(nullptr, nullptr, 1); }},
          {"cs_Index", [] { cs_Index(nullptr, 1, 1); }},
          {"cs_OccurDomain", [] { cs_OccurDomain(1, nullptr, 1); }}};
}

std::vector<RefusedCall> overArrays() {
  return {{"cs_AllNeq", [] { cs_AllNeq(nullptr, 2); }},
          {"cs_Occur", [] { cs_Occur(nullptr, 1, nullptr, 1); }},
          {"cs_OccurConstraints", [] { cs_OccurConstraints(nullptr, 1, nullptr, 1); }},
          {"cs_Regular", [] { cs_Regular(nullptr, 1, nullptr, 1, 1, 0, nullptr, 0); }},
          {"cs_Cumulative", [] { cs_Cumulative(nullptr, nullptr, nullptr, 1, nullptr); }},
          {"cs_Disjunctive", [] { cs_Disjunctive(nullptr, nullptr, 1); }},
          {"cs_createNoGoodSet", [] { cs_createNoGoodSet(nullptr, 1, nullptr, 1, nullptr, nullptr); }},
          {"cs_eventAllKnown", [] { cs_eventAllKnown(nullptr, 0, allKnown, nullptr); }},
          {"cs_eventKnown",
           [] {
             CSint *one = CSINT(1);
             cs_eventKnown(&one, 1, known, nullptr);
           }},
          {"cs_eventNewMin", [] { cs_eventNewMin(nullptr, 1, nullptr, nullptr); }},
          {"cs_eventNewMax", [] { cs_eventNewMax(nullptr, 1, nullptr, nullptr); }},
          {"cs_eventNeq", [] { cs_eventNeq(nullptr, 1, nullptr, nullptr); }},
          {"cs_eventConflict", [] { cs_eventConflict(nullptr, 1, nullptr, nullptr); }}};
}

TEST_F(RefusalTest, EachDoorCountsARefusalOnce) {
  int expected = 0;
  for (const auto &calls : {relations(), results(), overArrays()}) {
    for (const RefusedCall &call : calls) {
      call.make();
      EXPECT_EQ(cs_getNbRefused(), ++expected) << call.name;
    }
  }
}

TEST_F(RefusalTest, WhatIsAcceptedDoesNotCount) {
  CSint *x = cs_createCSint(0, 9);
  CSint *y = cs_createCSint(0, 9);
  CSint *both[] = {x, y};
  EXPECT_TRUE(cs_EQ(cs_Add(x, y), 9) && cs_Neq(x, y) && cs_AllNeq(both, 2) && cs_NotInInterval(x, 2, 3));
  EXPECT_TRUE(cs_search(both, 2, cs_findFreeVar));
  EXPECT_EQ(cs_getNbRefused(), 0);
}

TEST_F(RefusalTest, ARestoredContextTakesItsRefusalsAway) {
  EXPECT_FALSE(cs_EQ(CSINT(1), 2));
  cs_saveContext();
  EXPECT_FALSE(cs_EQ(CSINT(1), 2));
  cs_saveContext();
  EXPECT_FALSE(cs_EQ(CSINT(1), 2));
  EXPECT_EQ(cs_getNbRefused(), 3);
  cs_restoreContext();
  EXPECT_EQ(cs_getNbRefused(), 2);
  cs_restoreContext();
  EXPECT_EQ(cs_getNbRefused(), 1);
}

TEST_F(RefusalTest, AnAcceptedOrForgottenContextLeavesThem) {
  cs_saveContext();
  for (const auto close : {cs_acceptContext, cs_forgetSaveContext}) {
    cs_saveContext();
    EXPECT_FALSE(cs_EQ(CSINT(1), 2));
    close();
  }
  EXPECT_EQ(cs_getNbRefused(), 2);
  cs_restoreAll();
  EXPECT_EQ(cs_getNbRefused(), 0);
}

// Three variables over two values never differ; over three values they do, and are told to somebody who asks for what
// cannot be.
TEST_F(RefusalTest, SearchesAndWhatTheyCallDoNotCount) {
  CSint *two[] = {cs_createCSint(0, 1), cs_createCSint(0, 1), cs_createCSint(0, 1)};
  EXPECT_TRUE(cs_Neq(two[0], two[1]) && cs_Neq(two[0], two[2]) && cs_Neq(two[1], two[2]));
  EXPECT_FALSE(cs_findAll(two, 3, cs_findFreeVar, nullptr));
  EXPECT_GT(cs_getNbFails(), 0);
  CSint *v[] = {cs_createCSint(0, 2), cs_createCSint(0, 2), cs_createCSint(0, 2)};
  const auto refuse = [](CSint **, int) { EXPECT_FALSE(cs_EQ(CSINT(1), 2)); };
  EXPECT_TRUE(cs_AllNeq(v, 3));
  EXPECT_TRUE(cs_findAll(v, 3, cs_findFreeVar, refuse));
  CSvalueSelector *ascending = cs_getValueSelector(CS_SELECT_ASCENDING);
  CSvalueSelector *selectors[] = {ascending, ascending, ascending};
  const auto first = [](CSint **array, int size) {
    for (int i = 0; i < size; ++i)
      if (cs_isFree(array[i])) return i;
    return -1;
  };
  EXPECT_TRUE(cs_searchValueSelectorFail(v, selectors, 3, first, 0, nullptr));
  EXPECT_EQ(cs_getNbRefused(), 0);
}

TEST_F(RefusalTest, HandlersDoNotCountButTheCallThatTheyRefuse) {
  CSint *x = cs_createCSint(0, 9);
  const auto refuse = [](int, int, CSint **, int, void *) { return cs_EQ(CSINT(1), 2) && cs_EQ(nullptr, 1); };
  EXPECT_TRUE(cs_eventKnown(&x, 1, refuse, nullptr));
  EXPECT_FALSE(cs_EQ(x, 3));
  EXPECT_EQ(cs_getNbRefused(), 1);
  EXPECT_FALSE(cs_eventKnown(&x, 1, refuse, nullptr)) << "called at once";
  EXPECT_EQ(cs_getNbRefused(), 2);
}

TEST_F(RefusalTest, UndoingDoesNotCount) {
  cs_saveContext();
  cs_backtrack(nullptr, 0, [](CSint *, int) { EXPECT_FALSE(cs_EQ(nullptr, 0)); });
  cs_restoreContext();
  EXPECT_EQ(cs_getNbRefused(), 0);
}

TEST_F(RefusalTest, ASolverBeginsWithoutRefusals) {
  EXPECT_FALSE(cs_EQ(nullptr, 0));
  cs_end();
  EXPECT_EQ(cs_getNbRefused(), 0);
  EXPECT_FALSE(cs_EQ(nullptr, 0));
  EXPECT_EQ(cs_getNbRefused(), 1) << "there is no solver";
  cs_init();
  EXPECT_EQ(cs_getNbRefused(), 0);
}

}  // namespace
