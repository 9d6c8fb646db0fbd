// SPDX-License-Identifier: MIT
// A program for the tests of koru_mpi: all that a search shows, on the standard output.
//
//   program plain|mpi CASE [SIZE]
//
// "plain" uses the functions of koru.h; "mpi" those of koru_mpi.h, and must print the same. CASE: queens, first,
// golomb, cancel; count: queens, counted; object, objective: by a search object; option: one that cannot be shared;
// rank: a model that differs by the process; memory: a selection that remembers how often it was asked; no-goods,
// element: constraints that remember.
//
// Of the environment: KORU_TEST_CHECKPOINT, a file to keep the searches in; what is shown is then appended to the file
// KORU_TEST_OUTPUT. KORU_TEST_MARK: each process makes a file of this name and its number when it has started.
// KORU_TEST_DELAY: the selection sleeps now and then, longer in processes of higher numbers. KORU_TEST_ROUNDS: how many
// searches there are, one after the other (2).
#define _DEFAULT_SOURCE 1  // usleep
#include <koru_extras.h>
#include <koru_mpi.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <unistd.h>

enum { MOST = 32 };

static bool plain;
static int round_, cancelAt = -1;
static long long shown;
static CSsearchStats stats;  // of a search object
static unsigned delay;

static void show(CSint **x, int n) {
  if (shown == 0 && !plain) shown = cs_mpiGetNbTold();
  printf("%d.%lld: ", round_, shown);
  cs_printf("%A", x, n);
  printf(" %d\n", cs_saveContext());
  cs_restoreContext();
  if (++shown == cancelAt) cs_cancelSearch();
}

static void showCost(CSint **x, int n, CSint *cost) {
  show(x, n);
  printf("%d.%lld costs %d\n", round_, shown, cs_getMin(cost));
}

static bool postQueens(CSint **q, int n) {
  static CSint *up[MOST], *down[MOST];
  for (int i = 0; i < n; ++i) {
    q[i] = cs_createCSint(0, n - 1);
    up[i] = cs_Add(q[i], CSINT(i));
    down[i] = cs_Sub(q[i], CSINT(i));
  }
  return cs_AllNeq(q, n) && cs_AllNeq(up, n) && cs_AllNeq(down, n);
}

static bool postRuler(CSint **marks, int n) {
  static CSint *distances[MOST * MOST];
  int pairs = 0;
  for (int i = 0; i < n; ++i) marks[i] = cs_createCSint(0, n * n);
  for (int i = 0; i < n; ++i)
    for (int j = i + 1; j < n; ++j) {
      distances[pairs] = cs_Sub(marks[j], marks[i]);
      if (!cs_GE(distances[pairs++], 1)) return false;
    }
  return cs_EQ(marks[0], 0) && cs_AllNeq(distances, pairs);
}

static CSint *first(CSint **x, int n) {
  static unsigned calls;
  if (delay > 0 && ++calls % 4096 == 0) usleep(delay);
  return cs_findFreeVar(x, n);
}

static CSint *forgetful(CSint **x, int n) {
  static int calls;
  CSint *free[MOST];
  int some = 0;
  for (int i = 0; i < n; ++i)
    if (cs_isFree(x[i])) free[some++] = x[i];
  return some == 0 ? NULL : free[++calls % some];
}

static bool findAll(CSint **x, int n, CSfindFreeVar f) {
  return plain ? cs_findAll(x, n, f, show) : cs_mpiFindAll(x, n, f, show);
}

static CSsearch *object(const char *name, CSint **x, int n) {
  CSsearch *search = cs_createSearch(x, n);
  CSsearchOptions how = {.size = sizeof how, .order = CS_ORDER_SMALLEST, .value = CS_VALUE_LOW_HALF};
  if (strcmp(name, "objective") == 0) how.minimize = x[n - 1];
  if (strcmp(name, "option") == 0) how.lastConflict = true;
  cs_setSearchOptions(search, &how);
  return search;
}

static bool showSolved(CSsearch *search, void *extra) {
  cs_getSearchStats(search, &stats, sizeof stats);
  printf("%d.%lld: after %lld fails, %lld choice points\n", round_, stats.solutions, stats.fails, stats.choicePoints);
  const int *values = cs_getBestSolution(search), n = *(int *)extra;
  printf("%d.%lld values:", round_, stats.solutions);
  for (int i = 0; i < n; ++i) printf(" %d", values[i]);
  printf("\n");
  shown = stats.solutions;
  return shown != cancelAt;
}

static bool solveCase(const char *name, CSint **x, int n) {
  if (!(strcmp(name, "objective") == 0 ? postRuler(x, n) : postQueens(x, n))) return false;
  cancelAt = n == 9 ? 100 : -1;
  CSsearch *search = object(name, x, n);
  CSstatus status = CS_STATUS_READY;
  if (!plain) status = cs_mpiSolve(search, showSolved, &n);
  while (plain && (status = cs_nextSolution(search)) == CS_STATUS_SOLUTION)
    if (!showSolved(search, &n)) cs_stopSearch(search);
  cs_getSearchStats(search, &stats, sizeof stats);
  printf("%d.object: %s after %lld fails, %lld choice points, %lld solutions, %d of %d\n", round_,
         cs_getStatusName(status), stats.fails, stats.choicePoints, stats.solutions, stats.objective, stats.bound);
  return cs_freeSearch(search) && stats.solutions > 0;
}

static bool searchCase(const char *name, CSint **x, int n) {
  if (name[0] == 'o') return solveCase(name, x, n);
  if (strcmp(name, "golomb") == 0) {
    if (!postRuler(x, n)) return false;
    return plain ? cs_minimize(x, n, first, x[n - 1], showCost) : cs_mpiMinimize(x, n, first, x[n - 1], showCost);
  }
  if (!postQueens(x, n)) return false;
  if (strcmp(name, "cancel") == 0) cancelAt = 17;
  if (strcmp(name, "rank") == 0 && !cs_NEQ(x[0], cs_mpiRank())) return false;
  if (strcmp(name, "no-goods") == 0) cs_createNoGoodSet(x, n, NULL, 0, NULL, NULL);
  if (strcmp(name, "element") == 0) cs_VarElement(x[0], x, n);
  if (strcmp(name, "count") == 0 && plain) return cs_findAll(x, n, cs_findFreeVarNbElements, NULL);
  if (strcmp(name, "count") == 0) return cs_mpiFindAll(x, n, cs_findFreeVarNbElements, NULL);
  if (strcmp(name, "memory") == 0) return findAll(x, n, forgetful);
  if (strcmp(name, "first") != 0) return findAll(x, n, cs_findFreeVarNbElements);
  return plain ? cs_search(x, n, first) : cs_mpiSearch(x, n, first);
}

static void mark(const char *name) {
  char path[1024];
  snprintf(path, sizeof path, "%s.%d", name, cs_mpiRank());
  FILE *file = fopen(path, "w");
  if (file != NULL) fclose(file);
}

static void prepare(void) {
  const char *checkpoint = getenv("KORU_TEST_CHECKPOINT"), *output = getenv("KORU_TEST_OUTPUT");
  if (checkpoint != NULL) cs_mpiSetCheckpoint(checkpoint, 0.1);
  if (output != NULL && cs_mpiRank() == 0 && freopen(output, "a", stdout) == NULL) exit(2);
  if (getenv("KORU_TEST_MARK") != NULL) mark(getenv("KORU_TEST_MARK"));
  if (getenv("KORU_TEST_DELAY") != NULL) delay = 500U * (unsigned)(1 + cs_mpiRank());
}

int main(int argc, char **argv) {
  if (argc < 3) return 2;
  CSint *x[MOST];
  const int n = argc > 3 ? atoi(argv[3]) : 8;
  const char *rounds = getenv("KORU_TEST_ROUNDS");
  if (n < 1 || n > MOST) return 2;
  plain = strcmp(argv[1], "plain") == 0;
  if (!plain) prepare();
  cs_init();
  for (round_ = 1; round_ <= (rounds != NULL ? atoi(rounds) : 2); ++round_) {
    const bool result = searchCase(argv[2], x, n);
    if (shown == 0 && !plain) shown = cs_mpiGetNbTold();
    const long long fails = plain ? stats.fails + cs_getNbFails() : cs_mpiGetNbFails();
    const long long choicePoints = plain ? stats.choicePoints + cs_getNbChoicePoints() : cs_mpiGetNbChoicePoints();
    printf("%d.end: %s, %lld shown, %lld fails, %lld choice points, contexts %d\n", round_, result ? "true" : "false",
           shown, fails, choicePoints, cs_saveContext());
    printf("%d.state: ", round_);
    cs_printf("%A\n", x, n);
    cs_restoreAll();
    shown = 0;
  }
  cs_end();
  return 0;
}
