// SPDX-License-Identifier: MIT
// Reading of knapsack instances: whole numbers from 0 to INT_MAX in this order:
//
//   the number of items, the number of rows of weights,
//   the capacity of each row,
//   the profit of each item,
//   the weight of each item in the first row, in the second row and so on.
#ifndef KORU_EXAMPLE_KNAPSACK_INPUT_H
#define KORU_EXAMPLE_KNAPSACK_INPUT_H

#include "input.h"

enum { MAX_ITEMS = 1000, MAX_ROWS = 50 };

typedef struct {
  int nbItems, nbRows;
  int capacities[MAX_ROWS];
  int profits[MAX_ITEMS];
  int weights[MAX_ROWS][MAX_ITEMS];
} Instance;

static inline bool readWeights(Input *input, Instance *instance) {
  for (int row = 0; row < instance->nbRows; row++) {
    char name[40];
    snprintf(name, sizeof name, "row %d: weight", row + 1);
    if (!readNumbers(input, instance->nbItems, 0, INT_MAX, name, instance->weights[row])) return false;
  }
  return true;
}

// All profits together must be an int, so that any choice of items has a profit the solver can hold.
static inline bool checkProfits(Input *input, const Instance *instance) {
  long long total = 0;
  for (int i = 0; i < instance->nbItems; i++) total += instance->profits[i];
  if (total <= INT_MAX) return true;
  snprintf(input->error, sizeof input->error, "the profits add up to more than %d", INT_MAX);
  return false;
}

// Read an instance. When the input holds none, its line and error say where and why.
static inline bool readInstance(Input *input, Instance *instance) {
  return readNumber(input, 1, MAX_ITEMS, "number of items", &instance->nbItems) &&
         readNumber(input, 1, MAX_ROWS, "number of rows", &instance->nbRows) &&
         readNumbers(input, instance->nbRows, 0, INT_MAX, "capacity", instance->capacities) &&
         readNumbers(input, instance->nbItems, 0, INT_MAX, "profit", instance->profits) &&
         checkProfits(input, instance) && readWeights(input, instance) && expectEnd(input);
}

#endif  // KORU_EXAMPLE_KNAPSACK_INPUT_H
