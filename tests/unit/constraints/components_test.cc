// SPDX-License-Identifier: MIT
#include "constraints/counting/components.h"

#include <algorithm>
#include <random>
#include <utility>
#include <vector>

#include "koru_extras.h"
#include "support/kit/instrumented.h"
#include "support/kit/solver_test.h"

namespace koru::test {
namespace {

using counting::Components;
using Edges = std::vector<std::pair<int, int>>;

class ComponentsTest : public SolverTest {
 protected:
  static void draw(const Components &graph, int nodes, const Edges &edges) {
    for (int node = 0; node < nodes; ++node) std::fill_n(graph.row(node), graph.words(), 0);
    for (const auto &[from, to] : edges) WordSet(graph.row(from)).set(to);
  }
  static std::vector<int> membersOf(const Components &graph, int nodes, int node) {
    std::vector<int> members;
    std::vector<std::uint64_t> words(graph.of(node), graph.of(node) + graph.words());
    for (int k = 0; k < nodes; ++k)
      if (WordSet(words.data()).has(k)) members.push_back(k);
    return members;
  }
};

TEST_F(ComponentsTest, TwoCyclesAndABridge) {
  Components graph(5);
  ASSERT_TRUE(static_cast<bool>(graph));
  draw(graph, 5, {{0, 1}, {1, 2}, {2, 0}, {2, 3}, {3, 4}, {4, 3}});
  graph.find();
  EXPECT_EQ(membersOf(graph, 5, 1), (std::vector<int>{0, 1, 2}));
  EXPECT_EQ(membersOf(graph, 5, 4), (std::vector<int>{3, 4}));
}

TEST_F(ComponentsTest, NodesWithoutEdgesAreAlone) {
  Components graph(3);
  draw(graph, 3, {{1, 1}});
  graph.find();
  for (int node = 0; node < 3; ++node) EXPECT_EQ(membersOf(graph, 3, node), std::vector<int>{node});
}

// A search that came back to a node has to go on where it was.
TEST_F(ComponentsTest, ALongPathClosesIntoOneComponent) {
  constexpr int nodes = 200;
  Components graph(nodes);
  Edges edges;
  for (int node = 0; node < nodes; ++node) edges.emplace_back(node, (node * 7 + 7) % nodes);
  draw(graph, nodes, edges);
  graph.find();
  Edges path;
  for (int node = 0; node + 1 < nodes; ++node) path.emplace_back(node, node + 1);
  draw(graph, nodes, path);
  graph.find();
  EXPECT_EQ(membersOf(graph, nodes, 100), std::vector<int>{100});
  path.emplace_back(nodes - 1, 0);
  draw(graph, nodes, path);
  graph.find();
  EXPECT_EQ(membersOf(graph, nodes, 100).size(), std::size_t{nodes});
}

std::vector<std::vector<bool>> reached(int nodes, const Edges &edges) {
  const auto n = static_cast<std::size_t>(nodes);
  std::vector<std::vector<bool>> reaches(n, std::vector<bool>(n));
  for (std::size_t i = 0; i < n; ++i) reaches[i][i] = true;
  for (const auto &[from, to] : edges) reaches[static_cast<std::size_t>(from)][static_cast<std::size_t>(to)] = true;
  for (std::size_t k = 0; k < n; ++k)
    for (std::size_t i = 0; i < n; ++i)
      for (std::size_t j = 0; j < n; ++j)
        if (reaches[i][k] && reaches[k][j]) reaches[i][j] = true;
  return reaches;
}

// The component of a node: those that it reaches and that reach it.
TEST_F(ComponentsTest, AgreeWithReachability) {
  std::mt19937 random(41);
  const auto below = [&random](int n) { return static_cast<int>(random() % static_cast<unsigned>(n)); };
  for (const int nodes : {1, 7, 64, 65, 90}) {
    Components graph(nodes);
    for (int round = 0; round < rounds(40); ++round) {
      Edges edges;
      for (int k = below(2 * nodes + 1); k > 0; --k) edges.emplace_back(below(nodes), below(nodes));
      draw(graph, nodes, edges);
      graph.find();
      const auto reaches = reached(nodes, edges);
      for (int i = 0; i < nodes; ++i) {
        std::vector<int> members;
        for (int j = 0; j < nodes; ++j) {
          const auto a = static_cast<std::size_t>(i);
          const auto b = static_cast<std::size_t>(j);
          if (reaches[a][b] && reaches[b][a]) members.push_back(j);
        }
        ASSERT_EQ(membersOf(graph, nodes, i), members);
      }
    }
  }
}

}  // namespace
}  // namespace koru::test
