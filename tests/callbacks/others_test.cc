// SPDX-License-Identifier: MIT
// What selection functions, solution callbacks, undo callbacks, error handlers and the locator may do.
#include <string>
#include <vector>

#include "callbacks/hooks.h"
#include "core/solver.h"
#include "support/kit/failing_allocations.h"

namespace koru::test {
namespace {

int calls = 0;
std::vector<int> seen;

class CallbackTest : public SolverTest {
 protected:
  void SetUp() override {
    SolverTest::SetUp();
    calls = 0;
    seen.clear();
  }
};

// ----- search

CSint *selectAfterDoingEverything(CSint **array, int size) {
  ++calls;
  doEverything();
  return cs_findFreeVar(array, size);
}

TEST_F(CallbackTest, ASelectionFunctionMayDoEverythingTheSearchedVariablesAllow) {
  CSint *x[2] = {cs_createCSint(0, 1), cs_createCSint(0, 1)};
  ASSERT_TRUE(cs_Neq(x[0], x[1]));
  EXPECT_TRUE(cs_search(x, 2, selectAfterDoingEverything));
  EXPECT_EQ(calls, 2) << "the first level, and the second where all is bound";
  EXPECT_EQ(cs_getValue(x[0]), 0);
  EXPECT_EQ(cs_getValue(x[1]), 1);
}

void foundDoesEverything(CSint **array, int size) {
  ++calls;
  for (int i = 0; i < size; ++i) seen.push_back(cs_getValue(array[i]));
  doEverything();
}

TEST_F(CallbackTest, ASolutionCallbackMayDoEverythingAndTheSearchGoesOn) {
  CSint *x[2] = {cs_createCSint(0, 2), cs_createCSint(0, 2)};
  ASSERT_TRUE(cs_Lt(x[0], x[1]));
  EXPECT_TRUE(cs_findAll(x, 2, cs_findFreeVar, foundDoesEverything));
  EXPECT_EQ(calls, 3);
  EXPECT_EQ(seen, (std::vector<int>{0, 1, 0, 2, 1, 2}));
  EXPECT_EQ(solver::contexts.count(), 0);
  EXPECT_EQ(cs_getMax(x[0]), 1);
}

void foundCancels(CSint **, int) {
  if (++calls == 2) cs_cancelSearch();
}

TEST_F(CallbackTest, ASolutionCallbackMayCancelTheSearch) {
  CSint *x[2] = {cs_createCSint(0, 9), cs_createCSint(0, 9)};
  const int label = cs_saveContext();
  EXPECT_TRUE(cs_findAll(x, 2, cs_findFreeVar, foundCancels));
  EXPECT_EQ(calls, 2);
  cs_restoreContextUntil(label);
  EXPECT_EQ(solver::contexts.count(), 0);
  EXPECT_EQ(cs_getNbElements(x[0]), 10);
}

CSint *selectCancels(CSint **array, int size) {
  if (++calls == 2) cs_cancelSearch();
  return cs_findFreeVar(array, size);
}

TEST_F(CallbackTest, ASelectionFunctionMayCancelTheSearch) {
  CSint *x[3] = {cs_createCSint(0, 9), cs_createCSint(0, 9), cs_createCSint(0, 9)};
  const int label = cs_saveContext();
  EXPECT_FALSE(cs_search(x, 3, selectCancels));
  EXPECT_EQ(calls, 2);
  cs_restoreContextUntil(label);
  EXPECT_EQ(cs_getNbElements(x[0]), 10);
}

TEST_F(CallbackTest, AHandlerMayCancelTheSearch) {
  CSint *x[2] = {cs_createCSint(0, 9), cs_createCSint(0, 9)};
  hook(x[0], [](CSint *) {
    cs_cancelSearch();
    return true;
  });
  const int label = cs_saveContext();
  EXPECT_FALSE(cs_search(x, 2, cs_findFreeVar));
  EXPECT_EQ(cs_getNbChoicePoints(), 3) << "x0 = 0, then one value noticed as cancelled on either level";
  cs_restoreContextUntil(label);
}

// ----- undo

CSint *watched = nullptr;

void undoDoesEverything(CSint *v, int index) {
  ++calls;
  EXPECT_EQ(v, watched);
  EXPECT_EQ(index, 7);
  EXPECT_EQ(cs_getNbElements(v), 8) << "later changes are undone, earlier ones not yet";
  doEverything();
}

TEST_F(CallbackTest, AnUndoCallbackMayDoEverything) {
  watched = cs_createCSint(0, 9);
  cs_saveContext();
  cs_GE(watched, 2);
  cs_backtrack(watched, 7, undoDoesEverything);
  cs_GE(watched, 5);
  cs_restoreContext();
  EXPECT_EQ(calls, 1);
  EXPECT_EQ(cs_getNbElements(watched), 10);
  EXPECT_EQ(solver::contexts.count(), 0);
}

void undoNarrows(CSint *v, int index) {
  ++calls;
  EXPECT_TRUE(cs_LE(v, index));
}

TEST_F(CallbackTest, WhatAnUndoCallbackNarrowsIsUndoneByTheSameRestore) {
  CSint *v = cs_createCSint(0, 9);
  CSint *w = cs_createCSint(0, 9);
  ASSERT_TRUE(cs_Le(w, v));
  cs_saveContext();
  cs_backtrack(v, 4, undoNarrows);
  cs_GE(v, 3);
  cs_restoreContext();
  EXPECT_EQ(calls, 1);
  EXPECT_EQ(values(v), values(w));
  EXPECT_EQ(cs_getNbElements(v), 10);
}

void note(CSint *, int index) { seen.push_back(index); }

void registersAnother(CSint *v, int index) {
  seen.push_back(index);
  if (index > 0) cs_backtrackExt(v, index - 1, registersAnother);
}

TEST_F(CallbackTest, AnUndoCallbackMayRegisterAnotherWhichTheSameRestoreCalls) {
  CSint *v = cs_createCSint(0, 9);
  cs_saveContext();
  cs_backtrack(v, 100, note);
  cs_backtrack(v, 3, registersAnother);
  cs_backtrack(v, 200, note);
  cs_restoreContext();
  EXPECT_EQ(seen, (std::vector<int>{200, 3, 2, 1, 0, 100}));
  EXPECT_EQ(solver::trail.count(), 0);
}

void undoSavesAndSearches(CSint *v, int) {
  ++calls;
  const int label = cs_saveContext();
  EXPECT_EQ(label, 1) << "the context being restored is closed already";
  EXPECT_TRUE(cs_EQ(v, cs_getMax(v)));
  cs_restoreContextUntil(label);
}

TEST_F(CallbackTest, AnUndoCallbackMaySaveAndRestoreInBalance) {
  CSint *v = cs_createCSint(0, 9);
  cs_saveContext();
  cs_LE(v, 8);
  cs_backtrack(v, 0, undoSavesAndSearches);
  cs_NEQ(v, 5);
  cs_backtrackExt(v, 0, undoSavesAndSearches);
  cs_restoreContext();
  EXPECT_EQ(calls, 2);
  EXPECT_EQ(cs_getNbElements(v), 10);
}

// ----- error handlers

void queriesOnReport(CSint *v, void *extra) {
  ++calls;
  EXPECT_EQ(v, nullptr);
  EXPECT_EQ(cs_getErr(), CS_ERR_MEMORY) << "the code is set before the call";
  auto *x = static_cast<CSint *>(extra);
  EXPECT_EQ(cs_getMin(x), 0);
  EXPECT_TRUE(cs_isIn(x, 5)) << "the removal has not happened";
  EXPECT_EQ(cs_getNextValue(x, 4), 5);
}

TEST_F(CallbackTest, AMemoryHandlerMayQuery) {
  CSint *x = cs_createCSint(0, 9);
  cs_setErrHandler(CS_ERR_MEMORY, queriesOnReport, x);
  const FailingAllocator failing(0, Failing::kForEver);
  EXPECT_FALSE(cs_NEQ(x, 5));
  EXPECT_EQ(calls, 1);
}

void worksOnReport(CSint *, void *) {
  ++calls;
  doEverything();
  cs_initErr();
}

TEST_F(CallbackTest, AMemoryHandlerThatFindsMemoryAgainMayDoEverything) {
  CSint *x = cs_createCSint(0, 9);
  CSint *y = cs_createCSint(0, 9);
  cs_setErrHandler(CS_ERR_MEMORY, worksOnReport, nullptr);
  int k = 0;
  for (bool failed = true; failed; ++k) {
    SCOPED_TRACE("allocation " + std::to_string(k));
    calls = 0;
    const int label = cs_saveContext();
    bool result = false;
    {
      const FailingAllocator failing(k, Failing::kOnce);
      result = cs_NEQ(x, 5) && cs_Le(x, y) && cs_VAdd(2, x, y) != nullptr;
    }
    failed = FailingAllocator::failures() > 0;
    EXPECT_EQ(calls, failed ? 1 : 0);
    EXPECT_EQ(result, !failed);
    cs_restoreContextUntil(label);
    EXPECT_EQ(cs_getNbElements(x), 10);
  }
  EXPECT_GT(k, 8);
}

void instantiates(CSint *v, void *) {
  ++calls;
  EXPECT_EQ(cs_getErr(), CS_ERR_NOT_INSTANTIATED);
  EXPECT_TRUE(cs_EQ(v, 6));
  doEverything();
}

TEST_F(CallbackTest, AHandlerThatInstantiatesTheVariableGivesCsGetValueTheNewMinimum) {
  CSint *x = cs_createCSint(0, 9);
  cs_setErrHandler(CS_ERR_NOT_INSTANTIATED, instantiates, nullptr);
  EXPECT_EQ(cs_getValue(x), 6);
  EXPECT_EQ(calls, 1);
  EXPECT_EQ(cs_getValue(x), 6);
  EXPECT_EQ(calls, 1) << "instantiated by now";
}

// ----- the locator

CSint *postedByLocator = nullptr;

// A locator that uses the solver calls itself; it stops at the second level.
const char *busyLocator(void *) {
  static bool inside = false;
  if (inside) return nullptr;
  inside = true;
  ++calls;
  doEverything();
  postedByLocator = cs_VAdd(2, cs_createCSint(0, 1), cs_createCSint(0, 1));
  inside = false;
  return "here";
}

TEST_F(CallbackTest, ALocatorMayDoEverythingAndIsAskedOncePerPosting) {
  CSint *x = cs_createCSint(0, 9);
  CSint *y = cs_createCSint(0, 9);
  solver::ports.locator.text = busyLocator;
  EXPECT_TRUE(cs_Lt(x, y));
  EXPECT_EQ(calls, 1);
  EXPECT_STREQ(x->constraints->constraint->site->text(), "here");
  EXPECT_STREQ(postedByLocator->constraints->constraint->site->text(), "");
  EXPECT_TRUE(cs_EQ(x, 4));
  EXPECT_EQ(cs_getMin(y), 5);
  EXPECT_EQ(calls, 1) << "not asked when the constraint runs";
}

}  // namespace
}  // namespace koru::test
