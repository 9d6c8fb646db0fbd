// SPDX-License-Identifier: MIT
#include "koru_extras.h"

enum { N = 5 };
static const int distances[N][N] = {
    {0, 4, 9, 7, 3}, {4, 0, 5, 8, 6}, {9, 5, 0, 2, 8}, {7, 8, 2, 0, 5}, {3, 6, 8, 5, 0}};

static void print(CSint **next, int n, CSint *length) {
  int town = 0;
  for (int i = 0; i <= n; i++) {
    cs_printf(i == 0 ? "%d" : " - %d", town);
    town = cs_getValue(next[town]);
  }
  cs_printf(": %D km\n", length);
}

int main(void) {
  cs_init();
  CSint *next[N];
  CSint *terms[N + 1];
  for (int i = 0; i < N; i++) {
    next[i] = cs_createCSint(0, N - 1);
    terms[i] = cs_createCSint(0, 9);
    if (!cs_ElementOf(next[i], distances[i], N, terms[i])) return 1;
  }
  CSint *length = terms[N] = cs_createCSint(0, 9 * N);
  const long long sum[N + 1] = {1, 1, 1, 1, 1, -1};
  if (!cs_Circuit(next, N) || !cs_Linear(terms, sum, N + 1, CS_METHOD_EQ, 0)) return 1;
  cs_minimize(next, N, cs_findFreeVar, length, print);
  cs_end();

  // The chain 0 - 1 - 2 must not close before it has been everywhere.
  cs_init();
  for (int i = 0; i < N; i++) next[i] = cs_createCSint(0, N - 1);
  if (!cs_Circuit(next, N) || !cs_EQ(next[0], 1) || !cs_EQ(next[1], 2)) return 1;
  cs_printf("0 - 1 - 2: %A\n", next, N);
  for (int i = 0; i < N; i++) next[i] = cs_createCSint(0, N - 1);
  if (!cs_Subcircuit(next, N) || !cs_EQ(next[0], 1) || !cs_EQ(next[1], 2) || !cs_EQ(next[2], 0)) return 1;
  cs_printf("a subcircuit may close: %A\n", next, N);
  cs_end();
  return 0;
}
