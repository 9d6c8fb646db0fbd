// SPDX-License-Identifier: MIT
#include "constraints/strong/diagram.h"

#include <algorithm>
#include <array>
#include <set>
#include <vector>

#include "koru_extras.h"
#include "support/kit/solver_test.h"

namespace koru::test {
namespace {

using mdd::Diagram;
using Arc = std::array<int, 3>;  // source, value, target

class DiagramTest : public SolverTest {
 protected:
  void build(const std::vector<Arc> &arcs) {
    std::array<std::vector<int>, 3> columns;
    for (const Arc &arc : arcs)
      for (std::size_t k = 0; k < 3; ++k) columns[k].push_back(arc[k]);
    ASSERT_TRUE(
        diagram.build({columns[0].data(), columns[1].data(), columns[2].data(), static_cast<int>(arcs.size())}));
  }
  std::set<Arc> stepped() {
    diagram.step();
    std::set<Arc> arcs;
    for (int row = 0; row < diagram.rows(); ++row) {
      const int *cells = diagram.cells() + std::ptrdiff_t{row} * 3;
      arcs.insert({cells[0], cells[1], cells[2]});
    }
    EXPECT_EQ(static_cast<int>(arcs.size()), diagram.rows());
    return arcs;
  }

  Diagram diagram;
};

TEST_F(DiagramTest, NodesAreNumberedInTheOrderOfTheHostsInts) {
  build({{70, 1, -5}, {-5, 2, 2000000000}, {70, 3, 2000000000}});
  EXPECT_EQ(diagram.find(-5), 0);
  EXPECT_EQ(diagram.find(70), 1);
  EXPECT_EQ(diagram.find(2000000000), 2);
  EXPECT_EQ(diagram.find(71), Diagram::kNone);
  EXPECT_EQ(diagram.find(2000000001), Diagram::kNone);
}

TEST_F(DiagramTest, WithoutArcsThereAreNoNodes) {
  build({});
  EXPECT_EQ(diagram.find(0), Diagram::kNone);
}

// A diamond: 0 over 1 or 2 to 3.
TEST_F(DiagramTest, ALayerHoldsWhatArcsLeadTo) {
  build({{0, 10, 1}, {0, 11, 2}, {1, 12, 3}, {2, 13, 3}, {2, 14, 3}, {9, 15, 8}});
  diagram.begin(0);
  EXPECT_EQ(stepped(), (std::set<Arc>{{0, 10, 1}, {0, 11, 2}}));
  EXPECT_EQ(diagram.firstNode(), 1);
  EXPECT_EQ(diagram.lastNode(), 2);
  EXPECT_EQ(stepped(), (std::set<Arc>{{1, 12, 3}, {2, 13, 3}, {2, 14, 3}})) << "what nobody reaches is not met";
  EXPECT_EQ(diagram.firstNode(), 3);
  EXPECT_EQ(diagram.lastNode(), 3);
  EXPECT_FALSE(diagram.isEmpty());
  EXPECT_TRUE(stepped().empty());
  EXPECT_TRUE(diagram.isEmpty());
}

// The automaton of an odd number of ones, as a graph with cycles; and begun anew from elsewhere.
TEST_F(DiagramTest, AGraphWithCyclesIsTakenStepByStep) {
  build({{0, 0, 0}, {0, 1, 1}, {1, 0, 1}, {1, 1, 0}});
  diagram.begin(0);
  EXPECT_EQ(stepped(), (std::set<Arc>{{0, 0, 0}, {0, 1, 1}}));
  for (int k = 0; k < 3; ++k) EXPECT_EQ(stepped().size(), 4U);
  diagram.begin(1);
  EXPECT_EQ(stepped(), (std::set<Arc>{{1, 0, 1}, {1, 1, 0}}));
}

// Two arcs between the same nodes with one value are two rows.
TEST_F(DiagramTest, ArcsThatComeTwiceAreKept) {
  build({{0, 7, 1}, {0, 7, 1}});
  diagram.begin(0);
  diagram.step();
  EXPECT_EQ(diagram.rows(), 2);
  EXPECT_EQ(diagram.firstNode(), 1);
}

}  // namespace
}  // namespace koru::test
