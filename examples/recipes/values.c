// SPDX-License-Identifier: MIT
#include "koru_extras.h"

int main(void) {
  cs_init();
  // How many take a value that is to be found.
  CSint *choice[] = {cs_createCSint(1, 1), cs_createCSint(1, 2), cs_createCSint(2, 3), cs_createCSint(4, 4)};
  CSint *value = cs_createNamedCSint(0, 9, "value");
  CSint *count = cs_createNamedCSint(2, 4, "count");
  if (!cs_CountOf(choice, 4, value, count)) return 1;
  cs_printf("%T, %T\n", value, count);
  // How many values are taken at all.
  CSint *kinds = cs_createNamedCSint(0, 9, "kinds");
  if (!cs_NValues(choice, 4, kinds)) return 1;
  cs_printf("%T\n", kinds);

  // Division as in C, and powers, of variables that are there.
  CSint *minutes = cs_createNamedCSint(100, 200, "minutes");
  CSint *hours = cs_createNamedCSint(2, 9, "hours");
  CSint *rest = cs_createNamedCSint(50, 59, "rest");
  CSint *sixty = cs_createCSint(60, 60);
  if (!cs_DivTrunc(minutes, sixty, hours) || !cs_Mod(minutes, sixty, rest)) return 1;
  cs_printf("%T, %T, %T\n", minutes, hours, rest);
  CSint *base = cs_createNamedCSint(2, 9, "base");
  CSint *exponent = cs_createNamedCSint(2, 9, "exponent");
  CSint *power = cs_createNamedCSint(200, 250, "power");
  if (!cs_Pow(base, exponent, power)) return 1;
  cs_printf("%T, %T, %T\n", base, exponent, power);
  cs_end();
  return 0;
}
