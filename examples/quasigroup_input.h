// SPDX-License-Identifier: MIT
// Partial Latin squares: read from a file (the order, then the cells row by row, 0 for a hole), or made from a whole
// square by digging holes.
#ifndef KORU_EXAMPLE_QUASIGROUP_INPUT_H
#define KORU_EXAMPLE_QUASIGROUP_INPUT_H

#include "input.h"

#include <stdint.h>

enum { MAX_ORDER = 60, MAX_CELLS = MAX_ORDER * MAX_ORDER };

typedef struct {
  int order;
  int cells[MAX_CELLS];  // row by row, from 1 to order, 0 for a hole
} Square;

static inline int countHoles(const Square *square) {
  int holes = 0;
  for (int i = 0; i < square->order * square->order; i++) holes += square->cells[i] == 0;
  return holes;
}

// --- Reading ---

// Read a square. When the input holds none, its line and error say where and why.
static inline bool readSquare(Input *input, Square *square) {
  if (!readNumber(input, 1, MAX_ORDER, "order", &square->order)) return false;
  for (int row = 0; row < square->order; row++) {
    char name[40];
    snprintf(name, sizeof name, "row %d: cell", row + 1);
    if (!readNumbers(input, square->order, 0, square->order, name, &square->cells[row * square->order])) return false;
  }
  return expectEnd(input);
}

// --- Making ---

// Marsaglia's 64-bit xorshift: the same numbers on every machine.
typedef struct {
  uint64_t state;
} Random;

static inline Random seedRandom(int seed) {
  Random random = {(uint64_t)seed * 2654435769u + 88172645463325252u};
  return random;
}

static inline int randomBelow(Random *random, int n) {
  random->state ^= random->state << 13;
  random->state ^= random->state >> 7;
  random->state ^= random->state << 17;
  return (int)(random->state % (uint64_t)n);
}

static inline void shuffle(Random *random, int *numbers, int count) {
  for (int i = count - 1; i > 0; i--) {
    int j = randomBelow(random, i + 1), kept = numbers[i];
    numbers[i] = numbers[j];
    numbers[j] = kept;
  }
}

static inline void shuffleNumbers(Random *random, int *numbers, int count) {
  for (int i = 0; i < count; i++) numbers[i] = i;
  shuffle(random, numbers, count);
}

// The cyclic square with rows, columns and values shuffled.
static inline void fillSquare(Random *random, Square *square) {
  int rows[MAX_ORDER], columns[MAX_ORDER], values[MAX_ORDER], n = square->order;
  shuffleNumbers(random, rows, n);
  shuffleNumbers(random, columns, n);
  shuffleNumbers(random, values, n);
  for (int row = 0; row < n; row++)
    for (int column = 0; column < n; column++)
      square->cells[row * n + column] = values[(rows[row] + columns[column]) % n] + 1;
}

// A square of that order with as many holes, which can be filled.
static inline void makeSquare(Square *square, int order, int nbHoles, int seed) {
  static int places[MAX_CELLS];
  Random random = seedRandom(seed);
  square->order = order;
  fillSquare(&random, square);
  shuffleNumbers(&random, places, order * order);
  for (int i = 0; i < nbHoles; i++) square->cells[places[i]] = 0;
}

#endif  // KORU_EXAMPLE_QUASIGROUP_INPUT_H
