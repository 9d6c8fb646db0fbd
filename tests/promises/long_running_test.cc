// SPDX-License-Identifier: MIT
// What docs/search.md says of programs that solve again and again: what stays behind, and two ways that leave nothing.
#include <functional>

#include "core/alloc.h"
#include "core/solver.h"
#include "support/kit/solver_test.h"

namespace {

using namespace koru;
using namespace koru::test;

constexpr int kQueens = 8;

// Constraints keep the arrays. A column for each row, and sums and differences of both.
CSint *columns[kQueens];
CSint *sums[kQueens];
CSint *differences[kQueens];

bool postQueens() {
  for (int i = 0; i < kQueens; ++i) {
    columns[i] = cs_createCSint(0, kQueens - 1);
    CSint *row = CSINT(i);
    sums[i] = cs_Add(columns[i], row);
    differences[i] = cs_Sub(columns[i], row);
  }
  return cs_AllNeq(columns, kQueens) == 1 && cs_AllNeq(sums, kQueens) == 1 && cs_AllNeq(differences, kQueens) == 1;
}

// With the first queen in a column that changes from problem to problem.
bool solveQueens(int problem) {
  return cs_EQ(columns[0], problem % kQueens) && cs_search(columns, kQueens, cs_findFreeVarNbElements);
}

void solveInContext(int problem, bool postAnew) {
  const int label = cs_saveContext();
  EXPECT_TRUE(!postAnew || postQueens());
  EXPECT_TRUE(solveQueens(problem));
  cs_restoreContextUntil(label);
}

// The blocks of memory that are held after the last problem, as many as after the same problem early on.
void expectFlat(int count, const std::function<void(int)> &solve) {
  long before = 0;
  for (int k = 0; k < count; ++k) {
    solve(k);
    if (k == 13 * kQueens - 1) before = blocksAlive;
  }
  EXPECT_EQ(blocksAlive, before);
}

class LongRunning : public SolverTest {};

TEST_F(LongRunning, AModelPostedAnewLeavesItsVariablesBehind) {
  for (int k = 0; k < 10; ++k) {
    const int variables = solver::variables.count();
    solveInContext(k, true);
    EXPECT_EQ(solver::variables.count() - variables, 4 * kQueens);
  }
}

TEST_F(LongRunning, AModelPostedOnceStaysFlat) {
  ASSERT_TRUE(postQueens());
  expectFlat(2000, [](int k) { solveInContext(k, false); });
}

TEST_F(LongRunning, ASolverForEachProblemStaysFlat) {
  expectFlat(2000, [](int k) {
    cs_end();
    cs_init();
    solveInContext(k, true);
  });
}

TEST_F(LongRunning, HeavyBothStayFlatOverAHundredThousandSolves) {
  ASSERT_TRUE(postQueens());
  expectFlat(100000, [](int k) { solveInContext(k, false); });
  expectFlat(100000, [](int k) {
    cs_end();
    cs_init();
    solveInContext(k, true);
  });
}

}  // namespace
