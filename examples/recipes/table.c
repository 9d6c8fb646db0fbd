// SPDX-License-Identifier: MIT
#include "koru_extras.h"

// Frames: 0 city, 1 race, 2 cargo. Wheels: inches. Brakes: 0 rim, 1 disc.
int main(void) {
  cs_init();
  CSint *bike[] = {cs_createNamedCSint(0, 2, "frame"), cs_createNamedCSint(20, 29, "wheel"),
                   cs_createNamedCSint(0, 1, "brake")};
  const int fits[] = {0, 26, 0, 0, 28, 0, 0, 28, 1, 1, 28, 0, 1, 28, 1, 2, 20, 1, 2, 26, 1};
  if (!cs_Table(bike, 3, fits, 7)) return 1;
  cs_printf("what fits:       %A\n", bike, 3);

  // What is ready in a week (0) and what takes a month (1): of a city bike every wheel and brake is there.
  CSint *ready[] = {bike[0], bike[1], cs_createNamedCSint(0, 1, "month")};
  const int delivery[] = {0, CS_ANY, 0, 1, 28, 1, 2, 20, 0, 2, 26, 1};
  if (!cs_ShortTable(ready, 3, delivery, 4)) return 1;
  const int soldOut[] = {2, 20, 1, 28};
  if (!cs_NotTable(bike, 2, soldOut, 2)) return 1;
  cs_printf("not sold out:    %A\n", bike, 3);

  cs_saveContext();
  if (!cs_NEQ(bike[0], 0)) return 1;
  cs_printf("no city bike:    %A, %T\n", bike, 3, ready[2]);
  if (!cs_EQ(bike[1], 26)) return 1;
  cs_printf("on 26 inches:    %A, %T\n", bike, 3, ready[2]);
  cs_restoreContext();
  cs_printf("undone:          %A\n", bike, 3);
  cs_end();
  return 0;
}
