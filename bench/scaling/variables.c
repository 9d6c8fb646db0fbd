// SPDX-License-Identifier: MIT
// Many variables, each of which differs from its neighbours, and the first solutions of them: what one process of
// koru_mpi costs beside the searches of koru.h.
//
//   variables plain|mpi|plain-object|mpi-object [VARIABLES [SOLUTIONS]]
//
// Prints a digest of the solutions, the same for all four.
#include <koru_extras.h>
#include <koru_mpi.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

enum { MOST = 1 << 20 };

static CSint *x[MOST];
static int size = 10000;
static long long wanted = 1000000, told;
static unsigned long long digest;

// Of two of those that change most; what it takes itself would hide what is measured.
static void take(CSint *const *variables, int n) {
  digest = digest * 31 + 3U * (unsigned)cs_getMin(variables[n - 1]) + (unsigned)cs_getMin(variables[n > 9 ? n - 9 : 0]);
  ++told;
}

static void found(CSint **variables, int n) {
  take(variables, n);
  if (told == wanted) cs_cancelSearch();
}

static bool solved(CSsearch *search, void *extra) {
  (void)search;
  (void)extra;
  take(x, size);
  return told < wanted;
}

static void searchByObject(bool shares) {
  CSsearch *search = cs_createSearch(x, size);
  const CSsearchOptions how = {.size = sizeof how, .order = CS_ORDER_INPUT, .value = CS_VALUE_MIN};
  cs_setSearchOptions(search, &how);
  if (shares) cs_mpiSolve(search, solved, NULL);
  while (!shares && cs_nextSolution(search) == CS_STATUS_SOLUTION)
    if (!solved(search, NULL)) cs_stopSearch(search);
  cs_freeSearch(search);
}

int main(int argc, char **argv) {
  if (argc < 2) return 2;
  if (argc > 2) size = atoi(argv[2]);
  if (argc > 3) wanted = atoll(argv[3]);
  if (size < 1 || size > MOST) return 2;
  cs_init();
  for (int i = 0; i < size; ++i) x[i] = cs_createCSint(0, 2);
  for (int i = 1; i < size; ++i) cs_Neq(x[i - 1], x[i]);
  if (strstr(argv[1], "object") != NULL) {
    searchByObject(strncmp(argv[1], "mpi", 3) == 0);
  } else if (strcmp(argv[1], "mpi") == 0) {
    cs_mpiFindAll(x, size, cs_findFreeVar, found);
  } else {
    cs_findAll(x, size, cs_findFreeVar, found);
  }
  printf("%lld solutions, digest %016llx\n", told, digest);
  cs_end();
  return 0;
}
