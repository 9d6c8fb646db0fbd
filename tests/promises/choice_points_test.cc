// SPDX-License-Identifier: MIT
// What sections 2 to 4 of koru.h say of choice points and of domains after unbalanced ones.
#include "core/alloc.h"
#include "core/solver.h"
#include "support/kit/solver_test.h"

namespace {

using namespace koru::test;

class ChoicePoints : public SolverTest {};

// Without 3, which an inner context that was accepted took away; the outer one, restored, has written the count back.
CSint *withHoleUncounted() {
  CSint *v = cs_createCSint(0, 9);
  cs_saveContext();
  EXPECT_TRUE(cs_LE(v, 8));
  cs_saveContext();
  EXPECT_TRUE(cs_NEQ(v, 3));
  cs_acceptContext();
  cs_restoreContext();
  return v;
}

TEST_F(ChoicePoints, TheNumberOfElementsMayBeTooHighAfterAnInnerAcceptAndAnOuterRestore) {
  CSint *v = withHoleUncounted();
  EXPECT_FALSE(cs_isIn(v, 3));
  EXPECT_EQ(cs_getMin(v), 0);
  EXPECT_EQ(cs_getMax(v), 9);
  EXPECT_EQ(cs_getNbElements(v), 10);
  int *domain = cs_getDomain(v);
  EXPECT_EQ(std::vector<int>(domain, domain + 10), (std::vector<int>{0, 1, 2, 4, 5, 6, 7, 8, 9, 9}));
  cs_freeDomain(domain);
}

TEST_F(ChoicePoints, ABoundMayThenBeMovedToNoValueOfTheDomain) {
  CSint *v = withHoleUncounted();
  ASSERT_TRUE(cs_GE(v, 3));
  EXPECT_EQ(cs_getMin(v), 3);
  EXPECT_FALSE(cs_isIn(v, 3));
  EXPECT_FALSE(cs_EQ(v, 3)) << "it is still none of its values";
  EXPECT_TRUE(cs_EQ(v, 4));
}

TEST_F(ChoicePoints, WithoutMemoryNoneIsOpenedAndTheNumberOpenReturned) {
  CSint *v = cs_createCSint(0, 9);
  int label = cs_saveContext();
  while (label % 1024 != 0) label = cs_saveContext();
  ASSERT_TRUE(cs_LE(v, 5));
  koru::allocationHook = [](std::size_t) { return false; };
  EXPECT_EQ(cs_saveContext(), label);
  koru::allocationHook = nullptr;
  EXPECT_EQ(cs_getErr(), CS_ERR_MEMORY);
  EXPECT_EQ(memoryReports, 1);
  cs_restoreContext();
  EXPECT_EQ(cs_getMax(v), 9) << "the restore closed the context that was open before";
  EXPECT_EQ(cs_saveContext(), label);
}

// Asks for the impossible, which is queued, and lets the context that it opens find that out.
bool askAndOpen(CSint **array, int, void *) {
  const bool asked = cs_GE(array[1], 5);
  cs_saveContext();
  cs_restoreContext();
  return asked;
}

TEST_F(ChoicePoints, WhatFailsAsAContextIsOpenedFailsThePropagationThatHadQueuedIt) {
  CSint *x[] = {cs_createCSint(0, 9), cs_createCSint(0, 9)};
  cs_eventNewMin(
      &x[1], 1, [](CSint *, int, int, CSint **, int, void *) { return false; }, nullptr);
  ASSERT_TRUE(cs_eventAllKnown(x, 1, askAndOpen, nullptr));
  EXPECT_FALSE(cs_EQ(x[0], 1));
}

}  // namespace
