// SPDX-License-Identifier: MIT
// cs_Regular with automata too large for any memory, and with many positions and states.
#include <climits>

#include "core/alloc.h"
#include "support/constraints/automaton.h"
#include "support/kit/solver_test.h"

namespace {

using namespace koru::test;

class RegularLimitsTest : public SolverTest {
 protected:
  // The table is not read: nothing but small arrays can be allocated.
  void expectExhausted(int states, int symbols) {
    koru::allocationHook = [](std::size_t size) { return size < 100000; };
    CSint *x = cs_createCSint(0, 1);
    const int zero = 0;
    memoryReports = 0;
    cs_initErr();
    EXPECT_EQ(cs_Regular(&x, 1, &zero, states, symbols, 0, &zero, 1), 0);
    koru::allocationHook = nullptr;
    EXPECT_EQ(memoryReports, 1) << states << " states, " << symbols << " symbols";
    EXPECT_EQ(cs_getErr(), CS_ERR_MEMORY);
    EXPECT_EQ(cs_getNbConstraints(x), 0);
  }
};

TEST_F(RegularLimitsTest, AutomataOfAnySizeAreRefusedWithoutOverflow) {
  for (const int states : {1, 100000, INT_MAX - 1, INT_MAX})
    for (const int symbols : {1, 100000, INT_MAX - 1, INT_MAX})
      if (states > 1 || symbols > 100000) expectExhausted(states, symbols);
}

// The sum of all symbols modulo the number of states.
TestAutomaton counter(int states, int symbols) {
  TestAutomaton automaton{states, symbols, 0, {}, {states - 1}};
  for (int q = 0; q < states; ++q)
    for (int a = 0; a < symbols; ++a) automaton.table.push_back((q + a) % states);
  return automaton;
}

TEST_F(RegularLimitsTest, ManyPositionsArePostedNarrowedAndTakenBack) {
  constexpr int kMany = 2000;
  CSint **x = cs_createCSintArray(kMany, 0, 1);
  ASSERT_EQ(counter(2, 2).post(x, kMany), 1);
  cs_saveContext();
  for (int i = 1; i < kMany; ++i) ASSERT_TRUE(cs_EQ(x[i], 1));
  EXPECT_EQ(cs_getValue(x[0]), 0);
  cs_restoreContext();
  EXPECT_TRUE(cs_isFree(x[0]));
}

// One symbol at one position cascades through all layers, by the queue and not by the stack.
TEST_F(RegularLimitsTest, ACascadeThroughManyLayersTakesNoStack) {
  constexpr int kMany = 100000;
  CSint **x = cs_createCSintArray(kMany, 0, 1);
  const TestAutomaton same{3, 2, 0, {1, 2, 1, -1, -1, 2}, {1, 2}};
  ASSERT_EQ(same.post(x, kMany), 1);
  ASSERT_TRUE(cs_EQ(x[0], 1));
  EXPECT_EQ(cs_getValue(x[kMany - 1]), 1);
}

}  // namespace
