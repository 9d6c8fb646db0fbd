// SPDX-License-Identifier: MIT
// The traces of docs/recipes.md, printed from the library: the page shows exactly what happens.
#include <filesystem>
#include <fstream>
#include <iterator>
#include <sstream>

#include "constraints/counting/bin_bound.h"
#include "constraints/counting/bin_sums.h"
#include "constraints/counting/flow.h"
#include "constraints/strong/diagram.h"
#include "constraints/strong/row_set.h"
#include "koru_extras.h"
#include "support/kit/solver_test.h"

namespace {

using namespace koru;
using namespace koru::test;

class RecipesTraceTest : public SolverTest {
 protected:
  static void expectOnPage(const std::ostringstream &trace) {
    const auto root = std::filesystem::path(__FILE__).parent_path().parent_path().parent_path();
    std::ifstream file(root / "docs" / "recipes.md");
    const std::string page{std::istreambuf_iterator<char>(file), {}};
    ASSERT_FALSE(page.empty());
    EXPECT_NE(page.find("```\n" + trace.str() + "```\n"), std::string::npos) << trace.str();
  }
  static std::string set(CSint *v) {
    std::string text = "{";
    for (const int value : values(v)) text += (text.size() > 1 ? "," : "") + std::to_string(value);
    return text + "}";
  }
  static std::string padded(const std::string &text, std::size_t width) {
    return text + std::string(width > text.size() ? width - text.size() : 0, ' ');
  }
};

// How many rows each value has left.
TEST_F(RecipesTraceTest, Table) {
  std::vector<CSint *> bike = {cs_createCSint(0, 2), fromValues({20, 26, 28}), cs_createCSint(0, 1)};
  const int cells[] = {0, 26, 0, 0, 28, 0, 0, 28, 1, 1, 28, 0, 1, 28, 1, 2, 20, 1, 2, 26, 1};
  RowSet rows;
  ASSERT_TRUE(rows.build({bike.data(), 3, cells, 7, false}));
  std::ostringstream trace;
  trace << "                rows   frame 0 1 2   wheel 20 26 28   brake 0 1\n";
  const auto show = [&](const char *step) {
    ASSERT_TRUE(rows.update());
    rows.noteSeen(false);
    trace << padded(step, 16) << "   " << rows.countRows() << "         ";
    const int gaps[] = {10, 10, 0};
    for (int j = 0; j < 3; ++j) {
      const RowSet::Column &column = rows.column(j);
      for (int rank = 0; rank < column.ranks; ++rank) {
        if (j == 1 && (rows.valueAt(column, rank) % 2 != 0 || rows.valueAt(column, rank) == 22 ||
                       rows.valueAt(column, rank) == 24))
          continue;
        trace << (j == 1 && rank > 0 ? "  " : rank > 0 ? " " : "") << rows.countRows(column, rank);
      }
      trace << std::string(static_cast<std::size_t>(gaps[j]), ' ');
    }
    trace << "\n";
  };
  show("posted");
  cs_saveContext();
  ASSERT_TRUE(cs_NEQ(bike[0], 0));
  show("no city bike");
  ASSERT_TRUE(cs_EQ(bike[1], 26));
  show("on 26 inches");
  cs_restoreContext();
  show("undone");
  expectOnPage(trace);
}

// From the root 0, the search meets 1 and 2 first, a subtree, then 3 and 4, another one.
TEST_F(RecipesTraceTest, Circuit) {
  std::vector<CSint *> next = {fromValues({1, 3}), fromValues({0, 2}), fromValues({0, 1}), fromValues({1, 2, 4}),
                               fromValues({0, 1, 2, 3})};
  std::ostringstream trace;
  const auto show = [&](const char *step) {
    std::string line = padded(step, 22);
    for (CSint *v : next) line += padded(set(v), 11);
    line.erase(line.find_last_not_of(' ') + 1);
    trace << line << "\n";
  };
  show("successors of 0 to 4");
  ASSERT_TRUE(cs_Circuit(next.data(), 5));
  show("posted");
  ASSERT_TRUE(cs_EQ(next[4], 1));
  show("4 - 1");
  expectOnPage(trace);
}

// Four people for three tasks: the flow, and what each task may get.
TEST_F(RecipesTraceTest, Flow) {
  const std::vector<std::vector<int>> options = {{0, 1}, {0, 1}, {1, 2}, {0, 2}};
  counting::Flow flow(4, 3);
  for (int i = 0; i < 4; ++i)
    for (const int j : options[static_cast<std::size_t>(i)]) WordSet(flow.options(i)).set(j);
  flow.demand(0, 0, 1);
  flow.demand(1, 1, 2);
  flow.demand(2, 1, 2);
  std::ostringstream trace;
  ASSERT_TRUE(flow.establish());
  for (int j = 0; j < 3; ++j) {
    const int most = flow.mostOf(j);
    trace << "task " << j << ": " << flow.leastOf(j) << " to " << most << "\n";
  }
  flow.demand(2, 2, 2);
  ASSERT_TRUE(flow.establish());
  flow.separate();
  trace << "with two for task 2:";
  for (int i = 0; i < 4; ++i) {
    trace << " {";
    std::vector<std::uint64_t> words(flow.possible(i), flow.possible(i) + 1);
    bool first = true;
    for (const int j : options[static_cast<std::size_t>(i)]) {
      if (!WordSet(words.data()).has(j)) continue;
      trace << (first ? "" : ",") << j;
      first = false;
    }
    trace << "}";
  }
  trace << "\n";
  expectOnPage(trace);
}

TEST_F(RecipesTraceTest, BinSums) {
  counting::BinSums sums(3, 32);
  sums.start(31);
  std::ostringstream trace;
  for (const int size : {9, 7, 5}) {
    sums.add(size);
    trace << "with the " << size << ": ";
    for (int sum = 0; sum < 32; ++sum)
      if (sums.meet(CSINT(sum), 0)) trace << " " << sum;
    trace << "\n";
  }
  CSint *load = cs_createCSint(13, 16);
  ASSERT_TRUE(sums.meet(load, 0));
  trace << "13 to 16:    " << sums.least() << " to " << sums.greatest() << "\n";
  for (const int size : {5, 7, 9}) {
    const counting::BinSums::Use use = sums.takeBack(size);
    trace << "the " << size << ":       " << (use.with ? "with it" : "never with it") << ", "
          << (use.without ? "without it" : "never without it") << "\n";
  }
  expectOnPage(trace);
}

TEST_F(RecipesTraceTest, BinBound) {
  const int sizes[] = {42, 42, 30, 30, 30};
  std::vector<CSint *> bins = {CSINT(0), CSINT(1)};
  while (bins.size() < 5) bins.push_back(cs_createCSint(0, 1));
  std::vector<CSint *> loads = {cs_createCSint(0, 100), cs_createCSint(0, 100)};
  EXPECT_FALSE(counting::BinBound(sizes, 5, 2).allows(bins.data(), sizes, loads.data()));
  EXPECT_TRUE(counting::BinBound(sizes, 4, 2).allows(bins.data(), sizes, loads.data()));
}

TEST_F(RecipesTraceTest, Linear) {
  std::vector<CSint *> coins = {cs_createCSint(0, 4), cs_createCSint(0, 4), cs_createCSint(0, 4)};
  const long long worth[] = {50, 20, 5};
  ASSERT_TRUE(cs_Linear(coins.data(), worth, 3, CS_METHOD_EQ, 175));
  std::ostringstream trace;
  const auto show = [&](const char *step) {
    trace << padded(step, 14) << padded(set(coins[0]), 12) << padded(set(coins[1]), 12) << set(coins[2]) << "\n";
  };
  show("posted");
  ASSERT_TRUE(cs_LE(coins[0], 2));
  show("two 50s");
  expectOnPage(trace);
}

TEST_F(RecipesTraceTest, Diagram) {
  std::vector<int> sources;
  std::vector<int> arcs;
  std::vector<int> targets;
  for (int worked = 0; worked <= 4; ++worked)
    for (int wasFree = 0; wasFree <= 1; ++wasFree)
      for (int works = wasFree; works <= 1; ++works) {
        sources.push_back(10 * worked + wasFree);
        arcs.push_back(works);
        targets.push_back(10 * (worked + works) + 1 - works);
      }
  mdd::Diagram diagram;
  ASSERT_TRUE(diagram.build({sources.data(), arcs.data(), targets.data(), static_cast<int>(sources.size())}));
  diagram.begin(diagram.find(0));
  std::ostringstream trace;
  for (int k = 1; k <= 4; ++k) {
    diagram.step();
    trace << "day " << k << ": " << diagram.rows() << " arcs to";
    for (int worked = 0; worked <= 4; ++worked)
      for (int wasFree = 0; wasFree <= 1; ++wasFree)
        for (int row = 0; row < diagram.rows(); ++row)
          if (diagram.cells()[row * 3 + 2] == diagram.find(10 * worked + wasFree)) {
            trace << " " << 10 * worked + wasFree;
            break;
          }
    trace << "\n";
  }
  expectOnPage(trace);
}

}  // namespace
