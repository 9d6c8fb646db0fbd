// SPDX-License-Identifier: MIT
// The fixture of the search tests: variables x and y, values of y refused on demand, and a selection that counts.
#pragma once

#include <functional>
#include <vector>

#include "core/solver.h"
#include "support/brute_refuser.h"
#include "support/solver_test.h"

namespace koru::test {

class SearchTest : public SolverTest {
 protected:
  void SetUp() override {
    SolverTest::SetUp();
    selections = 0;
    onSelection = nullptr;
    onFound = nullptr;
  }

  // The first variable that is not bound, after telling the test which call this is, counted from 1.
  static CSint *select(CSint **array, int size) {
    ++selections;
    if (onSelection) onSelection(selections);
    return cs_findFreeVar(array, size);
  }

  static void found(CSint **array, int size) {
    std::vector<int> solution;
    for (int i = 0; i < size; ++i) solution.push_back(cs_getValue(array[i]));
    if (onFound) onFound(solution);
  }

  void makeXy(int xSize, int ySize) {
    xy[0] = cs_createCSint(0, xSize - 1);
    xy[1] = cs_createCSint(0, ySize - 1);
  }
  void refuseY(std::function<bool(int)> accept) {
    accepts = std::move(accept);
    ASSERT_TRUE(postRefuser(xy[1], accepts));
  }

  void expectCounters(int choicePoints, int fails) const {
    EXPECT_EQ(cs_getNbChoicePoints(), choicePoints);
    EXPECT_EQ(cs_getNbFails(), fails);
  }
  static int openContexts() { return solver.contexts.count(); }

  static inline int selections = 0;
  static inline std::function<void(int)> onSelection;
  static inline std::function<void(const std::vector<int> &)> onFound;

  CSint *xy[2] = {};
  std::function<bool(int)> accepts;
};

inline bool never(int) { return false; }

}  // namespace koru::test
