/* SPDX-License-Identifier: MIT */
/*
 * Prints what random models do, through the shared library: every event that a host can hear of, solutions, statistics
 * and the profiler's counts. Its output is to be the same on every platform, so builds are compared by it.
 *
 *     koru_dump REPORT [MODELS]        REPORT: a file for the profiler's reports
 */
#include <koru.h>
#include <stdlib.h>
#include <string.h>

enum { SIZE = 6, CONSTRAINTS = 5, SOLUTIONS = 12, ROWS = 200, LINE = 200 };

static unsigned state;
static CSint *v[SIZE];
static CSint *ones[SIZE], *twos[SIZE];
static int found;

/* The generator of C's own standard: the same numbers everywhere. */
static int below(int n) {
  state = state * 1103515245u + 12345u;
  return (int)(state / 65536u % 32768u) % n;
}

/* --- Models ------------------------------------------------------------------------------------------------------- */

/* What a constraint is posted on. */
typedef struct {
  CSint *x, *y, *z;
  int a, b;
} Draw;

/* One statement each: the order in which the arguments of a call are evaluated is the compiler's choice. */
static Draw draw(void) {
  Draw d;
  d.x = v[below(SIZE)];
  d.y = v[below(SIZE)];
  d.z = v[below(SIZE)];
  d.a = below(9);
  d.b = below(4);
  return d;
}

static bool postArithmetic(int kind, Draw d) {
  switch (kind) {
    case 0:
      return cs_EQ(cs_Add(d.x, d.y), d.a);
    case 1:
      return cs_LE(cs_Sub(d.x, d.y), d.b);
    case 2:
      return cs_Lt(cs_Mul(d.x, d.y), cs_Add(d.z, CSINT(d.a)));
    case 3:
      return cs_Eq(cs_Abs(d.x), d.y);
    case 4:
      return cs_GE(cs_Sigma(v, SIZE), d.a - 4);
    case 5:
      return cs_NEQ(cs_VScalProd(3, d.x, d.y, d.z, 2, -3, 1), d.a);
    case 6:
      return cs_EQ(cs_Add(cs_ReifLt(d.x, d.y), cs_ReifEQ(d.z, d.b)), 1);
    default:
      return cs_Neq(d.x, d.y);
  }
}

static bool postGlobal(int kind, Draw d) {
  static const int table[] = {0, 1, 1, 0, 2, 1, 0, 1, 2, -1}, finals[] = {0};
  static const int values[] = {3, -1, 4, 1, -5, 2};
  switch (kind) {
    case 0:
      return cs_AllNeq(v, SIZE - d.b) != 0;
    case 1:
      return cs_Eq(cs_Element(d.x, values, SIZE), d.y);
    case 2:
      return cs_Eq(cs_Index(v, SIZE, d.b), d.x);
    case 3:
      return cs_Eq(cs_OccurDomain(d.b, v, SIZE), d.x);
    case 4:
      return cs_Eq(cs_Min(v, 3), d.x) && cs_Ge(cs_Max(v + 2, 4), d.y);
    case 5:
      return cs_IfEq(d.x, d.y, d.a - 2, d.b) && cs_NotInInterval(d.z, 1, 1 + d.b / 2);
    case 6:
      return cs_Regular(v, 2, table, 2, 5, 0, finals, 1) != 0;
    case 7:
      return cs_Eq(d.b == 0 ? cs_VarElement(d.x, v, SIZE) : cs_VarElementRange(d.x, v, SIZE), d.y);
    case 8:
      return cs_Cumulative(v, twos, ones, SIZE, CSINT(2));
    default:
      return cs_Disjunctive(v, ones, SIZE);
  }
}

static bool post(void) {
  const Draw d = draw();
  const int kind = below(18);
  return kind < 8 ? postArithmetic(kind, d) : postGlobal(kind - 8, d);
}

/* --- What is heard of it ------------------------------------------------------------------------------------------ */

static bool known(int value, int index, CSint **array, int size, void *extra) {
  (void)array, (void)size, (void)extra;
  cs_printf("known %d: %d\n", index, value);
  return true;
}

static bool changed(CSint *x, int index, int old, CSint **array, int size, void *what) {
  (void)array, (void)size;
  cs_printf("%s %d: was %d, %T\n", (const char *)what, index, old, x);
  return true;
}

static void undone(CSint *x, int index) { cs_printf("undone %d: %T\n", index, x); }

static void solution(CSint **array, int size) {
  cs_printf("solution %A\n", array, size);
  if (++found == SOLUTIONS) cs_cancelSearch();
}

static void better(CSint **array, int size, CSint *cost) { cs_printf("%A costs %D\n", array, size, cost); }

static int firstFree(CSint **array, int size) {
  for (int i = 0; i < size; i++)
    if (cs_isFree(array[i])) return i;
  return -1;
}

static int criteria(int index, int value) { return (value * 7 + index) % 5; }

static int nextLimit(void *limit) { return *(int *)limit *= 2; }

static bool search(void) {
  CSvalueSelector *selectors[SIZE];
  for (int i = 0; i < SIZE; i++) selectors[i] = cs_getValueSelector(below(5));
  int limit = 1;
  CSnoGoodSet *set;
  switch (below(6)) {
    case 0:
      return cs_search(v, SIZE, cs_findFreeVarNbElements);
    case 1:
      return cs_findAll(v, SIZE, cs_findFreeVarNbConstraints, solution);
    case 2:
      return cs_minimize(v, SIZE, cs_findFreeVarNbElementsMin, cs_Sigma(v, SIZE), better);
    case 3:
      return cs_searchCriteriaFail(v, SIZE, firstFree, criteria, 40);
    case 4:
      return cs_searchValueSelectorFail(v, selectors, SIZE, firstFree, 40, NULL);
    default:
      set = cs_createNoGoodSet(v, SIZE, NULL, 20, NULL, NULL);
      return cs_searchValueSelectorRestartNG(v, selectors, SIZE, firstFree, nextLimit, &limit, 64, set, NULL);
  }
}

/* --- The profiler's counts, in an order that does not depend on addresses -------------------------------------------
 */

static int compareLines(const void *a, const void *b) { return strcmp(a, b); }

static void printCounts(CSprofiler *profiler, const char *path) {
  static char rows[ROWS][LINE];
  size_t count = 0;
  bool inRows = false;
  cs_profilerWriteFile(profiler, path);
  FILE *report = fopen(path, "r");
  while (report != NULL && count < ROWS && fgets(rows[count], LINE, report) != NULL) {
    if (inRows) count++;
    inRows = inRows || strncmp(rows[count], "__DATA__", 8) == 0;
  }
  if (report != NULL) fclose(report);
  qsort(rows, count, LINE, compareLines);
  for (size_t i = 0; i < count; i++) cs_printf("%s", rows[i]);
}

static const char *place(void *text) { return text; }

static void createVariables(void) {
  static char names[SIZE][2] = {"a", "b", "c", "d", "e", "f"};
  for (int i = 0; i < SIZE; i++) {
    const int min = below(5) - 3;
    v[i] = cs_createNamedCSint(min, 2 + below(5), names[i]);
    if (below(2)) cs_NEQ(v[i], 1);
    ones[i] = CSINT(1);
    twos[i] = cs_createCSint(1, 2);
    cs_backtrack(v[i], i, undone);
  }
  cs_eventKnown(v, SIZE, known, NULL);
  cs_eventNewMin(v, SIZE, changed, "minimum");
  cs_eventNewMax(v, SIZE, changed, "maximum");
  cs_eventNeq(v, SIZE, changed, "removed");
}

static void runModel(unsigned seed, const char *path) {
  char text[] = "dump.c\t0\t0\tmodel";
  state = seed;
  found = 0;
  cs_init();
  cs_printf("--- model %u\n", seed);
  cs_setProfilerLocator("text", place, text);
  CSprofiler *profiler = cs_createProfiler(0);
  cs_enableProfiler(profiler);
  createVariables();
  bool consistent = true;
  for (int i = 0; i < CONSTRAINTS && consistent; i++) consistent = post();
  cs_printf("%s %A\n", consistent ? "posted" : "refused", v, SIZE);
  cs_saveContext();
  if (consistent) cs_printf("%s %A\n", search() ? "found" : "nothing", v, SIZE);
  cs_restoreAll();
  cs_printStats();
  printCounts(profiler, path);
  cs_end();
}

int main(int argc, char **argv) {
  const int models = argc > 2 ? atoi(argv[2]) : 2000;
  if (argc < 2) return 2;
  for (int i = 0; i < models; i++) runModel((unsigned)i, argv[1]);
  return 0;
}
