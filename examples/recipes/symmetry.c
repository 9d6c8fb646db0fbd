// SPDX-License-Identifier: MIT
#include "koru_extras.h"

int main(void) {
  cs_init();
  // Who does which task, and which task is done by whom: one model, written from both sides.
  CSint *task[] = {cs_createCSint(0, 2), cs_createCSint(0, 2), cs_createCSint(0, 2)};
  CSint *person[] = {cs_createCSint(0, 2), cs_createCSint(0, 2), cs_createCSint(0, 2)};
  if (!cs_Inverse(task, person, 3) || !cs_EQ(task[0], 2) || !cs_NEQ(person[0], 1)) return 1;
  cs_printf("tasks %A, people %A\n", task, 3, person, 3);

  // Two teams that are alike: the first word is not behind the second one.
  CSint *a[] = {cs_createCSint(1, 3), cs_createCSint(2, 5)};
  CSint *b[] = {cs_createCSint(0, 1), cs_createCSint(0, 4)};
  if (!cs_LexLe(a, b, 2)) return 1;
  cs_printf("%A before %A\n", a, 2, b, 2);

  // Three machines that are alike: 1 is not used before 0, nor 2 before 1.
  CSint *machine[] = {cs_createCSint(0, 2), cs_createCSint(0, 2), cs_createCSint(0, 2), cs_createCSint(0, 2)};
  if (!cs_Precede(machine, 4, 0, 1) || !cs_Precede(machine, 4, 1, 2)) return 1;
  cs_printf("machines %A\n", machine, 4);

  // Equal parts, in the order of their lengths, at least one apart.
  CSint *length[] = {cs_createCSint(3, 9), cs_createCSint(1, 6), cs_createCSint(1, 6)};
  if (!cs_StrictlyIncreasing(length, 3)) return 1;
  cs_printf("lengths %A\n", length, 3);
  cs_end();
  return 0;
}
