// SPDX-License-Identifier: MIT
// The transitions of an automaton, by source and by target.
#include "constraints/global/transitions.h"

#include <climits>
#include <utility>
#include <vector>

#include "support/kit/probe.h"

namespace {

using namespace koru;
using namespace koru::test;
using namespace koru::regular;

using TransitionsTest = SolverTest;

Automaton automaton(const std::vector<int> &table, int states, int symbols) {
  return {table.data(), states, symbols, 0, nullptr, 0};
}

std::vector<std::pair<int, int>> arcsInto(const Transitions &transitions, int t) {
  std::vector<std::pair<int, int>> result;
  for (int i = transitions.arcsInto(t); i < transitions.arcsInto(t + 1); ++i)
    result.emplace_back(transitions.arc(i).symbol, transitions.arc(i).source);
  return result;
}

TEST_F(TransitionsTest, TargetsAreStatesOrNone) {
  const Transitions transitions(automaton({0, 1, 2, -7, 1, INT_MAX}, 2, 3));
  ASSERT_TRUE(transitions);
  EXPECT_EQ(std::vector(transitions.row(0), transitions.row(0) + 3), (std::vector{0, 1, -1}));
  EXPECT_EQ(std::vector(transitions.row(1), transitions.row(1) + 3), (std::vector{-1, 1, -1}));
  EXPECT_EQ(transitions.target(1, 1), 1);
}

TEST_F(TransitionsTest, TheTableIsACopy) {
  std::vector<int> table{0, 0};
  const Transitions transitions(automaton(table, 1, 2));
  table = {-1, -1};
  EXPECT_EQ(transitions.target(0, 1), 0);
}

TEST_F(TransitionsTest, ArcsAreSortedBySourceAndThenBySymbol) {
  const Transitions transitions(automaton({2, 0, 2, -1, -1, -1, 0, 2, 2}, 3, 3));
  EXPECT_EQ(arcsInto(transitions, 0), (std::vector<std::pair<int, int>>{{1, 0}, {0, 2}}));
  EXPECT_EQ(arcsInto(transitions, 1), (std::vector<std::pair<int, int>>{}));
  EXPECT_EQ(arcsInto(transitions, 2), (std::vector<std::pair<int, int>>{{0, 0}, {2, 0}, {1, 2}, {2, 2}}));
  EXPECT_EQ(transitions.targetCount(), 2);
}

TEST_F(TransitionsTest, ATableThatAnIntCannotCountIsReported) {
  EXPECT_FALSE(Transitions(automaton({}, 1 << 16, 1 << 15)));
  EXPECT_EQ(memoryReports, 1);
}

}  // namespace
