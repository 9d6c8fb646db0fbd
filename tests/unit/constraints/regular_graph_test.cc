// SPDX-License-Identifier: MIT
// The layered graph of cs_Regular: which states and edges are left, and the order of every list.
#include "constraints/global/regular_graph.h"

#include "support/constraints/regular_lists.h"
#include "support/kit/instrumented.h"
#include "support/kit/random.h"

namespace {

using namespace koru;
using namespace koru::test;
using namespace koru::regular;

using Pairs = std::vector<std::pair<int, int>>;

Pairs entries(const ListedEdges &list) {
  Pairs result;
  for (const Edge &edge : list.edges) result.emplace_back(edge.x, edge.y);
  return result;
}

class RegularGraphTest : public SolverTest {
 protected:
  // What the graph has of the pool must go before the pool does.
  void TearDown() override {
    graph = Graph();
    SolverTest::TearDown();
  }

  bool build(const std::vector<int> &table, int states, int symbols, const std::vector<int> &finals, int n) {
    while (static_cast<int>(vars.size()) < n) vars.push_back(cs_createCSint(0, symbols - 1));
    const Automaton automaton{table.data(), states, symbols, 0, finals.data(), static_cast<int>(finals.size())};
    graph = Graph(Transitions(automaton), vars.data(), n);
    return graph.build(automaton);
  }

  RegularLists lists() const { return RegularLists(graph); }

  std::vector<CSint *> vars;
  Graph graph;
};

// Words over {0, 1} with at most one 1 in a row: state 1 is "the last symbol was a 1", state 2 is never left.
const std::vector<int> kNoTwoOnes{0, 1, 0, 2, 2, 2};

TEST_F(RegularGraphTest, LayersHoldTheStatesOnAcceptedWords) {
  ASSERT_TRUE(build(kNoTwoOnes, 3, 2, {0, 1}, 3));
  EXPECT_EQ(values(graph.layer(0)), std::vector{0});
  for (int k = 1; k <= 3; ++k) EXPECT_EQ(values(graph.layer(k)), range(0, 1));
  EXPECT_EQ(graph.layer(1)->bits, nullptr) << "the dead state lies at an end";
}

TEST_F(RegularGraphTest, ALayerWithAHoleHasBits) {
  ASSERT_TRUE(build({2, 0, -1, -1, 0, 2}, 3, 2, {0, 2}, 2));
  EXPECT_EQ(values(graph.layer(1)), (std::vector{0, 2}));
  EXPECT_EQ(cs_getNbElements(graph.layer(1)), 2);
}

TEST_F(RegularGraphTest, ListsHoldTheLiveEdgesInOrder) {
  ASSERT_TRUE(build(kNoTwoOnes, 3, 2, {0, 1}, 2));
  EXPECT_EQ(entries(lists().source(0, 0)), (Pairs{{0, 0}, {1, 1}}));
  EXPECT_EQ(entries(lists().source(1, 0)), (Pairs{{0, 0}, {1, 1}}));
  EXPECT_EQ(entries(lists().source(1, 1)), (Pairs{{0, 0}}));
  EXPECT_EQ(entries(lists().target(0, 1)), (Pairs{{1, 0}}));
  EXPECT_EQ(entries(lists().target(1, 0)), (Pairs{{0, 0}, {0, 1}}));
  EXPECT_EQ(entries(lists().label(0, 0)), (Pairs{{0, 0}}));
  EXPECT_EQ(entries(lists().label(1, 0)), (Pairs{{0, 0}, {1, 0}}));
  EXPECT_EQ(entries(lists().label(1, 1)), (Pairs{{0, 1}}));
}

TEST_F(RegularGraphTest, ListsOfDeadStatesAndUnusedSymbolsAreEmpty) {
  vars = {cs_createCSint(0, 1), fromValues({1})};
  ASSERT_TRUE(build(kNoTwoOnes, 3, 2, {1}, 2));
  EXPECT_EQ(entries(lists().label(0, 1)), Pairs{});
  EXPECT_EQ(entries(lists().label(1, 0)), Pairs{});
  EXPECT_EQ(entries(lists().source(1, 1)), Pairs{});
  EXPECT_EQ(entries(lists().target(0, 2)), Pairs{});
  EXPECT_EQ(values(graph.layer(1)), std::vector{0});
}

TEST_F(RegularGraphTest, SupportsBeginAtTheFirstEntry) {
  ASSERT_TRUE(build(kNoTwoOnes, 3, 2, {0, 1}, 2));
  EXPECT_EQ(lists().target(1, 0).support, 0);
  EXPECT_EQ(lists().source(1, 0).support, 0);
  EXPECT_EQ(lists().label(1, 0).support, 0);
}

// Values are missing from some variables; with two symbols and with more, below a word of states and above.
TEST_F(RegularGraphTest, EveryStateOfALayerHasEdgesAndSupportsBeginAtTheFirst) {
  constexpr int n = 6;
  Random random(3);
  for (int round = 0; round < rounds(400); ++round) {
    const int symbols = 2 + random.below(2);
    const int states = round % 2 == 0 ? 2 + random.below(5) : 62 + random.below(4);
    std::vector<int> table;
    for (int i = 0; i < states * symbols; ++i) table.push_back(random.chance(80) ? random.below(states) : -1);
    vars.clear();
    for (int k = 0; k < n; ++k) vars.push_back(cs_createCSint(0, symbols - 1));
    cs_NEQ(vars[static_cast<std::size_t>(random.below(n))], random.below(symbols));
    if (!build(table, states, symbols, {0, states / 2, states - 1}, n)) continue;
    const RegularLists edges = lists();
    for (int k = 0; k < n; ++k) {
      for (const int q : values(graph.layer(k))) ASSERT_EQ(edges.source(k, q).support, 0) << round;
      for (const int t : values(graph.layer(k + 1))) ASSERT_EQ(edges.target(k, t).support, 0) << round;
      for (int a = 0; a < symbols; ++a)
        ASSERT_EQ(edges.label(k, a).support, graph.labels(k)[a].exists() ? 0 : -1) << round;
    }
  }
}

TEST_F(RegularGraphTest, SymbolsInAHoleOfAVariableMakeNoEdge) {
  vars = {fromValues({0, 2})};
  ASSERT_TRUE(build({0, 0, 0}, 1, 3, {0}, 1));
  EXPECT_EQ(entries(lists().source(0, 0)), (Pairs{{0, 0}, {2, 0}}));
}

TEST_F(RegularGraphTest, NoWordIsFalseWithoutAReport) {
  EXPECT_FALSE(build({-1, 1, 1, 1}, 2, 2, {0}, 2)) << "no final state is reached";
  vars = {CSINT(0)};
  EXPECT_FALSE(build({-1, 1, 1, 1}, 2, 2, {1}, 1)) << "no state is reached";
  EXPECT_EQ(memoryReports, 0);
}

TEST_F(RegularGraphTest, StatesBeyondOneWordAreKeptApart) {
  constexpr int kStates = 200;
  std::vector<int> table;
  for (int q = 0; q < kStates; ++q)
    for (const int step : {63, 64, 65}) table.push_back(q + step);
  ASSERT_TRUE(build(table, kStates, 3, {190, 191, 192, 193, 194}, 3));
  EXPECT_EQ(values(graph.layer(1)), range(63, 65));
  EXPECT_EQ(values(graph.layer(2)), range(126, 130));
  EXPECT_EQ(values(graph.layer(3)), range(190, 194));
  EXPECT_EQ(entries(lists().target(1, 128)), (Pairs{{2, 63}, {1, 64}, {0, 65}}));
}

}  // namespace
