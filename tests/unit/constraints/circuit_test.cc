// SPDX-License-Identifier: MIT
// cs_Circuit and cs_Subcircuit beyond what enumeration reaches.
#include <algorithm>
#include <numeric>
#include <random>
#include <vector>

#include "koru_extras.h"
#include "support/kit/instrumented.h"
#include "support/kit/solver_test.h"

namespace {

using namespace koru::test;

class CircuitTest : public SolverTest {
 protected:
  static std::vector<CSint *> create(int n, int min, int max) {
    std::vector<CSint *> next;
    for (int i = 0; i < n; ++i) next.push_back(cs_createCSint(min, max));
    return next;
  }
  static int count(std::vector<CSint *> next) {
    static int found;
    found = 0;
    cs_findAll(next.data(), static_cast<int>(next.size()), cs_findFreeVar, [](CSint **, int) { ++found; });
    return found;
  }
};

TEST_F(CircuitTest, AllToursOfACompleteGraphAreFound) {
  std::vector<CSint *> next = create(6, -5, 99);
  ASSERT_TRUE(cs_Circuit(next.data(), 6));
  EXPECT_EQ(values(next[2]), (std::vector<int>{0, 1, 3, 4, 5}));
  EXPECT_EQ(count(next), 120);
  EXPECT_EQ(cs_getNbFails(), 0);
}

// Of 5 nodes: nobody in, or one of 10 + 20 + 30 + 24 circuits of two and more.
TEST_F(CircuitTest, AllSubcircuitsOfACompleteGraphAreFound) {
  std::vector<CSint *> next = create(5, 0, 4);
  ASSERT_TRUE(cs_Subcircuit(next.data(), 5));
  EXPECT_EQ(count(next), 1 + 10 + 20 + 30 + 24);
}

TEST_F(CircuitTest, AChainDoesNotCloseEarly) {
  std::vector<CSint *> next = create(5, 0, 4);
  ASSERT_TRUE(cs_Circuit(next.data(), 5));
  EXPECT_TRUE(cs_EQ(next[0], 3) && cs_EQ(next[3], 1));
  EXPECT_EQ(values(next[1]), (std::vector<int>{2, 4}));
}

TEST_F(CircuitTest, AGraphInTwoPartsHasNone) {
  std::vector<CSint *> next = create(6, 0, 2);
  for (int i = 3; i < 6; ++i) next[static_cast<std::size_t>(i)] = cs_createCSint(3, 5);
  EXPECT_FALSE(cs_Circuit(next.data(), 6));
}

TEST_F(CircuitTest, WhoIsNotOnTheWayOfThoseThatMustBeIsLeftOut) {
  std::vector<CSint *> next{fromValues({1}), fromValues({0, 2}), fromValues({0, 1, 2}), fromValues({3, 4}),
                            fromValues({3, 4})};
  ASSERT_TRUE(cs_Subcircuit(next.data(), 5));
  EXPECT_EQ(values(next[3]), (std::vector<int>{3}));
  EXPECT_EQ(values(next[4]), (std::vector<int>{4}));
  EXPECT_TRUE(cs_EQ(next[1], 0));
  EXPECT_EQ(values(next[2]), (std::vector<int>{2})) << "closed without it";
}

TEST_F(CircuitTest, OneNodeIsItsOwnSuccessor) {
  CSint *x = cs_createCSint(-3, 3);
  EXPECT_TRUE(cs_Circuit(&x, 1));
  EXPECT_EQ(values(x), (std::vector<int>{0}));
}

bool isCircuit(const std::vector<int> &next, bool partial) {
  std::vector<bool> seen(next.size());
  std::size_t out = 0;
  std::size_t start = 0;
  for (std::size_t i = 0; i < next.size(); ++i)
    if (partial && next[i] == static_cast<int>(i))
      ++out;
    else
      start = i;
  if (out == next.size()) return true;
  std::size_t length = 0;
  for (std::size_t i = start; !seen[i]; i = static_cast<std::size_t>(next[i]), ++length) seen[i] = true;
  return length + out == next.size();
}

// Each graph is searched for all solutions, and each permutation is tried.
void compareWithPermutations(std::mt19937 &random, bool partial) {
  const int n = std::uniform_int_distribution(2, 7)(random);
  const int share = std::uniform_int_distribution(25, 90)(random);
  std::vector<std::vector<bool>> edge(static_cast<std::size_t>(n), std::vector<bool>(static_cast<std::size_t>(n)));
  std::vector<CSint *> next;
  for (std::vector<bool> &row : edge) {
    std::vector<int> successors;
    for (int j = 0; j < n; ++j)
      if (std::uniform_int_distribution(0, 99)(random) < share) successors.push_back(j);
    if (successors.empty()) successors.push_back(0);
    for (const int j : successors) row[static_cast<std::size_t>(j)] = true;
    next.push_back(fromValues(successors));
  }
  std::vector<int> order(static_cast<std::size_t>(n));
  std::iota(order.begin(), order.end(), 0);
  int expected = 0;
  do {
    bool there = true;
    for (std::size_t i = 0; i < order.size(); ++i) there = there && edge[i][static_cast<std::size_t>(order[i])];
    expected += there && isCircuit(order, partial);
  } while (std::ranges::next_permutation(order).found);
  static int found;
  found = 0;
  if ((partial ? cs_Subcircuit : cs_Circuit)(next.data(), n))
    cs_findAll(next.data(), n, cs_findFreeVar, [](CSint **, int) { ++found; });
  EXPECT_EQ(found, expected) << n << " nodes, partial: " << partial;
}

TEST_F(CircuitTest, RandomGraphsHaveTheCircuitsThatPermutationsAre) {
  std::mt19937 random{7};
  for (int i = 0; i < rounds(3000); ++i) {
    compareWithPermutations(random, i % 2 != 0);
    cs_end();
    cs_init();
  }
}

TEST_F(CircuitTest, LongChainsNeedNoDeepStack) {
  std::vector<CSint *> next;
  for (int i = 0; i < 3000; ++i) next.push_back(fromValues({(i + 1) % 3000, (i + 2) % 3000}));
  EXPECT_TRUE(cs_Circuit(next.data(), 3000));
  EXPECT_TRUE(cs_EQ(next[0], 1));
}

// The run finds 1 -> 3 and 2 -> 0 and forbids 3 -> 1, so that the variable at 0 and 3 leads to 2: 2 -> 0 -> 2.
TEST_F(CircuitTest, WorkingOnWithAVariableThatStandsTwiceComesToAnEnd) {
  CSint *x = cs_createCSint(1, 3);
  CSint *y = cs_createCSint(1, 4);
  CSint *next[] = {x, y, cs_createCSint(0, 4), x};
  EXPECT_FALSE(cs_Circuit(next, 4));
  EXPECT_FALSE(cs_LE(y, 3));
}

TEST_F(CircuitTest, BadInputIsRefused) {
  std::vector<CSint *> next = create(3, 0, 2);
  for (const auto poster : {cs_Circuit, cs_Subcircuit}) {
    EXPECT_FALSE(poster(nullptr, 2));
    EXPECT_FALSE(poster(next.data(), -1));
    EXPECT_TRUE(poster(nullptr, 0));
    CSint *twice[] = {next[0], next[1], next[0]};
    EXPECT_FALSE(poster(twice, 3));
    CSint *holed[] = {next[0], nullptr};
    EXPECT_FALSE(poster(holed, 2));
  }
}

}  // namespace
