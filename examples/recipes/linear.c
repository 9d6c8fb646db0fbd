// SPDX-License-Identifier: MIT
#include "koru_extras.h"

int main(void) {
  cs_init();
  // Coins of 50, 20 and 5 that make 175, at most four of each.
  CSint *coins[] = {cs_createNamedCSint(0, 4, "fifties"), cs_createNamedCSint(0, 4, "twenties"),
                    cs_createNamedCSint(0, 4, "fives")};
  const long long worth[] = {50, 20, 5};
  if (!cs_Linear(coins, worth, 3, CS_METHOD_EQ, 175)) return 1;
  cs_printf("175 is:        %A\n", coins, 3);
  if (!cs_LE(coins[0], 2)) return 1;
  cs_printf("with two 50s:  %A\n", coins, 3);

  // A truth value says whether a budget is kept, another one asks for it.
  CSint *wanted[] = {cs_createNamedCSint(0, 1, "tent"), cs_createNamedCSint(0, 1, "stove"),
                     cs_createNamedCSint(0, 1, "boots")};
  const long long prices[] = {200, 60, 120};
  CSint *cheap = cs_ReifLinear(wanted, prices, 3, CS_METHOD_LE, 180);
  CSint *strict = cs_createCSint(0, 1);
  if (!cs_LinearIf(strict, wanted, prices, 3, CS_METHOD_LE, 100)) return 1;
  cs_saveContext();
  if (!cs_EQ(wanted[0], 1)) return 1;
  cs_printf("a tent:        cheap %D, strict %D\n", cheap, strict);
  cs_restoreContext();
  if (!cs_EQ(strict, 1)) return 1;
  cs_printf("strictly:      %A\n", wanted, 3);

  // 64-bit coefficients, and a divisor that shows what bounds do not.
  CSint *xy[] = {cs_createCSint(0, 1000000), cs_createCSint(0, 1000000)};
  const long long large[] = {6000000000000, 4000000000000};
  cs_printf("6x + 4y = 7:   %s\n", cs_Linear(xy, large, 2, CS_METHOD_EQ, 7000000000000) ? "may be" : "refused");
  cs_end();
  return 0;
}
