// SPDX-License-Identifier: MIT
#include "koru_extras.h"

int main(void) {
  cs_init();
  const int fares[] = {70, 40, 90, 40, 60};
  CSint *train = cs_createNamedCSint(0, 4, "train");
  CSint *fare = cs_createNamedCSint(0, 100, "fare");
  if (!cs_ElementOf(train, fares, 5, fare)) return 1;
  cs_printf("%T, %T\n", train, fare);
  if (!cs_LE(fare, 60)) return 1;
  cs_printf("for 60 at most: %T, %T\n", train, fare);
  if (!cs_NEQ(train, 4)) return 1;
  cs_printf("not the last:   %T, %T\n", train, fare);

  // The same over variables, and the other way round: where a value stands.
  CSint *seats[] = {cs_createCSint(0, 1), cs_createCSint(2, 4), cs_createCSint(4, 6)};
  CSint *row = cs_createNamedCSint(0, 2, "row");
  CSint *seat = cs_createNamedCSint(4, 9, "seat");
  if (!cs_VarElementOf(row, seats, 3, seat)) return 1;
  cs_printf("%T, %T\n", row, seat);
  CSint *place = cs_createNamedCSint(0, 2, "place of 2");
  if (!cs_PositionOf(seats, 3, 2, place)) return 1;
  cs_printf("%T, %A\n", place, seats, 3);
  cs_end();
  return 0;
}
