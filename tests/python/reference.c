/* SPDX-License-Identifier: MIT */
/* Models in C, and what searching them comes to; test_reference.py has the same models in Python. It prints a line for
 * each: name, status, objective, solutions, choice points, fails, wakings, restarts, no-goods and depth; and first the
 * sizes of the structures that both share. */
#include <stdio.h>

#include <koru_extras.h>

static void report(const char *name, CSsearch *search) {
  CSsearchStats s;
  while (cs_nextSolution(search) == CS_STATUS_SOLUTION) {
  }
  cs_getSearchStats(search, &s, sizeof s);
  printf("%s %d %d %lld %lld %lld %lld %lld %lld %lld\n", name, cs_getSearchStatus(search), s.objective, s.solutions,
         s.choicePoints, s.fails, s.wakings, s.restarts, s.noGoods, s.peakDepth);
  cs_freeSearch(search);
}

static void variables(CSint **vars, int n, int lo, int hi) {
  for (int i = 0; i < n; ++i) vars[i] = cs_createCSint(lo, hi);
}

/* A variable that equals x + constant. */
static CSint *shifted(CSint *x, int constant) {
  CSint *both[] = {x, cs_createCSint(cs_getMin(x) + constant, cs_getMax(x) + constant)};
  static const long long coefficients[] = {1, -1};
  cs_Linear(both, coefficients, 2, CS_METHOD_EQ, -(long long)constant);
  return both[1];
}

static void queens(void) {
  CSint *q[8], *up[8], *down[8];
  cs_init();
  variables(q, 8, 0, 7);
  for (int i = 0; i < 8; ++i) {
    up[i] = i == 0 ? q[i] : shifted(q[i], i);
    down[i] = i == 0 ? q[i] : shifted(q[i], -i);
  }
  cs_AllNeq(q, 8);
  cs_AllNeq(up, 8);
  cs_AllNeq(down, 8);
  CSsearch *search = cs_createSearch(q, 8);
  CSsearchOptions options = {.size = sizeof options, .order = CS_ORDER_SMALLEST};
  cs_setSearchOptions(search, &options);
  report("queens", search);
  cs_end();
}

static void ruler(void) {
  CSint *mark[7], *distance[21];
  static const long long coefficients[] = {1, -1, -1};
  int n = 0;
  cs_init();
  variables(mark, 7, 0, 40);
  cs_EQ(mark[0], 0);
  cs_StrictlyIncreasing(mark, 7);
  variables(distance, 21, 1, 40);
  for (int i = 0; i < 7; ++i) {
    for (int j = i + 1; j < 7; ++j) {
      CSint *terms[] = {mark[j], mark[i], distance[n++]};
      cs_Linear(terms, coefficients, 3, CS_METHOD_EQ, 0);
    }
  }
  cs_AllNeqBounds(distance, 21);
  CSsearch *search = cs_createSearch(mark, 7);
  CSsearchOptions options = {.size = sizeof options,
                             .order = CS_ORDER_DOM_WDEG,
                             .lastConflict = true,
                             .minimize = mark[6],
                             .restarts = CS_RESTARTS_LUBY,
                             .restartFails = 20};
  cs_setSearchOptions(search, &options);
  report("ruler", search);
  cs_end();
}

/* (x0 == 1) >> (x1 != 2); b >> (x0 + x1 + x2 <= 4); c == (x2 < x3); (x0 == 1) >> (x2 < x3);
 * (x0 >= 2) | (x1 <= 1) | b; 2 * x0 + 3 * x4 >= 7; x4 in {0, 2, 5}; 3 * x3 <= 13 */
static void conditions(void) {
  static const long long ones[] = {1, 1, 1}, weights[] = {2, 3};
  static const int some[] = {0, 2, 5};
  CSint *x[7], *literals[3];
  cs_init();
  variables(x, 5, 0, 5);
  x[5] = cs_createCSint(0, 1);
  x[6] = cs_createCSint(0, 1);
  cs_IfNeq(x[0], x[1], 1, 2);
  cs_LinearIf(x[5], x, ones, 3, CS_METHOD_LE, 4);
  cs_LtIff(x[6], x[2], x[3]);
  CSint *b = cs_createCSint(0, 1);
  cs_EQIff(b, x[0], 1);
  cs_LtIf(b, x[2], x[3]);
  literals[0] = cs_createCSint(0, 1);
  cs_GEIf(literals[0], x[0], 2);
  literals[1] = cs_createCSint(0, 1);
  cs_LEIf(literals[1], x[1], 1);
  literals[2] = x[5];
  cs_Clause(literals, 3, literals, 0);
  CSint *pair[] = {x[0], x[4]};
  cs_Linear(pair, weights, 2, CS_METHOD_GE, 7);
  cs_InArray(x[4], some, 3);
  cs_LE(x[3], 4);
  CSsearch *search = cs_createSearch(x, 7);
  CSsearchOptions options = {.size = sizeof options, .value = CS_VALUE_HIGH_HALF};
  cs_setSearchOptions(search, &options);
  report("conditions", search);
  cs_end();
}

/* Three jobs on three machines, each task as long as stated; job i visits machine (i + k) % 3 in step k. */
static void shop(void) {
  static const int times[3][3] = {{4, 3, 6}, {5, 2, 4}, {3, 7, 2}};
  CSint *start[9], *duration[9], *last;
  cs_init();
  variables(start, 9, 0, 40);
  last = cs_createCSint(0, 60);
  for (int i = 0; i < 9; ++i) duration[i] = CSINT(times[i / 3][i % 3]);
  for (int i = 0; i < 9; ++i) cs_PrecedenceIf(NULL, start[i], duration[i], 0, i % 3 < 2 ? start[i + 1] : last);
  for (int machine = 0; machine < 3; ++machine) {
    CSint *starts[3], *durations[3];
    for (int job = 0; job < 3; ++job) {
      const int task = 3 * job + (machine - job + 3) % 3;
      starts[job] = start[task];
      durations[job] = duration[task];
    }
    cs_DisjunctiveTasks(starts, durations, NULL, 3);
  }
  CSsearch *search = cs_createSearch(start, 9);
  CSsearchOptions options = {.size = sizeof options,
                             .value = CS_VALUE_MAX,
                             .guided = true,
                             .randomTies = true,
                             .seed = 7,
                             .minimize = last,
                             .neighbours = CS_NEIGHBOURS_LINKED};
  cs_setSearchOptions(search, &options);
  cs_addSearchPhase(search, &last, 1, CS_ORDER_INPUT, CS_VALUE_MIN);
  report("shop", search);
  cs_end();
}

/* Words of an automaton without three equal symbols in a row, counted, in a table with their neighbours. */
static void words(void) {
  static const int next[] = {1, 3, 2, 3, -1, 3, 1, 4, 1, -1}, finals[] = {1, 2, 3, 4},
                   rows[] = {0, 0, 0, 1, 1, 0, 1, 1};
  CSint *x[12];
  cs_init();
  variables(x, 12, 0, 1);
  cs_Regular(x, 12, next, 5, 2, 0, finals, 4);
  CSint *ones = cs_createCSint(4, 6);
  cs_OccurConstraints(ones, 1, x, 12);
  cs_Table(&x[4], 2, rows, 4);
  cs_LexLt(x, &x[6], 6);
  CSint *half[] = {x[0], x[1], x[2]};
  CSint *values = cs_createCSint(0, 3);
  cs_NValues(half, 3, values);
  cs_EQ(values, 2);
  CSsearch *search = cs_createSearch(x, 12);
  report("words", search);
  cs_end();
}

int main(void) {
  printf("sizes %zu %zu %zu\n", sizeof(CSsearchOptions), sizeof(CSsearchStats), sizeof(CSvalueSelection));
  queens();
  ruler();
  conditions();
  shop();
  words();
  return 0;
}
