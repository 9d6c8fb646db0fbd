// SPDX-License-Identifier: MIT
#include "koru_extras.h"

int main(void) {
  cs_init();
  CSint *x[] = {cs_createNamedCSint(0, 1, "roof"), cs_createNamedCSint(0, 1, "hook"), cs_createNamedCSint(0, 1, "rack"),
                cs_createNamedCSint(0, 1, "sport")};
  CSint *roof = x[0], *hook = x[1], *rack = x[2], *sport = x[3];
  // roof -> not sport; rack -> roof or hook.
  CSint *both[] = {roof, sport};
  CSint *either[] = {roof, hook};
  if (!cs_Clause(NULL, 0, both, 2) || !cs_Clause(either, 2, &rack, 1)) return 1;
  cs_saveContext();
  if (!cs_EQ(sport, 1) || !cs_EQ(rack, 1)) return 1;
  cs_printf("sport with a rack:  %A\n", x, 4);
  cs_restoreContext();

  // An implication between statements about other variables: from 3 people on, the roof.
  CSint *people = cs_createNamedCSint(1, 5, "people");
  CSint *many = cs_ReifGE(people, 3);
  if (!cs_Clause(&roof, 1, &many, 1)) return 1;
  // A comparison that holds if something is asked for: with a hook, at most 2 of them.
  if (!cs_LEIf(hook, people, 2)) return 1;
  cs_saveContext();
  if (!cs_EQ(hook, 1)) return 1;
  cs_printf("with a hook:        %T\n", people);
  cs_restoreContext();
  if (!cs_GE(people, 4)) return 1;
  cs_printf("from 4 people on:   %A\n", x, 4);
  cs_end();
  return 0;
}
