// SPDX-License-Identifier: MIT
#include "koru_extras.h"

// Four days, 0 off or 1 at work, three days of work at least and never two free days in a row. A node is what matters
// of the days so far: 10 * days at work + whether the last day was free.
int main(void) {
  cs_init();
  int sources[64], values[64], targets[64], count = 0;
  for (int worked = 0; worked <= 4; worked++)
    for (int wasFree = 0; wasFree <= 1; wasFree++) {
      const int node = 10 * worked + wasFree;
      sources[count] = node, values[count] = 1, targets[count++] = 10 * (worked + 1);
      if (!wasFree) sources[count] = node, values[count] = 0, targets[count++] = 10 * worked + 1;
    }
  // Where four days may end, one more arc leads to a last node.
  for (int node = 30; node <= 41; node += node == 31 ? 9 : 1)
    sources[count] = node, values[count] = 2, targets[count++] = 99;
  CSint *day[5];
  for (int k = 0; k < 4; k++) day[k] = cs_createCSint(0, 1);
  day[4] = cs_createCSint(2, 2);
  if (!cs_Mdd(day, 5, sources, values, targets, count, 0, 99)) return 1;
  cs_printf("days:             %A\n", day, 4);
  if (!cs_EQ(day[1], 0)) return 1;
  cs_printf("the second free:  %A\n", day, 4);
  cs_end();
  return 0;
}
