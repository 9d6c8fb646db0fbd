// SPDX-License-Identifier: MIT
// A C++ program that uses an installed Koru.
#include <koru.h>

#include <iostream>
#include <vector>

int main() {
  cs_init();
  std::cout << cs_getVersion() << std::endl;
  std::vector<CSint *> digits{cs_createNamedCSint(0, 9, "x"), cs_createNamedCSint(0, 9, "y")};
  if (!cs_EQ(cs_Add(digits[0], digits[1]), 12)) return 1;
  if (!cs_search(digits.data(), static_cast<int>(digits.size()), cs_findFreeVarNbElements)) return 2;
  cs_printf("%A\n", digits.data(), static_cast<int>(digits.size()));
  cs_end();
}
