// SPDX-License-Identifier: MIT
// All ways to place n queens, by many processes: mpirun -n 8 queens_mpi 14
//
// Nothing but the search differs from a program for one process. Every process runs all of it; only the first one is
// told of solutions, and writes.
#include <koru_mpi.h>
#include <stdio.h>
#include <stdlib.h>

enum { MOST = 24 };

static void showFirst(CSint **queens, int n) {
  static int solutions;
  if (++solutions <= 3) cs_printf("%A\n", queens, n);
}

int main(int argc, char **argv) {
  const int n = argc > 1 ? atoi(argv[1]) : 10;
  const bool countOnly = argc > 2;
  if (n < 1 || n > MOST) {
    fprintf(stderr, "usage: queens_mpi N [count], N from 1 to %d\n", MOST);
    return 2;
  }
  cs_init();
  CSint **queens = cs_createCSintArray(n, 0, n - 1), *up[MOST], *down[MOST];
  for (int i = 0; i < n; ++i) {
    up[i] = cs_Add(queens[i], CSINT(i));
    down[i] = cs_Sub(queens[i], CSINT(i));
  }
  if (!cs_AllNeq(queens, n) || !cs_AllNeq(up, n) || !cs_AllNeq(down, n)) return 1;
  // Without a function to be told, nobody waits for the first process to go to each solution.
  const bool any = cs_mpiFindAll(queens, n, cs_findFreeVarNbElements, countOnly ? NULL : showFirst);
  printf("%s, %lld fails, %lld choice points\n", any ? "solved" : "no solution", cs_mpiGetNbFails(),
         cs_mpiGetNbChoicePoints());
  cs_end();
  return 0;
}
