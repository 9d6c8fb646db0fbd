// SPDX-License-Identifier: MIT
// The fixture of tests over large arrays: walking all variables after every change would make them quadratic.
#pragma once

#include "core/solver.h"
#include "support/kit/solver_test.h"

namespace koru::test {

class LargeTest : public SolverTest {
 protected:
  void SetUp() override {
    SolverTest::SetUp();
    solver::checked.period = solver::checked.untilNext = 20000;
  }
  void TearDown() override {
    SolverTest::TearDown();
    solver::checked.period = solver::checked.untilNext = 1;
  }

  static constexpr int kMany = 100000;
};

}  // namespace koru::test
