// SPDX-License-Identifier: MIT
// A C++20 program that uses Koru.
#include <koru.h>
#include <koru_extras.h>

#include <array>
#include <iostream>
#include <koru.hpp>
#include <span>

static bool solve(std::span<CSint *> variables) {
  return cs_search(variables.data(), static_cast<int>(variables.size()), cs_findFreeVarNbElements);
}

int main() {
  cs_init();
  std::cout << cs_getVersion() << std::endl;
  std::array digits{cs_createNamedCSint(0, 9, "x"), cs_createNamedCSint(0, 9, "y")};
  if (!cs_EQ(cs_Add(digits[0], digits[1]), 12)) return 1;
  if (!solve(digits)) return 2;
  cs_printf("%A\n", digits.data(), static_cast<int>(digits.size()));
  cs_end();

  koru::Model m;
  const auto x = m.ints(2, 0, 9);
  m.post(x[0] + x[1] == 12, x[0] > x[1]);
  return m.solve({.vars = x}).best[x[1]] == 5 ? 0 : 3;
}
