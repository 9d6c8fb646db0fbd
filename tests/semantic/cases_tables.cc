// SPDX-License-Identifier: MIT
// Tables, with so many rows that there is something left to lose, and cells that stand for all values.
#include <climits>
#include <random>

#include "semantic/cases.h"

namespace koru::test::brute {
namespace {

using catalogue::Form;

// A cell in so many stands for all values; 0 for none.
Form drawn(const char *name, int n, int rows, unsigned anyOneIn, std::mt19937 &random) {
  std::vector<catalogue::Wide> cells;
  for (int i = 0; i < n * rows; ++i) {
    const bool any = anyOneIn > 0 && random() % anyOneIn == 0;
    cells.push_back(any ? INT_MIN : static_cast<int>(random() % 5) - 1);
  }
  return Form(catalogue::rowOf(name), {n, rows}, {}, {cells});
}

Case tables(const char *name, unsigned anyOneIn, std::initializer_list<int> lengths) {
  Case c{std::string(name).substr(3), {name}, {}, {{-1, 4}}, 60};
  std::mt19937 random(11);
  for (const int n : {1, 2, 3, 4})
    for (const int rows : lengths)
      for (int i = 0; i < 3; ++i) c.forms.push_back(constraintOf(drawn(name, n, rows, anyOneIn, random)));
  return c;
}

// Paths from the first node to the last one: in layers of three, or anywhere.
Form diagram(int n, int arcs, bool layered, std::mt19937 &random) {
  const auto below = [&](int bound) { return static_cast<int>(random() % static_cast<unsigned>(bound)); };
  std::vector<std::vector<Wide>> lists(3);
  for (int k = 0; k < arcs; ++k) {
    const int layer = below(n);
    const int source = !layered ? below(4) : layer == 0 ? 0 : 3 * layer + below(3);
    const int target = !layered ? below(4) : layer + 1 == n ? 99 : 3 * layer + 3 + below(3);
    lists[0].push_back(source);
    lists[1].push_back(below(4) - 1);
    lists[2].push_back(target);
  }
  return Form(catalogue::rowOf("cs_Mdd"), {n, arcs}, {0, layered ? 99 : 1}, lists);
}

Case diagrams() {
  Case c{"Mdd", {"cs_Mdd"}, {}, {{-1, 4}}, 40};
  c.fewPatternsFrom = 5;
  std::mt19937 random(3);
  for (const Wide terminal : {7, 8})
    c.forms.push_back(constraintOf(Form(catalogue::rowOf("cs_Mdd"), {0, 0}, {7, terminal}, {{}, {}, {}})));
  for (const auto &[n, arcs] : {std::pair{1, 2}, {2, 6}, {2, 9}, {3, 12}, {3, 18}, {4, 24}, {4, 34}, {5, 40}})
    for (const bool layered : {true, false})
      for (int i = 0; i < 2; ++i)
        c.forms.push_back(constraintOf(diagram(n, layered ? arcs : arcs / 2, layered, random)));
  return c;
}

}  // namespace

Cases tableCases() {
  return {tables("cs_Table", 0, {1, 4, 9, 30}), tables("cs_ShortTable", 3, {1, 3, 6, 12}),
          tables("cs_NotTable", 0, {1, 4, 12, 60}), diagrams()};
}

}  // namespace koru::test::brute
