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

}  // namespace

Cases tableCases() {
  return {tables("cs_Table", 0, {1, 4, 9, 30}), tables("cs_ShortTable", 3, {1, 3, 6, 12}),
          tables("cs_NotTable", 0, {1, 4, 12, 60})};
}

}  // namespace koru::test::brute
