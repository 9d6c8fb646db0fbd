// SPDX-License-Identifier: MIT
#include "koru_extras.h"

int main(void) {
  cs_init();
  // Six people on shifts 0 early, 1 late, 2 night: two at least by day, exactly one at night. The first four cannot do
  // nights, the last two only nights or late.
  CSint *shift[6];
  for (int i = 0; i < 6; i++) shift[i] = i < 4 ? cs_createCSint(0, 1) : cs_createCSint(1, 2);
  const int values[] = {0, 1, 2};
  CSint *counts[] = {cs_createNamedCSint(2, 6, "early"), cs_createNamedCSint(2, 3, "late"),
                     cs_createNamedCSint(1, 1, "night")};
  if (!cs_CardinalityDomain(shift, 6, values, counts, 3, true)) return 1;
  cs_printf("%A\n", counts, 3);
  if (!cs_EQ(counts[0], 3)) return 1;
  cs_printf("with three early: %A\n", shift, 6);

  // Five files on two sticks of 16 and 12.
  const int sizes[] = {9, 7, 5, 4, 3};
  CSint *stick[5];
  for (int i = 0; i < 5; i++) stick[i] = cs_createCSint(0, 1);
  CSint *loads[] = {cs_createNamedCSint(0, 16, "first"), cs_createNamedCSint(0, 12, "second")};
  if (!cs_BinPacking(stick, sizes, 5, loads, 2)) return 1;
  cs_printf("%A\n", loads, 2);
  if (!cs_EQ(stick[0], 1)) return 1;
  cs_printf("with the 9 on the second: %A\n", stick, 5);
  cs_end();
  return 0;
}
