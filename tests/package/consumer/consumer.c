/* SPDX-License-Identifier: MIT */
/* A C99 program that uses Koru. */
#include <koru.h>
#include <koru_extras.h>
#include <stdio.h>

int main(void) {
  CSint *digits[2];
  cs_init();
  printf("%s\n", cs_getVersion());
  digits[0] = cs_createNamedCSint(0, 9, "x");
  digits[1] = cs_createNamedCSint(0, 9, "y");
  if (!cs_EQ(cs_Add(digits[0], digits[1]), 12)) return 1;
  if (!cs_search(digits, 2, cs_findFreeVarNbElements)) return 2;
  cs_printf("%A\n", digits, 2);
  cs_end();
  return 0;
}
