// SPDX-License-Identifier: MIT
// The shortest Golomb ruler with n marks, by many processes: mpirun -n 4 golomb_mpi 10
//
// The same rulers in the same order for every number of processes: each pass of the search ends with the solution that
// one process would have found.
#include <koru_mpi.h>
#include <stdio.h>
#include <stdlib.h>

enum { MOST = 16, MOST_PAIRS = MOST * (MOST - 1) / 2 };

static void show(CSint **marks, int n, CSint *length) {
  printf("length %d: ", cs_getMin(length));
  cs_printf("%A\n", marks, n);
}

int main(int argc, char **argv) {
  const int n = argc > 1 ? atoi(argv[1]) : 8;
  if (n < 3 || n > MOST) {
    fprintf(stderr, "usage: golomb_mpi N, N from 3 to %d\n", MOST);
    return 2;
  }
  cs_init();
  CSint **marks = cs_createCSintArray(n, 0, n * n), *distances[MOST_PAIRS];
  int pairs = 0;
  bool ok = cs_EQ(marks[0], 0);
  for (int i = 0; i < n; ++i)
    for (int j = i + 1; j < n; ++j) {
      distances[pairs] = cs_Sub(marks[j], marks[i]);
      ok = ok && cs_GE(distances[pairs++], 1);
    }
  // A ruler and its mirror image count once.
  ok = ok && cs_AllNeq(distances, pairs) && cs_Lt(distances[0], distances[pairs - 1]);
  if (!ok || !cs_mpiMinimize(marks, n, cs_findFreeVar, marks[n - 1], show)) return 1;
  printf("the last one is the shortest: %lld fails, %lld choice points\n", cs_mpiGetNbFails(),
         cs_mpiGetNbChoicePoints());
  cs_end();
  return 0;
}
