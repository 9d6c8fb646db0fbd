// SPDX-License-Identifier: MIT
// The fixture of the search tests: variables x and y, values of y refused on demand, and a selection that counts.
#pragma once

#include <functional>
#include <vector>

#include "core/alloc.h"
#include "core/solver.h"
#include "support/kit/refuser.h"
#include "support/kit/solver_test.h"

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
  static int openContexts() { return solver::contexts.count(); }

  // Opens contexts until there is room for so many more before memory is needed.
  static void leaveRoomForContexts(int room) {
    while (openContexts() < BlockStack<ContextMark>::kCapacity - room) cs_saveContext();
  }

  // The search cannot open its first context: it reports that once, finds nothing, counts nothing and leaves the
  // caller's contexts open; with memory it succeeds.
  template <class Search>
  void expectFailureWithoutAContext(const Search &search) {
    leaveRoomForContexts(0);
    const int contexts = openContexts();
    allocationHook = [](std::size_t) { return false; };
    EXPECT_FALSE(search());
    allocationHook = nullptr;
    EXPECT_EQ(memoryReports, 1);
    EXPECT_EQ(cs_getErr(), CS_ERR_MEMORY);
    EXPECT_EQ(openContexts(), contexts);
    expectCounters(0, 0);
    EXPECT_TRUE(search());
  }

  // The context of y's level below x = 0 cannot be opened, once: that branch fails, the one of x = 1 does not.
  template <class Search>
  void expectTheBranchWithoutAContextToFail(const Search &search) {
    leaveRoomForContexts(1);
    allocationHook = [](std::size_t) {
      allocationHook = nullptr;
      return false;
    };
    EXPECT_TRUE(search());
    EXPECT_EQ(allocationHook, nullptr);
    EXPECT_EQ(memoryReports, 1);
  }

  static inline int selections = 0;
  static inline std::function<void(int)> onSelection;
  static inline std::function<void(const std::vector<int> &)> onFound;

  CSint *xy[2] = {};
  std::function<bool(int)> accepts;
};

inline bool never(int) { return false; }

}  // namespace koru::test
