// SPDX-License-Identifier: MIT
#include "koru_extras.h"

int main(void) {
  cs_init();
  // Exams 0 and 1 on days 1 or 2, exams 2 and 3 on days 1 to 4, the last one on days 2 to 6.
  CSint *exams[] = {cs_createCSint(1, 2), cs_createCSint(1, 2), cs_createCSint(1, 4), cs_createCSint(1, 4),
                    cs_createCSint(2, 6)};
  cs_saveContext();
  if (!cs_AllNeq(exams, 5)) return 1;
  cs_printf("cs_AllNeq:       %A\n", exams, 5);
  cs_restoreContext();
  cs_saveContext();
  if (!cs_AllNeqBounds(exams, 5)) return 1;
  cs_printf("cs_AllNeqBounds: %A\n", exams, 5);
  cs_restoreContext();

  // Two of three take the days 1 and 3, which are no interval.
  CSint *x[] = {cs_createCSint(1, 3), cs_createCSint(1, 3), cs_createCSint(1, 3)};
  if (!cs_NEQ(x[0], 2) || !cs_NEQ(x[1], 2)) return 1;
  cs_saveContext();
  if (!cs_AllNeqBounds(x, 3)) return 1;
  cs_printf("cs_AllNeqBounds: %A\n", x, 3);
  cs_restoreContext();
  if (!cs_AllNeqDomain(x, 3)) return 1;
  cs_printf("cs_AllNeqDomain: %A\n", x, 3);
  cs_end();
  return 0;
}
